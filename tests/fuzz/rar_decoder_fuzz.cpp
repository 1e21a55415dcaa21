#include <algorithm>
#include <cstdint>
#include <span>

#include "companion/rar/decoder.h"
#include "companion/rar/failure.h"

// Feeds arbitrary packed bytes to the decoders, as a chain of entries of which all but the first
// are solid. Input: one byte of choices (bit 0 the family, bits 1 and 2 the dictionary, bit 3
// whether the size is declared), then entries: two bytes of length, highest first, and the packed
// bytes.
namespace {

using namespace companion::rar;

constexpr std::uint64_t kMostContent = 4U << 20U;

// Returns the bytes in uneven pieces, as volumes do.
class Pieces final : public PackedSource {
 public:
  explicit Pieces(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
  std::size_t Read(std::uint8_t* buffer, std::size_t length) override {
    piece_ = piece_ * 5 + 1;
    length = std::min({length, bytes_.size(), piece_ % 97 + 1});
    std::copy_n(bytes_.begin(), length, buffer);
    bytes_ = bytes_.subspan(length);
    return length;
  }

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t piece_ = 0;
};

class CappedSink final : public ContentSink {
 public:
  void Write(const std::uint8_t* data, std::size_t length) override {
    if (length > left_) throw Failure{ports::kRarBadData};
    left_ -= length;
    // Reads every byte, so that a sanitizer finds bytes that were never written.
    for (std::size_t i = 0; i < length; ++i)
      sum_ = sum_ * 31 + data[i];
    if (sum_ == 0x5EED5EED) throw Failure{ports::kRarWriteFailed};
  }

 private:
  std::uint64_t left_ = kMostContent;
  std::uint32_t sum_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> input(data, size);
  if (input.empty()) return 0;
  const unsigned choices = input[0];
  input = input.subspan(1);
  Entry entry;
  entry.method = 3;
  entry.version = (choices & 1U) != 0 ? 50 : 29;
  entry.dictionary_kib = 128U << ((choices >> 1U & 3U) * 2);
  if ((choices & 8U) != 0) entry.unpacked_size = kMostContent / 2;
  const auto decoder = MakeDecompressor(FamilyOf(entry));
  while (input.size() > 2) {
    const std::size_t length = std::min<std::size_t>(input[0] * 256U + input[1], input.size() - 2);
    Pieces source(input.subspan(2, length));
    CappedSink sink;
    try {
      decoder->Decode(entry, source, sink);
    } catch (const Failure&) {
      entry.solid = false;
      break;
    }
    entry.solid = true;
    input = input.subspan(2 + length);
  }
  return 0;
}
