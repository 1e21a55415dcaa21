#pragma once

#include <string>

#include "platform/windows/windows_headers.h"

namespace platform {

// Puts UTF-8 text on the clipboard in the name of a window. Another program may hold the clipboard
// for a moment: tries for half a second. False when it does not come free.
bool PutTextOnClipboard(HWND owner, const std::string& text);

}  // namespace platform
