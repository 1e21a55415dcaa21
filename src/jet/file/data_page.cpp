#include "jet/file/data_page.h"

#include <cstdint>
#include <utility>

namespace jet::file {
namespace {

constexpr std::size_t kMostRows = (kPageSize - data::kSlots) / data::kSlotWidth;

Field<std::uint16_t> Slot(std::size_t row) {
  return {data::kSlots + row * data::kSlotWidth};
}

RowState StateOf(std::uint16_t slot) {
  switch (slot & data::kDead) {
    case data::kDead:
      return RowState::kDead;
    case data::kHidden:
      return RowState::kHidden;
    case data::kMoved:
      return RowState::kMoved;
    default:
      return RowState::kLive;
  }
}

}  // namespace

DataPage::DataPage(PageView page) : page_(std::move(page)) {
  page_.Expect(PageKind::kData);
  row_count_ = page_.Get(data::kRowCount);
  if (row_count_ > kMostRows) page_.Fail(texts::kBadRowDirectory);
  const std::size_t directory_end = Slot(row_count_).offset;
  std::size_t end = kPageSize;
  for (std::size_t row = 0; row < row_count_; ++row) {
    const std::size_t offset = page_.Get(Slot(row)) & data::kOffsetMask;
    if (offset < directory_end || offset > end) page_.Fail(texts::kBadRowDirectory);
    end = offset;
  }
}

DataPage::Row DataPage::At(std::size_t row) const {
  if (row >= row_count_) page_.Fail(texts::kNoSuchRow);
  const std::uint16_t slot = page_.Get(Slot(row));
  const std::size_t end =
      row == 0 ? kPageSize : std::size_t{page_.Get(Slot(row - 1))} & data::kOffsetMask;
  Row result;
  result.offset = slot & data::kOffsetMask;
  result.bytes = page_.Bytes().substr(result.offset, end - result.offset);
  result.state = StateOf(slot);
  return result;
}

PointedRow ReadRow(PageSource& source, RowPointer pointer, PageNumber owner, PageNumber from) {
  const PageView page = source.Read(pointer.page, from);
  page.Expect(PageKind::kData);
  page.ExpectOwner(owner);
  DataPage rows(page);
  const DataPage::Row row = rows.At(pointer.row);
  return {std::move(rows), row};
}

}  // namespace jet::file
