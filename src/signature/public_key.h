#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Keys in the public format of minisign.
namespace signature {

// A random number that a signature carries, so that its key can be chosen among several.
using KeyId = std::array<std::uint8_t, 8>;

struct PublicKey {
  KeyId id{};
  std::array<std::uint8_t, 32> point{};  // of Ed25519
};

// Reads the 56 characters of a key, with or without the line "untrusted comment: …" before them.
// Returns nothing if the text is no such key.
std::optional<PublicKey> ParsePublicKey(std::string_view text);

// The 56 characters.
std::string PublicKeyText(const PublicKey& key);

// The file of a public key: a comment and the key.
std::string PublicKeyFileText(const PublicKey& key);

// 16 upper-case hexadecimal digits, as minisign prints them.
std::string KeyIdText(const KeyId& id);

}  // namespace signature
