#pragma once

#include <cstddef>
#include <mutex>
#include <string>

namespace publish {

// One line on standard error that says how far the work is. Silent unless it is shown.
class Progress {
 public:
  explicit Progress(bool is_shown) : is_shown_(is_shown) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // Begins a step of that many parts. Raises when the user has broken the run off, as Advance does.
  void Begin(const std::string& step, std::size_t parts);

  // One part is done. May be called on any thread.
  void Advance();

  // Takes the line away.
  void Clear();

 private:
  void Show();

  bool is_shown_;
  std::mutex guard_;
  std::string step_;
  std::size_t parts_ = 0;
  std::size_t done_ = 0;
  std::size_t shown_percent_ = 0;
};

}  // namespace publish
