#pragma once

#include "ports/companion_abi.h"

namespace companion::zip {

// Travels inside the zip engine and becomes a result code at its surface.
struct Failure {
  ports::ZipResult code;
};

}  // namespace companion::zip
