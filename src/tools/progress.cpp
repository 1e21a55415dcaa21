#include "tools/progress.h"

#include <iostream>

#include "ports/ports.h"
#include "ports/processes.h"
#include "tools/fill.h"
#include "tools/stop.h"
#include "tools/tools_texts.h"

namespace tools {

Progress::Progress() : Progress(ports::CurrentPorts().processes->HasTerminal()) {}

Progress::~Progress() {
  Clear();
}

void Progress::Begin(const std::string& step, std::size_t parts) {
  ThrowIfStopped();
  Clear();
  const std::lock_guard lock(guard_);
  step_ = step;
  parts_ = parts;
  done_ = 0;
  shown_percent_ = 0;
  Show();
}

void Progress::Advance() {
  ThrowIfStopped();
  const std::lock_guard lock(guard_);
  ++done_;
  const std::size_t percent = parts_ == 0 ? 100 : done_ * 100 / parts_;
  if (percent == shown_percent_) return;
  shown_percent_ = percent;
  Show();
}

void Progress::Clear() {
  const std::lock_guard lock(guard_);
  if (!is_shown_ || step_.empty()) return;
  std::cerr << "\r\x1B[K" << std::flush;
  step_.clear();
}

void Progress::Show() {
  if (!is_shown_) return;
  std::cerr << '\r' << Fill(texts::kProgress, {step_, std::to_string(shown_percent_)})
            << std::flush;
}

}  // namespace tools
