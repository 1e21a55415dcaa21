#include "jet/file/index_page.h"

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

IndexEntry IndexEntry::FromLeaf(std::string_view entry) {
  const std::size_t key_length = entry.size() - index::kPointerWidth;
  return {entry.substr(0, key_length),
          RowPointer::FromWord(LoadBig<std::uint32_t>(entry.data() + key_length))};
}

}  // namespace jet::file
