#include "signature/sodium_tools.h"

#include <sodium.h>

#include <stdexcept>

namespace signature {

void RequireSodium() {
  static const int kResult = sodium_init();
  if (kResult < 0) throw std::runtime_error("libsodium does not start");
}

std::optional<Bytes> DecodeBase64(std::string_view text, std::size_t length) {
  Bytes bytes(length);
  std::size_t decoded = 0;
  const char* end = nullptr;
  if (sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &decoded,
                        &end, sodium_base64_VARIANT_ORIGINAL) != 0) {
    return std::nullopt;
  }
  if (decoded != length || end != text.data() + text.size()) return std::nullopt;
  return bytes;
}

std::string EncodeBase64(std::span<const std::uint8_t> bytes) {
  std::string text(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
  sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(),
                    sodium_base64_VARIANT_ORIGINAL);
  text.pop_back();  // the library ends it with a zero
  return text;
}

std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    lines.push_back(line);
  }
  return lines;
}

Bytes PrehashOf(std::string_view message) {
  Bytes hash(crypto_generichash_BYTES_MAX);
  crypto_generichash(hash.data(), hash.size(),
                     reinterpret_cast<const unsigned char*>(message.data()), message.size(),
                     nullptr, 0);
  return hash;
}

}  // namespace signature
