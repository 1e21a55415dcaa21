#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// SHA-256 (FIPS 180-4), without dependencies: the check of a new updater needs nothing else, and
// the companion library is built from the same source.
namespace sha256 {

inline constexpr std::size_t kDigestLength = 32;
using Digest = std::array<std::uint8_t, kDigestLength>;

// The code that hashes the blocks.
enum class Path {
  kPortable,
  kProcessor,  // the SHA instructions of x86 processors
};

// Returns whether this machine can run that code.
bool IsPathAvailable(Path path);

// The fastest code that this machine can run.
Path BestPath();

// Computes a digest over data in pieces.
class Stream {
 public:
  Stream() : Stream(BestPath()) {}
  // The path must be available.
  explicit Stream(Path path);

  void Update(const void* data, std::size_t length);

  // Returns the digest. Update must not be called afterwards.
  Digest Finish();

 private:
  using Compress = void (*)(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count);

  Compress compress_;
  std::array<std::uint32_t, 8> state_;
  std::array<std::uint8_t, 64> pending_{};
  std::size_t pending_length_ = 0;
  std::uint64_t total_ = 0;
};

// The digest of bytes as text.
class CSHA256 {
 public:
  // 64 lower-case hexadecimal digits.
  std::string SHA256(std::string_view bytes) const;
  std::string SHA256(std::span<const std::uint8_t> bytes) const;
};

}  // namespace sha256
