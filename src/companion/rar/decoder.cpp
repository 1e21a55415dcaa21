#include "companion/rar/decoder.h"

#include <vector>

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

std::unique_ptr<Decoder> MakeDecompressor(const Entry& /*entry*/) {
  return nullptr;
}

}  // namespace companion::rar
