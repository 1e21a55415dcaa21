#include "signature/secret_key.h"

#include <sodium.h>

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "signature/sodium_tools.h"

namespace signature {
namespace {

// On the disk: the kinds of signature, key derivation and checksum, two letters each (two zeros: no
// encryption), the salt, steps and memory of scrypt as 64-bit little-endian numbers, then what is
// encrypted: the key's id, the key, the checksum.
constexpr std::string_view kKind = "Ed";
constexpr std::string_view kScrypt = "Sc";
constexpr std::string_view kNotEncrypted("\0\0", 2);
constexpr std::string_view kChecksum = "B2";
constexpr std::size_t kDerivationAt = 2;
constexpr std::size_t kChecksumKindAt = 4;
constexpr std::size_t kSaltAt = 6;
constexpr std::size_t kSaltLength = crypto_pwhash_scryptsalsa208sha256_SALTBYTES;
constexpr std::size_t kStepsAt = kSaltAt + kSaltLength;
constexpr std::size_t kMemoryAt = kStepsAt + 8;
constexpr std::size_t kIdAt = kMemoryAt + 8;
constexpr std::size_t kKeyAt = kIdAt + 8;
constexpr std::size_t kKeyLength = crypto_sign_SECRETKEYBYTES;
constexpr std::size_t kSumAt = kKeyAt + kKeyLength;
constexpr std::size_t kSumLength = 32;
constexpr std::size_t kLength = kSumAt + kSumLength;
constexpr std::size_t kPointInKey = crypto_sign_SEEDBYTES;

bool HasAt(const Bytes& bytes, std::size_t at, std::string_view piece) {
  return std::equal(piece.begin(), piece.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                    [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

void Put(Bytes& bytes, std::size_t at, std::string_view piece) {
  std::copy(piece.begin(), piece.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

std::uint64_t NumberAt(const Bytes& bytes, std::size_t at) {
  std::uint64_t number = 0;
  for (std::size_t i = 8; i-- > 0;)
    number = number << 8U | bytes[at + i];
  return number;
}

void PutNumber(Bytes& bytes, std::size_t at, std::uint64_t number) {
  for (std::size_t i = 0; i < 8; ++i, number >>= 8U)
    bytes[at + i] = static_cast<std::uint8_t>(number);
}

// The file's bytes, which are wiped on every way out.
class KeyBytes {
 public:
  explicit KeyBytes(Bytes bytes) : bytes_(std::move(bytes)) {}
  KeyBytes(const KeyBytes&) = delete;
  KeyBytes& operator=(const KeyBytes&) = delete;
  ~KeyBytes() { sodium_memzero(bytes_.data(), bytes_.size()); }
  Bytes& operator*() { return bytes_; }

 private:
  Bytes bytes_;
};

std::optional<Bytes> Decode(std::string_view text) {
  const std::vector<std::string_view> lines = LinesOf(text);
  if (lines.size() != 2 || !lines[0].starts_with(kUntrustedComment)) return std::nullopt;
  std::optional<Bytes> bytes = DecodeBase64(lines[1], kLength);
  if (!bytes || !HasAt(*bytes, 0, kKind) || !HasAt(*bytes, kChecksumKindAt, kChecksum))
    return std::nullopt;
  return bytes;
}

// Encrypts what follows the head, or decrypts it: both are the same. Returns false if the machine
// lacks the memory.
bool Encrypt(Bytes& bytes, std::string_view password) {
  KeyBytes stream{Bytes(kLength - kIdAt)};
  const std::uint64_t memory = NumberAt(bytes, kMemoryAt);
  if (memory > SIZE_MAX || crypto_pwhash_scryptsalsa208sha256(
                               (*stream).data(), (*stream).size(), password.data(), password.size(),
                               bytes.data() + kSaltAt, NumberAt(bytes, kStepsAt),
                               static_cast<std::size_t>(memory)) != 0) {
    return false;
  }
  for (std::size_t i = 0; i < (*stream).size(); ++i)
    bytes[kIdAt + i] ^= (*stream)[i];
  return true;
}

Bytes ChecksumOf(const Bytes& bytes) {
  Bytes sum(kSumLength);
  crypto_generichash_state state;
  crypto_generichash_init(&state, nullptr, 0, sum.size());
  crypto_generichash_update(&state, bytes.data(), kDerivationAt);
  crypto_generichash_update(&state, bytes.data() + kIdAt, kSumAt - kIdAt);
  crypto_generichash_final(&state, sum.data(), sum.size());
  return sum;
}

// Returns whether the two halves of the key belong together.
bool IsWhole(const Bytes& bytes) {
  std::array<std::uint8_t, crypto_sign_PUBLICKEYBYTES> point{};
  std::array<std::uint8_t, kKeyLength> key{};
  crypto_sign_seed_keypair(point.data(), key.data(), bytes.data() + kKeyAt);
  sodium_memzero(key.data(), key.size());
  return std::equal(point.begin(), point.end(), bytes.begin() + kKeyAt + kPointInKey);
}

}  // namespace

SecretKey::~SecretKey() {
  sodium_memzero(key_.data(), key_.size());
}

void SecretKey::Generate() {
  RequireSodium();
  std::array<std::uint8_t, crypto_sign_PUBLICKEYBYTES> point{};
  crypto_sign_keypair(point.data(), key_.data());
  randombytes_buf(id_.data(), id_.size());
}

KeyFileVerdict SecretKey::Read(std::string_view text, std::string_view password) {
  RequireSodium();
  std::optional<Bytes> decoded = Decode(text);
  if (!decoded) return KeyFileVerdict::kMalformed;
  KeyBytes bytes(std::move(*decoded));
  if (HasAt(*bytes, kDerivationAt, kScrypt)) {
    if (!Encrypt(*bytes, password)) return KeyFileVerdict::kNoMemory;
    const Bytes sum = ChecksumOf(*bytes);
    if (!std::equal(sum.begin(), sum.end(), (*bytes).begin() + kSumAt))
      return KeyFileVerdict::kWrongPassword;
  } else if (!HasAt(*bytes, kDerivationAt, kNotEncrypted)) {
    return KeyFileVerdict::kMalformed;
  }
  if (!IsWhole(*bytes)) return KeyFileVerdict::kMalformed;
  std::copy_n((*bytes).begin() + kIdAt, id_.size(), id_.begin());
  std::copy_n((*bytes).begin() + kKeyAt, key_.size(), key_.begin());
  return KeyFileVerdict::kGood;
}

std::string SecretKey::FileText(std::string_view password, const KeyCost& cost) const {
  RequireSodium();
  KeyBytes bytes{Bytes(kLength)};
  Put(*bytes, 0, kKind);
  Put(*bytes, kChecksumKindAt, kChecksum);
  std::copy(id_.begin(), id_.end(), (*bytes).begin() + kIdAt);
  std::copy(key_.begin(), key_.end(), (*bytes).begin() + kKeyAt);
  const bool is_encrypted = !password.empty();
  if (is_encrypted) {
    Put(*bytes, kDerivationAt, kScrypt);
    randombytes_buf((*bytes).data() + kSaltAt, kSaltLength);
    PutNumber(*bytes, kStepsAt, cost.steps);
    PutNumber(*bytes, kMemoryAt, cost.memory);
    const Bytes sum = ChecksumOf(*bytes);
    std::copy(sum.begin(), sum.end(), (*bytes).begin() + kSumAt);
    if (!Encrypt(*bytes, password)) throw std::runtime_error("not enough memory for the key file");
  }
  return std::string(kUntrustedComment) + "minisign " +
         (is_encrypted ? "encrypted" : "unencrypted") + " secret key\n" + EncodeBase64(*bytes) +
         "\n";
}

std::string SecretKey::Sign(std::string_view message, std::string_view trusted_comment) const {
  RequireSodium();
  if (trusted_comment.find_first_of("\r\n") != std::string_view::npos)
    throw std::invalid_argument("a trusted comment is one line");
  const Bytes hash = PrehashOf(message);
  Bytes signature(crypto_sign_BYTES);
  crypto_sign_detached(signature.data(), nullptr, hash.data(), hash.size(), key_.data());
  Bytes commented = signature;
  commented.insert(commented.end(), trusted_comment.begin(), trusted_comment.end());
  Bytes global(crypto_sign_BYTES);
  crypto_sign_detached(global.data(), nullptr, commented.data(), commented.size(), key_.data());
  Bytes first = {'E', 'D'};
  first.insert(first.end(), id_.begin(), id_.end());
  first.insert(first.end(), signature.begin(), signature.end());
  return std::string(kUntrustedComment) + "signature by the key " + KeyIdText(id_) + "\n" +
         EncodeBase64(first) + "\n" + std::string(kTrustedComment) + std::string(trusted_comment) +
         "\n" + EncodeBase64(global) + "\n";
}

PublicKey SecretKey::Public() const {
  PublicKey key;
  key.id = id_;
  std::copy_n(key_.begin() + kPointInKey, key.point.size(), key.point.begin());
  return key;
}

bool NeedsPassword(std::string_view text) {
  RequireSodium();
  const std::optional<Bytes> bytes = Decode(text);
  return bytes && HasAt(*bytes, kDerivationAt, kScrypt);
}

}  // namespace signature
