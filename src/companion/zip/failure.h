#pragma once

#include "companion/os.h"
#include "ports/companion_abi.h"

namespace companion::zip {

// Thrown inside the zip engine only; the exported functions turn it into a result code.
struct Failure {
  ports::ZipResult code;
  os::ErrorCode error = 0;  // the system's reason, if there is one
};

// To be thrown right after the system call that failed.
inline Failure SystemFailure(ports::ZipResult code) {
  return {code, os::LastErrorCode()};
}

}  // namespace companion::zip
