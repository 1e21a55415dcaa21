#pragma once

#include <optional>
#include <string>

#include "platform/windows/windows_headers.h"

namespace platform {

// The system's box for choosing a file to write; an existing one is asked about. Nothing if the
// user declined.
std::optional<std::string> ShowSaveBox(HWND owner, const std::string& title,
                                       const std::string& suggested_name);

}  // namespace platform
