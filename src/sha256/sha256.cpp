#include "sha256/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "sha256/blocks.h"

namespace sha256 {
namespace blocks {
namespace {

std::uint32_t LoadWord(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) << 24U | static_cast<std::uint32_t>(bytes[1]) << 16U |
         static_cast<std::uint32_t>(bytes[2]) << 8U | static_cast<std::uint32_t>(bytes[3]);
}

void CompressBlock(std::uint32_t* state, const std::uint8_t* block) {
  using std::rotr;
  std::array<std::uint32_t, 64> w{};
  for (std::size_t i = 0; i < 16; ++i)
    w[i] = LoadWord(block + i * 4);
  for (std::size_t i = 16; i < 64; ++i) {
    const std::uint32_t s0 = rotr(w[i - 15], 7) ^ rotr(w[i - 15], 18) ^ (w[i - 15] >> 3U);
    const std::uint32_t s1 = rotr(w[i - 2], 17) ^ rotr(w[i - 2], 19) ^ (w[i - 2] >> 10U);
    w[i] = w[i - 16] + s0 + w[i - 7] + s1;
  }
  std::array<std::uint32_t, 8> v{};
  std::copy_n(state, 8, v.begin());
  auto& [a, b, c, d, e, f, g, h] = v;
  for (std::size_t i = 0; i < 64; ++i) {
    const std::uint32_t sum1 = rotr(e, 6) ^ rotr(e, 11) ^ rotr(e, 25);
    const std::uint32_t t1 = h + sum1 + ((e & f) ^ (~e & g)) + kRound[i] + w[i];
    const std::uint32_t sum0 = rotr(a, 2) ^ rotr(a, 13) ^ rotr(a, 22);
    const std::uint32_t t2 = sum0 + ((a & b) ^ (a & c) ^ (b & c));
    h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
  }
  for (std::size_t i = 0; i < 8; ++i)
    state[i] += v[i];
}

}  // namespace

void CompressPortable(std::uint32_t* state, const std::uint8_t* blocks, std::size_t count) {
  for (; count > 0; --count, blocks += 64)
    CompressBlock(state, blocks);
}

}  // namespace blocks

bool IsPathAvailable(Path path) {
  return path == Path::kPortable || blocks::HasShaInstructions();
}

Path BestPath() {
  static const Path kBest = blocks::HasShaInstructions() ? Path::kProcessor : Path::kPortable;
  return kBest;
}

Stream::Stream(Path path)
    : compress_(path == Path::kProcessor ? blocks::CompressWithShaInstructions
                                         : blocks::CompressPortable),
      state_{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
             0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19} {}

void Stream::Update(const void* data, std::size_t length) {
  const auto* bytes = static_cast<const std::uint8_t*>(data);
  total_ += length;
  if (pending_length_ > 0) {
    const std::size_t taken = std::min(length, pending_.size() - pending_length_);
    std::copy_n(bytes, taken, pending_.begin() + static_cast<std::ptrdiff_t>(pending_length_));
    pending_length_ += taken;
    bytes += taken;
    length -= taken;
    if (pending_length_ < pending_.size()) return;
    compress_(state_.data(), pending_.data(), 1);
    pending_length_ = 0;
  }
  compress_(state_.data(), bytes, length / 64);
  const std::size_t rest = length % 64;
  std::copy_n(bytes + (length - rest), rest, pending_.begin());
  pending_length_ = rest;
}

Digest Stream::Finish() {
  const std::uint64_t bits = total_ * 8;
  std::array<std::uint8_t, 72> tail{0x80};
  const std::size_t zeros_end = pending_length_ < 56 ? 56 - pending_length_ : 120 - pending_length_;
  for (std::size_t i = 0; i < 8; ++i) {
    tail[zeros_end + i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
  }
  Update(tail.data(), zeros_end + 8);
  Digest digest{};
  for (std::size_t i = 0; i < kDigestLength; ++i) {
    digest[i] = static_cast<std::uint8_t>(state_[i / 4] >> (24 - 8 * (i % 4)));
  }
  return digest;
}

std::string CSHA256::SHA256(std::string_view bytes) const {
  Stream stream;
  stream.Update(bytes.data(), bytes.size());
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : stream.Finish()) {
    text.push_back(kDigits[byte >> 4U]);
    text.push_back(kDigits[byte & 15U]);
  }
  return text;
}

std::string CSHA256::SHA256(std::span<const std::uint8_t> bytes) const {
  return SHA256(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace sha256
