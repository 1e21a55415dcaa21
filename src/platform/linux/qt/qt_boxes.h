#pragma once

#include <optional>
#include <string>

#include "ports/front_end.h"

namespace platform {

class QtApplication;

// Modal boxes of Qt. While a box is open the window that it belongs to takes no clicks.

void ShowMessageBox(QtApplication& application, ports::MessageKind kind, const std::string& title,
                    const std::string& text, const std::string& advice);

// Esc and the close box mean no.
bool AskYesNoBox(QtApplication& application, const std::string& title, const std::string& question);

// Esc and the close box decline.
std::optional<std::string> AskTextBox(QtApplication& application, const std::string& title,
                                      const std::string& prompt, bool is_secret);

// Esc and the close box decline. The suggested file lies in the user's home.
std::optional<std::string> AskSaveBox(QtApplication& application, const std::string& title,
                                      const std::string& suggested_name);

}  // namespace platform
