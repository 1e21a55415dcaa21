#pragma once

#include "ports/companion_abi.h"

namespace companion::rar {

// Thrown inside the reader only; the exported functions turn it into a result code.
struct Failure {
  ports::RarResult code;
};

}  // namespace companion::rar
