#pragma once

#include <cstdint>
#include <string>

namespace tmw {

// How fast a transfer goes and how long it will take, from its position over time, in words that
// stay calm: renewed once a second, the speed averaged, the end moved at once only when it was
// guessed wrong. Moments are milliseconds of a clock that only grows; sizes are bytes.
class TransferPace {
 public:
  void Start(std::int64_t total, std::int64_t now);

  // An advance larger than a transfer reports at once has not been transferred: those bytes lie
  // here from an earlier run.
  void Advance(std::int64_t position);

  // To be called again and again, also while nothing arrives; true when the words have changed.
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
  double end_ = 0;  // the moment that the words promise; 0: none
  std::string words_;
};

}  // namespace tmw
