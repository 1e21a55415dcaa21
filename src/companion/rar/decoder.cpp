#include "companion/rar/decoder.h"

#include <vector>

#include "companion/rar/rar3_decoder.h"
#include "companion/rar/rar5_decoder.h"

namespace companion::rar {
namespace {

class StoredDecoder final : public Decoder {
 public:
  void Decode(const Entry& /*entry*/, PackedSource& source, ContentSink& sink) override {
    if (buffer_.empty()) buffer_.resize(kBufferLength);
    while (const std::size_t got = source.Read(buffer_.data(), buffer_.size())) {
      sink.Write(buffer_.data(), got);
    }
  }

 private:
  static constexpr std::size_t kBufferLength = 256U << 10U;
  std::vector<std::uint8_t> buffer_;
};

}  // namespace

std::unique_ptr<Decoder> MakeStoredDecoder() {
  return std::make_unique<StoredDecoder>();
}

DecoderFamily FamilyOf(const Entry& entry) {
  if (entry.version == 50) return DecoderFamily::kRar5;
  return entry.version >= 29 && entry.version <= 36 ? DecoderFamily::kRar3 : DecoderFamily::kNone;
}

std::unique_ptr<Decoder> MakeDecompressor(DecoderFamily family) {
  switch (family) {
    case DecoderFamily::kRar3:
      return std::make_unique<Rar3Decoder>();
    case DecoderFamily::kRar5:
      return std::make_unique<Rar5Decoder>();
    case DecoderFamily::kNone:
      break;
  }
  return nullptr;
}

}  // namespace companion::rar
