#include "companion/rar/blake2sp.h"

#include <algorithm>
#include <bit>

namespace companion::rar {
namespace {

constexpr std::array<std::uint32_t, 8> kInitial = {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A,
                                                   0x510E527F, 0x9B05688C, 0x1F83D9AB, 0x5BE0CD19};

constexpr std::uint8_t kOrder[10][16] = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
                                         {14, 10, 4, 8, 9, 15, 13, 6, 1, 12, 0, 2, 11, 7, 5, 3},
                                         {11, 8, 12, 0, 5, 2, 15, 13, 10, 14, 3, 6, 7, 1, 9, 4},
                                         {7, 9, 3, 1, 13, 12, 11, 14, 2, 6, 5, 10, 4, 0, 15, 8},
                                         {9, 0, 5, 7, 2, 4, 10, 15, 14, 1, 11, 12, 6, 8, 3, 13},
                                         {2, 12, 6, 10, 0, 11, 8, 3, 4, 13, 7, 5, 15, 14, 1, 9},
                                         {12, 5, 1, 15, 14, 13, 4, 10, 0, 7, 6, 3, 9, 2, 8, 11},
                                         {13, 11, 7, 14, 12, 1, 3, 9, 5, 0, 15, 4, 8, 6, 2, 10},
                                         {6, 15, 14, 9, 11, 3, 0, 8, 12, 2, 13, 7, 1, 4, 10, 5},
                                         {10, 2, 8, 4, 7, 6, 1, 5, 15, 11, 9, 14, 3, 12, 13, 0}};

void Mix(std::uint32_t& a, std::uint32_t& b, std::uint32_t& c, std::uint32_t& d, std::uint32_t x,
         std::uint32_t y) {
  a += b + x;
  d = std::rotr(d ^ a, 16);
  c += d;
  b = std::rotr(b ^ c, 12);
  a += b + y;
  d = std::rotr(d ^ a, 8);
  c += d;
  b = std::rotr(b ^ c, 7);
}

}  // namespace

Blake2s::Blake2s(std::uint32_t node, std::uint8_t depth, bool last_of_level)
    : state_(kInitial), last_of_level_(last_of_level) {
  // Parameters: digest 32, key 0, fan-out 8, depth 2; node offset; node depth, inner length 32.
  state_[0] ^= 0x02080020U;
  state_[2] ^= node;
  state_[3] ^= 0x20000000U | static_cast<std::uint32_t>(depth) << 16U;
}

void Blake2s::Compress(bool last) {
  std::array<std::uint32_t, 16> m{};
  for (std::size_t i = 0; i < 64; ++i) {
    m[i / 4] |= static_cast<std::uint32_t>(block_[i]) << (8 * (i % 4));
  }
  std::array<std::uint32_t, 16> v{};
  std::copy(state_.begin(), state_.end(), v.begin());
  std::copy(kInitial.begin(), kInitial.end(), v.begin() + 8);
  v[12] ^= static_cast<std::uint32_t>(total_);
  v[13] ^= static_cast<std::uint32_t>(total_ >> 32U);
  if (last) v[14] = ~v[14];
  if (last && last_of_level_) v[15] = ~v[15];
  for (const auto& order : kOrder) {
    for (std::size_t i = 0; i < 4; ++i) {
      Mix(v[i], v[4 + i], v[8 + i], v[12 + i], m[order[2 * i]], m[order[2 * i + 1]]);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      Mix(v[i], v[4 + (i + 1) % 4], v[8 + (i + 2) % 4], v[12 + (i + 3) % 4], m[order[8 + 2 * i]],
          m[order[9 + 2 * i]]);
    }
  }
  for (std::size_t i = 0; i < 8; ++i)
    state_[i] ^= v[i] ^ v[i + 8];
}

void Blake2s::Update(const std::uint8_t* data, std::size_t length) {
  while (length > 0) {
    // A full block is kept back, since the last one is compressed with a mark.
    if (length_ == block_.size()) {
      total_ += length_;
      Compress(false);
      length_ = 0;
    }
    const std::size_t taken = std::min(length, block_.size() - length_);
    std::copy_n(data, taken, block_.begin() + static_cast<std::ptrdiff_t>(length_));
    length_ += taken;
    data += taken;
    length -= taken;
  }
}

std::array<std::uint8_t, 32> Blake2s::Finish() {
  total_ += length_;
  std::fill(block_.begin() + static_cast<std::ptrdiff_t>(length_), block_.end(), std::uint8_t{0});
  Compress(true);
  std::array<std::uint8_t, 32> digest{};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::uint8_t>(state_[i / 4] >> (8 * (i % 4)));
  }
  return digest;
}

Blake2sp::Blake2sp()
    : leaves_{Blake2s(0, 0, false), Blake2s(1, 0, false), Blake2s(2, 0, false),
              Blake2s(3, 0, false), Blake2s(4, 0, false), Blake2s(5, 0, false),
              Blake2s(6, 0, false), Blake2s(7, 0, true)} {}

void Blake2sp::Update(const std::uint8_t* data, std::size_t length) {
  while (length > 0) {
    const std::size_t taken = std::min<std::size_t>(length, 64 - total_ % 64);
    leaves_[total_ / 64 % 8].Update(data, taken);
    total_ += taken;
    data += taken;
    length -= taken;
  }
}

std::array<std::uint8_t, 32> Blake2sp::Finish() {
  Blake2s root(0, 1, true);
  for (Blake2s& leaf : leaves_) {
    const auto digest = leaf.Finish();
    root.Update(digest.data(), digest.size());
  }
  return root.Finish();
}

}  // namespace companion::rar
