#pragma once

#include "platform/windows/windows_headers.h"
#include "ports/outcome.h"

namespace platform {

// Whether another program may be holding the file for a moment. One that is deleted while a scanner
// reads it is refused as "access denied" by some versions, by a code of its own in others; one that
// is mapped into memory cannot be cut or replaced.
inline bool MayPass(ports::SystemCode code) {
  return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION ||
         code == ERROR_ACCESS_DENIED || code == ERROR_DELETE_PENDING ||
         code == ERROR_USER_MAPPED_FILE;
}

}  // namespace platform
