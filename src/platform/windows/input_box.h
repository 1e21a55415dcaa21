#pragma once

#include <optional>
#include <string>

#include "platform/windows/windows_headers.h"

namespace platform {

// A modal box with a prompt, a line to type in and the buttons OK and "Отмена", over its
// owner. A secret line shows dots. Nothing when the user cancels it or it cannot be shown.
std::optional<std::string> ShowInputBox(HWND owner, const std::string& title,
                                        const std::string& prompt, bool is_secret);

// Control identifiers of the box besides the system's IDOK and IDCANCEL.
inline constexpr int kInputBoxPromptId = 100;
inline constexpr int kInputBoxLineId = 101;

}  // namespace platform
