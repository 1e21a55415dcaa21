#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "jet/file/limits.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

// A set of rows: 36 bytes a page, whatever stands on it. Pages are added in ascending order.
class RowSet {
 public:
  // The page must not be below the last one.
  void Add(RowPointer row);

  bool Contains(RowPointer row) const;

  // Returns false when the row was no member.
  bool Remove(RowPointer row);

  std::uint64_t Size() const { return size_; }

  // The smallest member; the set must not be empty.
  RowPointer First() const;

  // Calls visit(RowPointer) for every member in ascending order.
  template <typename Visit>
  void ForEach(Visit visit) const {
    for (const PageRows& page : pages_) {
      for (std::size_t row = 0; row < page.rows.size(); ++row) {
        if (page.rows.test(row)) visit(RowPointer{page.page, static_cast<std::uint8_t>(row)});
      }
    }
  }

 private:
  struct PageRows {
    PageNumber page = 0;
    std::bitset<limits::kRowsOnPage + 1> rows;
  };
  const PageRows* Find(PageNumber page) const;

  std::vector<PageRows> pages_;
  std::uint64_t size_ = 0;
};

}  // namespace jet::file
