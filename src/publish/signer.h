#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "publish/digest.h"
#include "signature/secret_key.h"

namespace publish {

struct SigningOptions {
  std::string key_file;
  std::string password_file;           // empty: the password is asked for, if the key has one
  std::int64_t last_day = 0;           // of what is announced; days since 1970-01-01
  std::optional<std::int64_t> serial;  // default: one above the announced one
};

// Signs what is announced, with a key that is opened once.
class Signer {
 public:
  // Raises if the key cannot be opened.
  explicit Signer(const SigningOptions& options);

  // What a digest says of itself once it is signed.
  SignedPart PartOf(std::int64_t serial) const;

  // The text of the signature's file.
  std::string Sign(const Digest& digest, std::string_view bytes) const;

  std::string KeyId() const;
  const std::optional<std::int64_t>& GivenSerial() const { return serial_; }

 private:
  signature::SecretKey key_;
  std::int64_t last_day_;
  std::optional<std::int64_t> serial_;
};

// A new pair of keys: the secret one in the file, which on Linux only its owner may read, the
// public one in the file beside it. Neither may exist.
struct KeyPair {
  std::string public_file;
  std::string public_key;
  std::string key_id;
};

// password_file: empty to ask for the password, nothing for a key without one.
KeyPair MakeKeys(const std::string& key_file, const std::optional<std::string>& password_file);

// Reads a public key, given as its text or as the name of its file. Raises if there is none.
signature::PublicKey ReadPublicKey(const std::string& text_or_file);

// Today's day, UTC.
std::int64_t Today();

}  // namespace publish
