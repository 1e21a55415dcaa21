#pragma once

#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "companion/rar/decoder.h"
#include "companion/rar/filters.h"

namespace companion::rar {

// Stands between decompression and sink. Passes bytes on, except those of announced blocks, which
// are collected until the block is complete and go through its filter first. So a block may be
// larger than the window, and the window never has to wait for one.
class FilterPipeline {
 public:
  // No archive needs more; a hostile one could announce them without end.
  static constexpr std::uint32_t kMaxBlock = 4U << 20U;
  static constexpr std::size_t kMaxPending = 8192;
  static constexpr std::size_t kMaxStacked = 16;

  // Starts a new entry; blocks that were not reached are dropped.
  void Begin(ContentSink& sink);

  // Announces the filter of the bytes [start, start + length) of the entry, which have not been
  // written yet. Blocks come in order and do not overlap; if a block equals the previous one, both
  // filters apply in the order of announcement. Throws Failure for anything else.
  void Announce(std::uint64_t start, std::uint64_t length, const FilterRequest& request);
  // Passes incomplete blocks on unfiltered.
  void ForgetAnnounced();

  // Bytes of the entry, in order.
  void Write(std::span<const std::uint8_t> bytes);

  // Bytes written so far.
  std::uint64_t Position() const { return position_; }

 private:
  struct Block {
    std::uint64_t start;
    std::uint32_t length;
    std::vector<FilterRequest> filters;
  };

  void FinishBlock();

  ContentSink* sink_ = nullptr;
  std::deque<Block> pending_;
  std::uint64_t position_ = 0;
  std::vector<std::uint8_t> collected_;
  std::vector<std::uint8_t> scratch_;
};

}  // namespace companion::rar
