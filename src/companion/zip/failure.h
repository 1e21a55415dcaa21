#pragma once

#include "ports/companion_abi.h"

namespace companion::zip {

// Thrown inside the zip engine only; the exported functions turn it into a result code.
struct Failure {
  ports::ZipResult code;
};

}  // namespace companion::zip
