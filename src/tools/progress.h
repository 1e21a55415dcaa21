#pragma once

#include <cstdint>
#include <mutex>
#include <string>

namespace tools {

// One line on standard error that shows how much of a long step is done, how fast and for how long
// it will go on. The destructor removes it.
class Progress {
 public:
  // Shown if somebody may be watching.
  Progress();
  explicit Progress(bool is_shown) : is_shown_(is_shown) {}
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  // Begins a step of that many parts, or bytes. Raises if the user has asked for a stop, as Advance
  // does.
  void Begin(const std::string& step, std::size_t parts);
  void BeginBytes(const std::string& step, std::int64_t bytes);

  // One part, or that many bytes, are done. May be called on any thread.
  void Advance() { Advance(1); }
  void Advance(std::size_t amount);

 private:
  void Start(const std::string& step, std::int64_t amount, bool is_bytes);
  void Clear();
  void Show(std::int64_t now);

  bool is_shown_;
  std::mutex guard_;
  std::string step_;
  bool is_bytes_ = false;
  std::int64_t whole_ = 0;
  std::int64_t done_ = 0;
  std::int64_t start_ = 0;  // ticks of the clock
  std::int64_t shown_ = 0;  // likewise, when the line was written last
};

}  // namespace tools
