#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "jet/errors.h"
#include "jet/file/damage.h"
#include "jet/file/texts.h"

namespace jet::file {

// Calls what may throw Damage, and turns that into the numbered error that leaves the room.
template <typename Call>
decltype(auto) ThroughDoor(std::int32_t number, const std::string& file_name, Call&& call) {
  try {
    return std::forward<Call>(call)();
  } catch (const Damage& damage) {
    Fail(number, file_name, texts::Sentence(damage.what(), damage.Page));
  }
}

}  // namespace jet::file
