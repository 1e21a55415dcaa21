#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace tools {

// One line on standard error that shows how much of a long step is done. The destructor removes it.
class Progress {
 public:
  // Shown if somebody may be watching.
  Progress();
  explicit Progress(bool is_shown) : is_shown_(is_shown) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // Begins a step of that many parts. Raises if the user has asked for a stop, as Advance does.
  void Begin(const std::string& step, std::size_t parts);

  // One part is done. May be called on any thread.
  void Advance();

 private:
  void Clear();
  void Show();

  bool is_shown_;
  std::mutex guard_;
  std::string step_;
  std::size_t parts_ = 0;
  std::size_t done_ = 0;
  std::size_t shown_percent_ = 0;
};

}  // namespace tools
