#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/text.h"

namespace tmw {

// An appendable text buffer. With a taker it hands its text on whenever it has grown long, so that
// it stays short.
class StringAccumulator {
 public:
  using Taker = std::function<void(std::string_view)>;

  StringAccumulator() = default;
  explicit StringAccumulator(Taker taker) : taker_(std::move(taker)) {}

  void Add(std::string_view text) {
    text_.append(text);
    if (taker_ && text_.size() >= kLong) HandOn();
  }
  void AddLine(std::string_view text) {
    text_.append(text);
    Add(kCrLf);
  }

  const std::string& Text() const { return text_; }

  // Hands the whole text over; the accumulator is empty afterwards.
  std::string TakeText() { return std::exchange(text_, {}); }

  // Hands the taker what it has not received yet.
  void HandOn() {
    taker_(text_);
    text_.clear();
  }

 private:
  static constexpr std::size_t kLong = 256U << 10U;

  std::string text_;
  Taker taker_;
};

}  // namespace tmw
