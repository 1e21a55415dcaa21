#pragma once

#include <gtest/gtest.h>

#include "foundation/program_error.h"

namespace tests {

// The error that the given action raises; fails the test if it raises none.
template <typename Action>
tmw::ProgramError Caught(Action action) {
  try {
    action();
  } catch (const tmw::ProgramError& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was raised";
  return {0, ""};
}

}  // namespace tests
