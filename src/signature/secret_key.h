#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "signature/public_key.h"

namespace signature {

// What opening an encrypted key file costs whoever guesses passwords, and its owner once: steps and
// bytes of scrypt. The default is minisign's own, a gigabyte and some seconds.
struct KeyCost {
  std::uint64_t steps = 33'554'432;
  std::uint64_t memory = 1'073'741'824;
};

enum class KeyFileVerdict {
  kGood,
  kMalformed,
  kWrongPassword,  // or a damaged file
  kNoMemory,       // the machine lacks what the file's KeyCost asks for
};

// A key that signs. It is wiped from memory when it is destroyed.
class SecretKey {
 public:
  SecretKey() = default;
  SecretKey(const SecretKey&) = delete;
  SecretKey& operator=(const SecretKey&) = delete;
  ~SecretKey();

  // Makes a new key.
  void Generate();

  // Reads the text of minisign's file of a secret key. The password of an unencrypted one is not
  // looked at.
  KeyFileVerdict Read(std::string_view text, std::string_view password);

  // The text of such a file, unencrypted if the password is empty. Raises std::runtime_error if the
  // machine lacks the memory.
  std::string FileText(std::string_view password, const KeyCost& cost = {}) const;

  // The text of the message's signature file. The comment is one line.
  std::string Sign(std::string_view message, std::string_view trusted_comment) const;

  PublicKey Public() const;

 private:
  KeyId id_{};
  std::array<std::uint8_t, 64> key_{};  // libsodium's form: the seed, then the public point
};

// Returns whether the text is a file of a secret key that is encrypted by a password.
bool NeedsPassword(std::string_view text);

}  // namespace signature
