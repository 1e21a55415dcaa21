#pragma once

#include <string>

#include "platform/windows/windows_headers.h"
#include "ports/front_end.h"

namespace platform {

// A message with the advice set apart below it, a button that copies both and one that closes the
// box. Returns false without showing anything where the system's library of controls is too old.
bool ShowAdviceBox(HWND owner, ports::MessageKind kind, const std::string& title,
                   const std::string& text, const std::string& advice);

inline constexpr int kAdviceCopyId = 100;

}  // namespace platform
