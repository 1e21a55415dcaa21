#pragma once

#include "companion/abi.h"

namespace companion::rar {

// Travels inside the reader and becomes a result code at its surface.
struct Failure {
  RarResult code;
};

}  // namespace companion::rar
