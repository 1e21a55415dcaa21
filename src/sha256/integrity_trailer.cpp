#include "sha256/integrity_trailer.h"

#include <algorithm>
#include <string_view>

namespace sha256 {
namespace {

constexpr std::string_view kMark = "TMZ-SHA2";
constexpr std::uint32_t kVersion = 1;

template <typename T>
void Put(IntegrityTrailer& trailer, std::size_t offset, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    trailer[offset + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

}  // namespace

IntegrityTrailer MakeIntegrityTrailer(const IntegrityFacts& facts) {
  IntegrityTrailer trailer{};
  std::copy(kMark.begin(), kMark.end(), trailer.begin());
  Put(trailer, 8, kVersion);
  Put(trailer, 12, static_cast<std::uint32_t>(kIntegrityTrailerLength));
  Put(trailer, 16, facts.content_length);
  std::copy(facts.digest.begin(), facts.digest.end(), trailer.begin() + 24);
  std::copy(kMark.rbegin(), kMark.rend(), trailer.begin() + 56);
  return trailer;
}

std::optional<IntegrityFacts> ParseIntegrityTrailer(
    std::span<const std::uint8_t, kIntegrityTrailerLength> bytes) {
  IntegrityFacts facts;
  for (std::size_t i = 0; i < 8; ++i) {
    facts.content_length |= static_cast<std::uint64_t>(bytes[16 + i]) << (8 * i);
  }
  std::copy_n(bytes.begin() + 24, kDigestLength, facts.digest.begin());
  const IntegrityTrailer same = MakeIntegrityTrailer(facts);
  if (!std::equal(same.begin(), same.end(), bytes.begin())) return std::nullopt;
  return facts;
}

}  // namespace sha256
