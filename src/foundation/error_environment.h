#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tmw {

// The window that finally shows an error; the user interface implements it.
class ErrorWindow {
 public:
  virtual ~ErrorWindow() = default;

  // Modal. The caption may be empty.
  virtual void Execute(const std::string& message, const std::string& chain, std::int32_t code,
                       const std::string& caption) = 0;
};

// What the error routines need from the rooms above.
struct ErrorEnvironment {
  std::function<std::unique_ptr<ErrorWindow>()> make_error_window;
  std::function<bool()> is_unattended;  // the mouse cursor is then left alone
};

// Replaces the process-wide environment; returns the one before.
ErrorEnvironment SetErrorEnvironment(ErrorEnvironment environment);

const ErrorEnvironment& CurrentErrorEnvironment();

}  // namespace tmw
