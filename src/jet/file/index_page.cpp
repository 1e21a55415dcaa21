#include "jet/file/index_page.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace jet::file {
namespace {

constexpr std::size_t kBitsInByte = 8;

std::vector<std::size_t> FindEnds(const PageView& page) {
  std::vector<std::size_t> ends;
  const std::string_view bits = page.Slice(index::kEndBits, index::kEntries - index::kEndBits);
  for (std::size_t byte = 0; byte < bits.size(); ++byte) {
    auto rest = static_cast<unsigned char>(bits[byte]);
    while (rest != 0) {
      const auto bit = static_cast<std::size_t>(std::countr_zero(rest));
      ends.push_back(index::kEntries + byte * kBitsInByte + bit);
      rest = static_cast<unsigned char>(rest & (rest - 1U));
    }
  }
  return ends;
}

}  // namespace

IndexPage::IndexPage(PageView page) : page_(std::move(page)), ends_(FindEnds(page_)) {
  if (page_.Kind() != PageKind::kIndexNode) page_.Expect(PageKind::kIndexLeaf);
  const std::size_t least = index::kPointerWidth * (IsLeaf() ? 1 : 2) + 1;
  const std::size_t prefix = page_.Get(index::kPrefixLength);
  std::size_t begin = index::kEntries;
  bool is_first = true;
  for (const std::size_t end : ends_) {
    const std::size_t own = end < begin || end > kPageSize ? 0 : end - begin;
    if (own + (is_first ? 0 : prefix) < least || (is_first && prefix > own))
      page_.Fail(texts::kBadIndexPage);
    is_first = false;
    begin = end;
  }
  if (!ends_.empty()) prefix_ = page_.Slice(index::kEntries, prefix);
}

std::string IndexPage::Entry(std::size_t entry) const {
  if (entry >= ends_.size()) page_.Fail(texts::kBadIndexPage);
  const std::size_t begin = entry == 0 ? index::kEntries : ends_[entry - 1];
  std::string bytes(entry == 0 ? std::string_view{} : prefix_);
  return bytes.append(page_.Slice(begin, ends_[entry] - begin));
}

std::vector<PageNumber> IndexPage::Children() const {
  std::vector<PageNumber> children;
  for (std::size_t entry = 0; entry < Size(); ++entry) {
    const std::string bytes = Entry(entry);
    children.push_back(LoadBig<PageNumber>(bytes.data() + bytes.size() - index::kPointerWidth));
  }
  if (LastChild() != 0) children.push_back(LastChild());
  return children;
}

std::size_t IndexPage::Room() const {
  return kPageSize - (ends_.empty() ? index::kEntries : ends_.back());
}

std::string_view IndexPagePacker::At(std::size_t entry) const {
  const std::size_t begin = entry == 0 ? 0 : ends_[entry - 1];
  return std::string_view(bytes_).substr(begin, ends_[entry] - begin);
}

bool IndexPagePacker::TryAdd(std::string_view entry, bool may_share) {
  std::size_t prefix = prefix_;
  const std::size_t whole = bytes_.size() + entry.size();
  if (whole > index::kEntrySpace) {
    // Sharing begins when the page is full, and never with the first entry alone.
    if (ends_.empty() || !may_share) return false;
    const std::string_view first = At(0);
    const std::size_t most = prefix_ == 0 ? std::min(first.size(), entry.size()) : prefix_;
    const auto differs = std::mismatch(
        first.begin(), first.begin() + static_cast<std::ptrdiff_t>(std::min(most, entry.size())),
        entry.begin());
    prefix = static_cast<std::size_t>(differs.first - first.begin());
    if (whole - prefix * ends_.size() > index::kEntrySpace) return false;
  }
  prefix_ = prefix;
  bytes_ += entry;
  ends_.push_back(bytes_.size());
  return true;
}

void IndexPagePacker::RemoveLast() {
  ends_.pop_back();
  bytes_.resize(ends_.empty() ? 0 : ends_.back());
}

void IndexPagePacker::Clear() {
  bytes_.clear();
  ends_.clear();
  prefix_ = 0;
}

PageBuffer IndexPagePacker::Pack(const Head& head) const {
  PageBuffer page(head.height == 0 ? PageKind::kIndexLeaf : PageKind::kIndexNode);
  page.Set(page::kOwner, head.owner);
  page.Set(index::kPrevious, head.previous);
  page.Set(index::kNext, head.next);
  page.Set(index::kLastChild, head.last_child);
  page.Set(index::kPrefixLength, static_cast<std::uint16_t>(prefix_));
  page.Set(index::kHeight, head.height);
  std::size_t end = 0;
  for (std::size_t i = 0; i < Size(); ++i) {
    const std::string_view entry = i == 0 ? At(0) : At(i).substr(prefix_);
    page.Put(index::kEntries + end, entry);
    end += entry.size();
    const Field<std::uint8_t> bits{index::kEndBits + end / kBitsInByte};
    page.Set(bits, static_cast<std::uint8_t>(page.Get(bits) | (1U << (end % kBitsInByte))));
  }
  page.Set(page::kFree, static_cast<std::uint16_t>(index::kEntrySpace - end));
  return page;
}

IndexEntry IndexEntry::FromLeaf(std::string_view entry) {
  const std::size_t key_length = entry.size() - index::kPointerWidth;
  return {entry.substr(0, key_length),
          RowPointer::FromWord(LoadBig<std::uint32_t>(entry.data() + key_length))};
}

}  // namespace jet::file
