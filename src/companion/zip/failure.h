#pragma once

#include "companion/abi.h"

namespace companion::zip {

// Travels inside the zip engine and becomes a result code at its surface.
struct Failure {
  ZipResult code;
};

}  // namespace companion::zip
