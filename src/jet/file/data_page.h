#pragma once

#include <cstddef>
#include <string_view>

#include "jet/file/page_source.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

enum class RowState {
  kLive,
  kMoved,   // the bytes are a row pointer
  kHidden,  // where a moved row stands; only its pointer leads here
  kDead,
};

// A page of rows. The directory of the rows is judged when the page is taken; rows are slices that
// live as long as the page does.
class DataPage {
 public:
  struct Row {
    std::size_t offset = 0;
    std::string_view bytes;
    RowState state = RowState::kLive;
  };

  // Throws Damage when this is no page of rows or its directory contradicts itself.
  explicit DataPage(PageView page);

  const PageView& Page() const { return page_; }
  std::size_t RowCount() const { return row_count_; }

  // Throws Damage when there is no such row.
  Row At(std::size_t row) const;

 private:
  PageView page_;
  std::size_t row_count_ = 0;
};

// The row of that pointer, of a data page that belongs to the owner. The page keeps the row alive.
struct PointedRow {
  DataPage page;
  DataPage::Row row;
};
PointedRow ReadRow(PageSource& source, RowPointer pointer, PageNumber owner, PageNumber from);

}  // namespace jet::file
