#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "sha256/sha256.h"

// Embedded integrity data (pack method 2).
//
// A file or a package may end with a trailer of 64 bytes. Programs, libraries and RAR archives
// still work with bytes after their end, so both an unpacked file and the package that it came in
// can be checked without any list.
//
//   offset  length  content
//        0       8  "TMZ-SHA2"
//        8       4  1, the version of this layout
//       12       4  64, the length of the trailer
//       16       8  length of the content in front of the trailer
//       24      32  SHA-256 of that content
//       56       8  the first eight bytes again, backwards ("2AHS-ZMT")
//
// Numbers are little-endian. A reader knows from the file's length where the content ends, so it
// can hash the content and compare it with the trailer in one pass.
namespace sha256 {

inline constexpr std::size_t kIntegrityTrailerLength = 64;
using IntegrityTrailer = std::array<std::uint8_t, kIntegrityTrailerLength>;

struct IntegrityFacts {
  std::uint64_t content_length = 0;
  Digest digest{};
};

IntegrityTrailer MakeIntegrityTrailer(const IntegrityFacts& facts);

// Returns nothing if the bytes are not a trailer of this layout.
std::optional<IntegrityFacts> ParseIntegrityTrailer(
    std::span<const std::uint8_t, kIntegrityTrailerLength> bytes);

}  // namespace sha256
