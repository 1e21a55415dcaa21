#include "signature/public_key.h"

#include <sodium.h>

#include <algorithm>

#include "signature/sodium_tools.h"

namespace signature {
namespace {

// On the disk: two letters, the key's id, the point.
constexpr std::string_view kKind = "Ed";
constexpr std::size_t kIdAt = 2;
constexpr std::size_t kPointAt = 10;
constexpr std::size_t kLength = 42;

}  // namespace

std::optional<PublicKey> ParsePublicKey(std::string_view text) {
  RequireSodium();
  std::vector<std::string_view> lines = LinesOf(text);
  if (lines.size() == 2 && lines[0].starts_with(kUntrustedComment)) lines.erase(lines.begin());
  if (lines.size() != 1) return std::nullopt;
  const std::optional<Bytes> bytes = DecodeBase64(lines[0], kLength);
  if (!bytes || !std::equal(kKind.begin(), kKind.end(), bytes->begin())) return std::nullopt;
  PublicKey key;
  std::copy_n(bytes->begin() + kIdAt, key.id.size(), key.id.begin());
  std::copy_n(bytes->begin() + kPointAt, key.point.size(), key.point.begin());
  // Under some points anybody could sign.
  if (crypto_core_ed25519_is_valid_point(key.point.data()) != 1) return std::nullopt;
  return key;
}

std::string PublicKeyText(const PublicKey& key) {
  Bytes bytes(kKind.begin(), kKind.end());
  bytes.insert(bytes.end(), key.id.begin(), key.id.end());
  bytes.insert(bytes.end(), key.point.begin(), key.point.end());
  return EncodeBase64(bytes);
}

std::string PublicKeyFileText(const PublicKey& key) {
  return std::string(kUntrustedComment) + "minisign public key " + KeyIdText(key.id) + "\n" +
         PublicKeyText(key) + "\n";
}

std::string KeyIdText(const KeyId& id) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  // The last byte comes first.
  for (std::size_t i = id.size(); i-- > 0;) {
    text += kDigits[id[i] >> 4U];
    text += kDigits[id[i] & 15U];
  }
  return text;
}

}  // namespace signature
