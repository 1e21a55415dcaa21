#include "packages/signature_name.h"

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/contract_names.h"
#include "sha256/sha256.h"

namespace tmw {

std::string SignatureName(std::string_view digest_bytes) {
  constexpr std::size_t kNamedDigits = 16;
  const std::string hash = sha256::CSHA256().SHA256(
      std::span(reinterpret_cast<const std::uint8_t*>(digest_bytes.data()), digest_bytes.size()));
  return std::string(names::kDigestFile) + "." + hash.substr(0, kNamedDigits) +
         std::string(names::kSignatureEnding);
}

}  // namespace tmw
