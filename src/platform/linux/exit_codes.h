#pragma once

#include <sys/wait.h>

namespace platform {

// The exit code a shell would show for a wait status: 128 + n after signal n.
inline int ExitCodeOf(int wait_status) {
  return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace platform
