#pragma once

#include <string>

namespace tmw {

// The window that performs the update run; implemented in src/ui.
class ProgressWindow {
 public:
  virtual ~ProgressWindow() = default;

  // Modal: returns when the run has ended. The fallback address may be empty.
  virtual void Execute(const std::string& product_code, const std::string& url,
                       const std::string& fallback_url) = 0;

  virtual bool Updated() const = 0;
  virtual std::string NewVersion() const = 0;
};

}  // namespace tmw
