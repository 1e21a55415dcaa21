#include "packages/signature_name.h"

#include <cstddef>

#include "foundation/contract_names.h"
#include "sha256/sha256.h"

namespace tmw {

std::string SignatureName(std::string_view digest_bytes) {
  constexpr std::size_t kNamedDigits = 16;
  return std::string(names::kDigestFile) + "." +
         sha256::CSHA256().SHA256(digest_bytes).substr(0, kNamedDigits) +
         std::string(names::kSignatureEnding);
}

}  // namespace tmw
