#pragma once

#include <string>

#include "platform/windows/windows_headers.h"

namespace platform {

// Puts UTF-8 text on the clipboard, owned by that window. Another program may hold the clipboard
// for a moment: tries for half a second, then returns false.
bool PutTextOnClipboard(HWND owner, const std::string& text);

}  // namespace platform
