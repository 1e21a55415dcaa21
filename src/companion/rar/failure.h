#pragma once

#include "ports/companion_abi.h"

namespace companion::rar {

// Travels inside the reader and becomes a result code at its surface.
struct Failure {
  ports::RarResult code;
};

}  // namespace companion::rar
