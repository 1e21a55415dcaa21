#pragma once

#include <array>
#include <cstdint>

#include "companion/rar/bit_reader.h"
#include "companion/rar/decoder.h"
#include "companion/rar/filter_pipeline.h"
#include "companion/rar/huffman.h"
#include "companion/rar/sliding_window.h"

namespace companion::rar {

// RAR 5 compression (all methods are the same to a reader). The stream is blocks: flags, a check
// byte, the block's length; then, if flagged, code lengths of four tables; then symbols:
//   0..255 literals; 256 a filter; 257 the last match again; 258..261 a match at one of the last
//   four distances; 262..305 a match, by length slot.
class Rar5Decoder : public Decoder {
 public:
  void Decode(const Entry& entry, PackedSource& source, ContentSink& sink) override;

 private:
  struct Block {
    std::uint64_t next = 0;  // bit positions in the packed stream
    std::uint64_t end = 0;
    bool is_last = false;
    bool has_tables = false;
  };

  void ResetState();
  Block ReadBlockHeader();
  void ReadTables();
  void DecodeBlock(const Block& block);
  bool DecodeSymbols(std::uint64_t until, std::ptrdiff_t bits);
  bool DecodeMatch(std::uint32_t slot, BitCursor& in, SlidingWindow::Cursor& window);
  bool DecodeRepeat(std::uint32_t index, BitCursor& in, SlidingWindow::Cursor& window);
  void ReadFilter();
  std::uint32_t TakeFilterNumber();
  void Flush();

  BitReader reader_;
  SlidingWindow window_;
  FilterPipeline pipeline_;
  HuffmanTable literals_;
  HuffmanTable distances_;
  HuffmanTable low_distances_;
  HuffmanTable repeat_lengths_;
  std::array<std::uint64_t, 4> last_distances_{};
  std::uint32_t last_length_ = 0;
  bool has_tables_ = false;
  bool can_go_on_ = false;  // the previous entry was decoded to its end

  std::uint64_t entry_start_ = 0;  // window positions
  std::uint64_t flushed_ = 0;
  std::uint64_t expected_ = 0;  // bytes that the header announces
};

}  // namespace companion::rar
