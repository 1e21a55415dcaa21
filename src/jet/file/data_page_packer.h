#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "jet/file/page_buffer.h"

namespace jet::file {

// Fills one page with rows: of a table, of long values or of usage maps.
class DataPagePacker {
 public:
  // Owner: a table's definition page, data::kLongValueOwner, or 0 for usage maps.
  explicit DataPagePacker(std::uint32_t owner);

  bool HasRoomFor(std::size_t length) const;

  // The row's number on the page. The caller has asked for room.
  std::uint8_t Add(std::string_view row);

  // Unused bytes, as the page says of itself.
  std::size_t Free() const;

  const PageBuffer& Page() const { return page_; }

 private:
  PageBuffer page_;
  std::size_t row_count_ = 0;
  std::size_t lowest_ = kPageSize;
};

}  // namespace jet::file
