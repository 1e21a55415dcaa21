#include "jet/file/data_page_packer.h"

#include "jet/file/limits.h"

namespace jet::file {

DataPagePacker::DataPagePacker(std::uint32_t owner) : page_(PageKind::kData) {
  page_.Set(page::kOwner, owner);
  page_.Set(page::kFree, static_cast<std::uint16_t>(Free()));
}

std::size_t DataPagePacker::Free() const {
  return lowest_ - data::kSlots - row_count_ * data::kSlotWidth;
}

bool DataPagePacker::HasRoomFor(std::size_t length) const {
  return row_count_ < limits::kRowsOnPage && length + data::kSlotWidth <= Free();
}

std::uint8_t DataPagePacker::Add(std::string_view row) {
  lowest_ -= row.size();
  page_.Put(lowest_, row);
  const Field<std::uint16_t> slot{data::kSlots + row_count_ * data::kSlotWidth};
  page_.Set(slot, static_cast<std::uint16_t>(lowest_));
  page_.Set(data::kRowCount, static_cast<std::uint16_t>(++row_count_));
  page_.Set(page::kFree, static_cast<std::uint16_t>(Free()));
  return static_cast<std::uint8_t>(row_count_ - 1);
}

}  // namespace jet::file
