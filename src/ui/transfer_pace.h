#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// Speed and remaining time of a transfer, computed from its position over time, in words that do
// not jump: renewed once a second, the speed averaged, the promised end corrected little by little
// unless it was far wrong. Times are milliseconds of a monotonic clock, sizes are bytes.
class TransferPace {
 public:
  void Start(std::int64_t total, std::int64_t now);

  // A larger advance than one report of a transfer makes does not count for the speed: those bytes
  // come from an earlier run.
  void Advance(std::int64_t position);

  // To be called again and again, also while nothing arrives. Returns true if the words have
  // changed.
  bool Update(std::int64_t now);

  // "1,2 МБ/с, осталось 3 мин"; empty in the first seconds and while nothing arrives.
  const std::string& Words() const { return words_; }

 private:
  void Forget(std::int64_t now);
  std::string MakeWords(std::int64_t now);

  std::int64_t total_ = 0;
  std::int64_t position_ = 0;
  std::int64_t known_since_ = 0;
  std::int64_t sample_start_ = 0;
  std::int64_t received_ = 0;  // since sample_start_
  std::int64_t last_arrival_ = 0;
  double averaged_bytes_ = 0;  // both fade with age; their quotient is the speed
  double averaged_time_ = 0;
  double end_ = 0;  // the time that the words promise; 0: none
  std::string words_;
};

}  // namespace tmw
