#include "jet/file/usage_map.h"

#include "jet/file/data_page.h"

namespace jet::file {
namespace {

constexpr unsigned kBitsInByte = 8;

std::string_view MapRow(PageSource& source, RowPointer pointer, PageNumber from, PageView& page) {
  const DataPage rows(source.Read(pointer.page, from));
  const DataPage::Row row = rows.At(pointer.row);
  if (row.state != RowState::kLive) rows.Page().Fail(texts::kNotAMap);
  page = rows.Page();
  return row.bytes;
}

}  // namespace

UsageMap::UsageMap(PageSource& source, RowPointer row, PageNumber from)
    : source_(&source), page_(source.Read(row.page, from)), bits_(row.page, {}) {
  const ByteView map(row.page, MapRow(source, row, from, page_));
  const std::uint8_t form = map.Get(usage_map::kForm);
  if (form == usage_map::kDirect) {
    first_page_ = map.Get(usage_map::kFirstPage);
    bits_ = map.Part(usage_map::kBits, map.Length() - usage_map::kBits);
    window_ = static_cast<PageNumber>(bits_.Length() * kBitsInByte);
    windows_.push_back(row.page);
  } else if (form == usage_map::kReferences) {
    constexpr std::size_t kWidth = sizeof(PageNumber);
    for (std::size_t at = usage_map::kPageNumbers; at + kWidth <= map.Length(); at += kWidth)
      windows_.push_back(map.Get(Field<PageNumber>{at}));
    window_ = usage_map::kBitmapPages;
  } else {
    map.Fail(texts::kNotAMap);
  }
}

std::optional<ByteView> UsageMap::Window(std::size_t index) {
  if (bits_.Length() != 0) return bits_;
  const PageNumber number = windows_[index];
  if (number == 0) return std::nullopt;
  if (!bitmap_ || bitmap_->Page() != number) {
    bitmap_ = source_->Read(number, page_.Page());
    bitmap_->Expect(PageKind::kUsageBitmap);
  }
  return bitmap_->Part(usage_map::kBitmapBits, kPageSize - usage_map::kBitmapBits);
}

std::optional<PageNumber> UsageMap::Next(PageNumber page) {
  if (window_ == 0) return std::nullopt;
  std::size_t wanted = page > first_page_ ? page - first_page_ : 0;
  for (std::size_t index = wanted / window_; index < windows_.size(); ++index) {
    const auto bits = Window(index);
    std::size_t bit = wanted > std::uint64_t{index} * window_ ? wanted % window_ : 0;
    while (bits && bit < window_) {
      const unsigned byte = static_cast<unsigned char>(bits->Bytes()[bit / kBitsInByte]);
      const unsigned rest = byte >> (bit % kBitsInByte);
      if ((rest & 1U) != 0)
        return static_cast<PageNumber>(first_page_ + std::uint64_t{index} * window_ + bit);
      // Without another member in this byte, the next one follows.
      bit = rest != 0 ? bit + 1 : (bit / kBitsInByte + 1) * kBitsInByte;
    }
  }
  return std::nullopt;
}

bool UsageMap::Contains(PageNumber page) {
  if (!Covers(page)) return false;
  const std::size_t place = page - first_page_;
  const auto bits = Window(place / window_);
  const std::size_t bit = place % window_;
  if (!bits || bit / kBitsInByte >= bits->Length()) return false;
  const auto byte = static_cast<unsigned char>(bits->Bytes()[bit / kBitsInByte]);
  return ((byte >> (bit % kBitsInByte)) & 1U) != 0;
}

bool UsageMap::Covers(PageNumber page) const {
  if (window_ == 0 || page < first_page_) return false;
  const std::size_t index = (page - first_page_) / window_;
  return index < windows_.size() && windows_[index] != 0;
}

std::vector<PageNumber> UsageMap::BitmapPages() const {
  std::vector<PageNumber> pages;
  if (bits_.Length() != 0) return pages;
  for (const PageNumber number : windows_) {
    if (number != 0) pages.push_back(number);
  }
  return pages;
}

}  // namespace jet::file
