#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "companion/rar/bit_reader.h"
#include "companion/rar/decoder.h"
#include "companion/rar/filter_pipeline.h"
#include "companion/rar/huffman.h"
#include "companion/rar/ppmd_model.h"
#include "companion/rar/rar3_filters.h"
#include "companion/rar/sliding_window.h"

namespace companion::rar {

// RAR 3 and 4 compression. The stream is blocks of two kinds that may follow one another within an
// entry: prefix codes with matches, or a PPMd model whose escapes stand for matches and commands.
// Both write into one window.
class Rar3Decoder : public Decoder {
 public:
  void Decode(const Entry& entry, PackedSource& source, ContentSink& sink) override;

 private:
  enum class Next { kSameBlock, kEndOfEntry };

  void ResetState();
  void MakeRoom();
  void BeginBlock();
  void BeginModel();
  void ReadTables();
  Next RunCodes();
  Next RunModel();
  Next EndCodes();
  Next ObeyModel(std::uint8_t command);
  Next FinishCodes();
  Next FinishModel();
  std::uint32_t DecodeSymbols(std::uint64_t until, std::ptrdiff_t bits);
  bool DecodeMatch(std::uint32_t slot, BitCursor& in, SlidingWindow::Cursor& window);
  bool DecodeRepeat(std::uint32_t index, BitCursor& in, SlidingWindow::Cursor& window);
  bool DecodeShort(std::uint32_t slot, BitCursor& in, SlidingWindow::Cursor& window);
  void Remember(std::uint32_t distance, std::uint32_t length);
  void CopyForModel(std::uint32_t distance, std::uint32_t length);
  template <typename TakeByte>
  void ReadFilter(TakeByte take_byte);
  void Flush();

  BitReader reader_;
  SlidingWindow window_;
  FilterPipeline pipeline_;
  Rar3Filters filters_;

  std::array<std::uint8_t, 404> lengths_{};  // of the four tables, one after the other
  HuffmanTable literals_;
  HuffmanTable distances_;
  HuffmanTable low_distances_;
  HuffmanTable repeat_lengths_;
  std::array<std::uint32_t, 4> last_distances_{};
  std::uint32_t last_length_ = 0;
  std::uint32_t low_distance_ = 0;
  std::uint32_t low_distance_repeats_ = 0;

  PpmdModel model_;
  RangeDecoder range_;
  std::uint8_t escape_ = 2;
  bool in_model_ = false;

  bool needs_block_ = true;  // the next entry begins with a block header
  bool can_go_on_ = false;   // the previous entry was decoded to its end
  std::vector<std::uint8_t> declaration_;
  std::uint64_t entry_start_ = 0;  // window positions
  std::uint64_t entry_end_ = 0;
  std::uint64_t flushed_ = 0;
};

}  // namespace companion::rar
