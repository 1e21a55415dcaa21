#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "jet/file/data_page_packer.h"
#include "jet/file/long_value_reader.h"
#include "jet/file/page_set.h"
#include "jet/file/page_sink.h"

namespace jet::file {

// Writes the values of one long column.
class LongValuePacker {
 public:
  // Texts may be compressed. The sink must outlive the packer.
  LongValuePacker(PageSink& sink, bool holds_texts) : sink_(&sink), holds_texts_(holds_texts) {}

  // What the record is to hold for a value that is at hand.
  std::string Pack(std::string_view value);

  // The same for the value of another file's record, piece by piece. Throws Damage.
  std::string Copy(PageSource& source, ByteView stored);

  // Writes the page that was filled last. Nothing may be packed afterwards.
  void Finish();

  const PageSet& Pages() const { return pages_; }

  // The page with room for more values, if there is one.
  std::optional<PageNumber> SpacePage() const;

 private:
  class Chain;

  std::string PackRow(std::string_view value);

  PageSink* sink_;
  bool holds_texts_;
  PageSet pages_;
  std::optional<PageNumber> page_;  // of values that share a page
  DataPagePacker rows_{data::kLongValueOwner};
};

// The stored form of a memo: compressed where the column allows it, unless the value is too long
// for a single row.
std::string PackMemo(std::string_view text, bool may_compress);

}  // namespace jet::file
