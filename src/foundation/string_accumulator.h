#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/text.h"

namespace tmw {

// An appendable text buffer.
class StringAccumulator {
 public:
  void Add(std::string_view text) { text_.append(text); }
  void AddLine(std::string_view text) { text_.append(text).append(kCrLf); }

  const std::string& Text() const { return text_; }

  // Hands the whole text over; the accumulator is empty afterwards.
  std::string TakeText() { return std::exchange(text_, {}); }

 private:
  std::string text_;
};

}  // namespace tmw
