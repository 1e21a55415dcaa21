#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "signature/public_key.h"

// Detached signatures in the public format of minisign. A signature is a file of four lines:
//   untrusted comment: anything
//   base64 of "ED", the key's id and the signature of the message's prehash
//   trusted comment: anything
//   base64 of the signature of the first signature and the trusted comment
// "Ed" for "ED" is the older kind, of the message itself. It is refused.
namespace signature {

// Bytes; longer files are no signatures.
inline constexpr std::size_t kMaxSignatureFile = 4096;

enum class Verdict {
  kGood,
  kMalformed,   // no signature file
  kOtherKind,   // of the message itself
  kUnknownKey,  // made with none of the given keys
  kDiffers,     // message or trusted comment are not what was signed
};

struct Verification {
  Verdict verdict = Verdict::kMalformed;
  KeyId key_id{};               // unless kMalformed
  std::string trusted_comment;  // of a good signature only
};

// The key is chosen by the id that the signature carries.
Verification Verify(std::string_view message, std::string_view signature_file,
                    const std::vector<PublicKey>& keys);

}  // namespace signature
