#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/internet.h"

namespace platform {

// The internet port on the WinINet of that file; an empty path means the system's own.
std::unique_ptr<ports::Internet> MakeWinInet(std::int32_t stall_limit, const std::string& library);

}  // namespace platform
