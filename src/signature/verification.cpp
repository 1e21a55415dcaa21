#include "signature/verification.h"

#include <sodium.h>

#include <algorithm>
#include <array>
#include <optional>

#include "signature/sodium_tools.h"

namespace signature {
namespace {

constexpr std::string_view kPrehashed = "ED";
constexpr std::string_view kOfMessage = "Ed";
constexpr std::size_t kIdAt = 2;
constexpr std::size_t kSignatureAt = 10;
constexpr std::size_t kLength = kSignatureAt + crypto_sign_BYTES;
constexpr std::size_t kLines = 4;

struct SignatureFile {
  std::string kind;
  KeyId key_id{};
  Bytes signature;
  std::string trusted_comment;
  Bytes global_signature;
};

std::optional<SignatureFile> Parse(std::string_view text) {
  if (text.size() > kMaxSignatureFile) return std::nullopt;
  const std::vector<std::string_view> lines = LinesOf(text);
  if (lines.size() != kLines || !lines[0].starts_with(kUntrustedComment) ||
      !lines[2].starts_with(kTrustedComment)) {
    return std::nullopt;
  }
  const std::optional<Bytes> first = DecodeBase64(lines[1], kLength);
  const std::optional<Bytes> global = DecodeBase64(lines[3], crypto_sign_BYTES);
  if (!first || !global) return std::nullopt;
  SignatureFile file;
  file.kind.assign(first->begin(), first->begin() + kIdAt);
  if (file.kind != kPrehashed && file.kind != kOfMessage) return std::nullopt;
  std::copy_n(first->begin() + kIdAt, file.key_id.size(), file.key_id.begin());
  file.signature.assign(first->begin() + kSignatureAt, first->end());
  file.trusted_comment = lines[2].substr(kTrustedComment.size());
  file.global_signature = *global;
  return file;
}

bool IsSigned(const Bytes& message, const Bytes& signature, const PublicKey& key) {
  return crypto_sign_verify_detached(signature.data(), message.data(), message.size(),
                                     key.point.data()) == 0;
}

}  // namespace

Verification Verify(std::string_view message, std::string_view signature_file,
                    const std::vector<PublicKey>& keys) {
  RequireSodium();
  const std::optional<SignatureFile> file = Parse(signature_file);
  if (!file) return {};
  if (file->kind != kPrehashed) return {Verdict::kOtherKind, file->key_id, {}};
  const auto key = std::find_if(keys.begin(), keys.end(), [&](const PublicKey& candidate) {
    return candidate.id == file->key_id;
  });
  if (key == keys.end()) return {Verdict::kUnknownKey, file->key_id, {}};
  Bytes commented = file->signature;
  commented.insert(commented.end(), file->trusted_comment.begin(), file->trusted_comment.end());
  if (!IsSigned(PrehashOf(message), file->signature, *key) ||
      !IsSigned(commented, file->global_signature, *key)) {
    return {Verdict::kDiffers, file->key_id, {}};
  }
  return {Verdict::kGood, file->key_id, file->trusted_comment};
}

}  // namespace signature
