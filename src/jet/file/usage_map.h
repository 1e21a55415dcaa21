#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "jet/file/page_source.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

// A set of pages as the file keeps it: a row of bits, or a row of the numbers of pages of bits.
class UsageMap {
 public:
  // Throws Damage when the pointer leads to no map. The source must outlive the map.
  UsageMap(PageSource& source, RowPointer row, PageNumber from);

  // The smallest member that is not below the page. Members may lie beyond the end of the file.
  std::optional<PageNumber> Next(PageNumber page);

  bool Contains(PageNumber page);

  // The pages of bits that the map refers to; they belong to the map.
  std::vector<PageNumber> BitmapPages() const;

  // Whether the map says anything about the page, member or not.
  bool Covers(PageNumber page) const;

 private:
  // Bits of one stretch of pages; nothing when the map has none for it.
  std::optional<ByteView> Window(std::size_t index);

  PageSource* source_;
  PageView page_;
  ByteView bits_;  // of a direct map
  PageNumber first_page_ = 0;
  PageNumber window_ = 0;            // pages of one stretch
  std::vector<PageNumber> windows_;  // pages of bits; 0 where there is none
  std::optional<PageView> bitmap_;   // the last one looked at
};

}  // namespace jet::file
