#include "jet/file/usage_map_packer.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace jet::file {
namespace {

constexpr std::size_t kBitsInByte = 8;
constexpr std::size_t kBitsWidth = 4;  // direct maps grow by so many bytes
// Longer maps take pages of bits: a page of rows should hold some.
constexpr std::size_t kLongestDirectBits = 1024;
constexpr std::size_t kBytesOfBitmap = kPageSize - usage_map::kBitmapBits;

std::string DirectMap(PageNumber first, std::string_view bits) {
  std::string row;
  row.push_back(static_cast<char>(usage_map::kDirect));
  AppendLittle(row, first);
  row += bits;
  const std::size_t width = (bits.size() + kBitsWidth - 1) / kBitsWidth * kBitsWidth;
  row.resize(std::max(usage_map::kDirectLength, usage_map::kBits + width));
  return row;
}

std::string ReferenceMap(const std::vector<PageNumber>& bitmaps) {
  std::string row;
  row.push_back(static_cast<char>(usage_map::kReferences));
  for (const PageNumber page : bitmaps)
    AppendLittle(row, page);
  row.resize(usage_map::kPageNumbers + usage_map::kReferenceCount * sizeof(PageNumber));
  return row;
}

PageBuffer Bitmap(std::string_view bits) {
  PageBuffer page(PageKind::kUsageBitmap);
  page.Put(usage_map::kBitmapBits, bits);
  return page;
}

std::string_view PartOf(std::string_view bits, std::size_t part) {
  const std::size_t begin = std::min(part * kBytesOfBitmap, bits.size());
  return bits.substr(begin, kBytesOfBitmap);
}

// Zeroes for the pages in use, ones behind them up to the end of the length.
std::string FreeBits(PageNumber used, std::size_t length) {
  std::string bits(length, '\xFF');
  std::fill_n(bits.begin(), used / kBitsInByte, '\0');
  const std::size_t rest = used % kBitsInByte;
  if (rest != 0) bits[used / kBitsInByte] = static_cast<char>(0xFFU << rest);
  return bits;
}

}  // namespace

UsageMapPacker::UsageMapPacker(PageSink& sink, std::optional<PageNumber> first_page)
    : sink_(&sink), page_(first_page), rows_(0) {}

RowPointer UsageMapPacker::Add(const PageSet& pages) {
  const std::string& bits = pages.Bits();
  if (bits.size() <= kLongestDirectBits) return AddRow(DirectMap(0, bits));
  std::vector<PageNumber> bitmaps;
  for (std::size_t part = 0; part * kBytesOfBitmap < bits.size(); ++part) {
    const std::string_view part_bits = PartOf(bits, part);
    const bool is_empty = part_bits.find_first_not_of('\0') == std::string_view::npos;
    bitmaps.push_back(is_empty ? 0 : sink_->Reserve());
    if (!is_empty) sink_->Put(bitmaps.back(), Bitmap(part_bits));
  }
  return AddRow(ReferenceMap(bitmaps));
}

RowPointer UsageMapPacker::AddSpace(std::optional<PageNumber> page) {
  PageSet window;
  PageNumber first = 0;
  if (page) {
    first = *page / usage_map::kDirectPages * usage_map::kDirectPages;
    window.Add(*page - first);
  }
  return AddRow(DirectMap(first, window.Bits()));
}

RowPointer UsageMapPacker::AddRow(std::string_view row) {
  if (page_ && !rows_.HasRoomFor(row.size())) Finish();
  if (!page_) {
    page_ = sink_->Reserve();
    rows_ = DataPagePacker(0);
  }
  return {*page_, rows_.Add(row)};
}

void UsageMapPacker::Finish() {
  if (page_) sink_->Put(*page_, rows_.Page());
  page_.reset();
}

void PutFreePages(PageSink& sink) {
  DataPagePacker rows(space::kPage);
  const PageNumber used = sink.PageCount();
  if (used <= kLongestDirectBits * kBitsInByte) {
    const std::size_t windows = (used + usage_map::kDirectPages - 1) / usage_map::kDirectPages;
    const std::size_t length = windows * usage_map::kDirectPages / kBitsInByte;
    rows.Add(DirectMap(0, FreeBits(used, length)));
  } else {
    // The pages of bits are pages of the file themselves.
    std::vector<PageNumber> bitmaps;
    while (bitmaps.size() * usage_map::kBitmapPages < sink.PageCount())
      bitmaps.push_back(sink.Reserve());
    const std::string bits =
        FreeBits(sink.PageCount(), bitmaps.size() * usage_map::kBitmapPages / kBitsInByte);
    for (std::size_t part = 0; part < bitmaps.size(); ++part)
      sink.Put(bitmaps[part], Bitmap(PartOf(bits, part)));
    rows.Add(ReferenceMap(bitmaps));
  }
  rows.Add(DirectMap(0, {}));
  sink.Put(space::kPage, rows.Page());
}

}  // namespace jet::file
