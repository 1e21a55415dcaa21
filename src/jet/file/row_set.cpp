#include "jet/file/row_set.h"

#include <algorithm>

namespace jet::file {

void RowSet::Add(RowPointer row) {
  if (pages_.empty() || pages_.back().page != row.page) pages_.push_back({row.page, {}});
  if (!pages_.back().rows.test(row.row)) ++size_;
  pages_.back().rows.set(row.row);
}

const RowSet::PageRows* RowSet::Find(PageNumber page) const {
  const auto found =
      std::lower_bound(pages_.begin(), pages_.end(), page,
                       [](const PageRows& rows, PageNumber wanted) { return rows.page < wanted; });
  return found != pages_.end() && found->page == page ? &*found : nullptr;
}

bool RowSet::Contains(RowPointer row) const {
  const PageRows* const found = Find(row.page);
  return found != nullptr && found->rows.test(row.row);
}

bool RowSet::Remove(RowPointer row) {
  auto* const found = const_cast<PageRows*>(Find(row.page));
  if (found == nullptr || !found->rows.test(row.row)) return false;
  found->rows.reset(row.row);
  --size_;
  return true;
}

RowPointer RowSet::First() const {
  for (const PageRows& page : pages_) {
    for (std::size_t row = 0; row < page.rows.size(); ++row) {
      if (page.rows.test(row)) return {page.page, static_cast<std::uint8_t>(row)};
    }
  }
  return {};
}

}  // namespace jet::file
