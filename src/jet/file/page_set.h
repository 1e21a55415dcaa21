#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "jet/file/format.h"

namespace jet::file {

// Page numbers, gathered while pages are handed out.
class PageSet {
 public:
  void Add(PageNumber page) {
    const std::size_t byte = page / kBitsInByte;
    if (bits_.size() <= byte) bits_.resize(byte + 1);
    bits_[byte] = static_cast<char>(bits_[byte] | (1 << (page % kBitsInByte)));
    if (!last_ || *last_ < page) last_ = page;
  }

  std::optional<PageNumber> Last() const { return last_; }

  // A bit for every page from page 0 to the last member's byte, the lowest bit of a byte first.
  const std::string& Bits() const { return bits_; }

 private:
  static constexpr PageNumber kBitsInByte = 8;

  std::string bits_;
  std::optional<PageNumber> last_;
};

}  // namespace jet::file
