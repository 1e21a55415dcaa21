#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "jet/file/page_source.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

enum class LongValueForm { kInline, kSingleRow, kChain };

// What a record says of a long value. Throws Damage for what is no reference.
struct LongValueReference {
  LongValueForm form = LongValueForm::kInline;
  std::size_t length = 0;
  RowPointer pointer;
  std::uint32_t chain_word = 0;

  // An empty text may stand there without a reference.
  static LongValueReference Parse(ByteView stored);
};

// Reads one long value piece by piece; a piece is at most a page long.
class LongValueReader {
 public:
  // The stored bytes and the source must outlive the reader.
  LongValueReader(PageSource& source, ByteView stored);

  const LongValueReference& Reference() const { return reference_; }

  // The next piece, nothing behind the last one; valid until the next call. Throws Damage when the
  // pieces do not add up to the length, or lead astray.
  std::optional<std::string_view> Next();

  // Where the piece that was read last stands; inline values stand in their record.
  RowPointer Place() const { return place_; }

 private:
  std::string_view NextRow();

  PageSource* source_;
  ByteView stored_;
  LongValueReference reference_;
  std::size_t left_;
  bool has_begun_ = false;
  RowPointer place_;
  RowPointer next_;
  std::optional<PageView> page_;
};

// The whole value.
std::string ReadLongValue(PageSource& source, ByteView stored);

}  // namespace jet::file
