#include "jet/file/index_check.h"

#include <algorithm>
#include <utility>

#include "jet/file/check_texts.h"
#include "jet/file/long_value_reader.h"
#include "jet/file/packed_text.h"
#include "jet/values/sort_key.h"

namespace jet::file {
namespace {

constexpr std::size_t kOrdinaryKey = 510;  // bytes

constexpr std::uint32_t kGeneralOrder = 0x409;

// The record of a row that is known to be there.
PlacedRow Fetch(PageSource& source, const TableLayout& table, RowPointer row) {
  const DataPage page(source.Read(row.page));
  auto placed = RecordAt(source, table, page, row.row);
  if (!placed) throw Damage(row.page, texts::kNoSuchRow);
  return std::move(*placed);
}

// Whether this room's keys of the value are those of the engine: numbers always, texts in the
// General order where their characters have known weights.
bool HasKnownKey(const ColumnLayout& column, std::string_view stored) {
  const std::size_t width = ValueWidth(column.type);
  if (width != 0) return stored.size() == width;
  if (column.type != ColumnType::kText && column.type != ColumnType::kMemo) return true;
  return column.sort_order == kGeneralOrder && HasKnownOrder(UnpackText(stored));
}

}  // namespace

IndexCheck::IndexCheck(CheckContext& context, std::string name, const TableLayout& table,
                       const IndexLayout& index, const RowSet& rows)
    : context_(context),
      name_(std::move(name)),
      table_(table),
      index_(index),
      shape_(ShapeOf(table)),
      rows_(rows),
      left_(rows),
      key_(table, index),
      places_(key_.Places()),
      values_(table.columns.size()),
      owner_(context.census.NewOwner(name_)) {}

void IndexCheck::Run() {
  try {
    Branch root;
    if (!CheckTree(index_.root, table_.page, 0, root)) is_whole_ = false;
    if (is_whole_ && expected_leaf_ != 0)
      context_.findings.AddFault(check_texts::kLeafLinks, name_, last_leaf_);
    // Half a tree would make findings of all that the other half holds.
    if (is_whole_) {
      CheckMap();
      CheckMissingRows();
    }
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
  }
  if (long_keys_ != 0)
    context_.findings.AddNote(check_texts::kLongKeys, name_, index_.root,
                              std::to_string(long_keys_));
}

void IndexCheck::CheckMap() {
  UsageMap map = context_.maps.Open(context_.source, index_.pages_map, table_.page, name_);
  std::sort(pages_.begin(), pages_.end());
  PageNumber from = 0;
  std::size_t position = 0;
  while (const auto page = map.Next(from)) {
    from = *page + 1;
    if (position == pages_.size() || pages_[position] != *page) {
      context_.findings.AddFault(check_texts::kIndexMap, name_, *page);
      return;
    }
    ++position;
  }
  if (position != pages_.size())
    context_.findings.AddFault(check_texts::kIndexMap, name_, pages_[position]);
}

bool IndexCheck::CheckTree(PageNumber number, PageNumber from, std::size_t depth, Branch& branch) {
  try {
    if (depth > limits::kTreeDepth) throw Damage(from, texts::kDeepIndex);
    // A page is entered once only, so that a tree that leads back into itself ends here.
    if (!context_.census.Claim(number, owner_, context_.findings)) return false;
    pages_.push_back(number);
    const PageView view = context_.source.Read(number, from);
    const IndexPage page(view);
    view.ExpectOwner(table_.page);
    if (page.IsLeaf()) {
      CheckLeaf(page, branch);
    } else {
      CheckNode(page, depth, branch);
    }
    CheckPageFacts(page, branch.height);
    return true;
  } catch (const Damage& damage) {
    context_.findings.AddDamage(name_, damage);
    return false;
  }
}

void IndexCheck::CheckPageFacts(const IndexPage& page, std::size_t height) {
  const PageView& view = page.Page();
  if (view.Get(index::kHeight) != height)
    context_.findings.AddFault(check_texts::kHeight, name_, view.Page());
  const std::size_t claimed = view.Get(page::kFree);
  if (claimed > page.Room()) {
    context_.findings.AddFault(check_texts::kFreeBytesHigh, name_, view.Page());
  } else if (claimed < page.Room()) {
    context_.findings.AddNote(check_texts::kFreeBytesLow, name_, view.Page());
  }
}

void IndexCheck::CheckLeaf(const IndexPage& page, Branch& branch) {
  const PageNumber number = page.Page().Page();
  const bool is_first = last_leaf_ == 0;
  if (is_whole_ && (page.Previous() != last_leaf_ || (!is_first && expected_leaf_ != number)))
    context_.findings.AddFault(check_texts::kLeafLinks, name_, number);
  last_leaf_ = number;
  expected_leaf_ = page.Next();
  for (std::size_t i = 0; i < page.Size(); ++i)
    CheckEntry(page.Entry(i), number);
  branch.last_entry = last_entry_;
  branch.height = 0;
}

void IndexCheck::CheckNode(const IndexPage& page, std::size_t depth, Branch& branch) {
  const PageNumber number = page.Page().Page();
  const std::vector<PageNumber> children = page.Children();
  if (children.empty()) page.Page().Fail(texts::kBadIndexPage);
  for (std::size_t i = 0; i < children.size(); ++i) {
    Branch child;
    if (!CheckTree(children[i], number, depth + 1, child)) {
      is_whole_ = false;
      continue;
    }
    if (is_whole_ && i != 0 && child.height + 1 != branch.height)
      context_.findings.AddFault(check_texts::kUnevenDepth, name_, children[i]);
    if (i < page.Size() && is_whole_) {
      const std::string entry = page.Entry(i);
      if (entry.substr(0, entry.size() - index::kPointerWidth) != child.last_entry)
        context_.findings.AddFault(check_texts::kSeparator, name_, number);
    }
    branch = {child.last_entry, child.height + 1};
  }
}

void IndexCheck::CheckEntry(const std::string& entry, PageNumber page) {
  const IndexEntry parts = IndexEntry::FromLeaf(entry);
  const bool is_first = last_entry_.empty();
  const std::string_view last_key = is_first ? "" : IndexEntry::FromLeaf(last_entry_).key;
  if (!is_first && entry <= last_entry_)
    context_.findings.AddFault(check_texts::kEntryOrder, name_, page);
  if (parts.key.size() > kOrdinaryKey) ++long_keys_;
  const bool is_repeated = !is_first && index_.IsUnique() && parts.key == last_key;
  if (!left_.Remove(parts.row)) {
    context_.findings.AddFault(
        rows_.Contains(parts.row) ? check_texts::kEntryTwice : check_texts::kEntryOfNoRow, name_,
        page);
  } else if (context_.depth == CheckDepth::kWhole) {
    CheckRowOfEntry(parts, page, is_repeated);
  }
  last_entry_ = entry;
}

std::size_t IndexCheck::TakeKeyValues(const PlacedRow& placed) {
  const RowView row(placed.record, shape_);
  long_values_.clear();
  std::size_t nulls = 0;
  for (const std::size_t place : places_) {
    const ColumnLayout& column = table_.columns[place];
    values_[place] = row.Stored(column);
    if (!values_[place]) {
      ++nulls;
    } else if (IsLong(column.type)) {
      long_values_.push_back(
          ReadLongValue(context_.source, {placed.record.Page(), *values_[place]}));
      values_[place] = long_values_.back();
    }
  }
  return nulls;
}

void IndexCheck::CheckRowOfEntry(const IndexEntry& entry, PageNumber page, bool is_repeated) {
  const PlacedRow placed = Fetch(context_.source, table_, entry.row);
  const std::size_t nulls = TakeKeyValues(placed);
  if (is_repeated && nulls == 0)
    context_.findings.AddFault(check_texts::kDuplicateKey, name_, page);
  if (index_.IsRequired() && nulls != 0)
    context_.findings.AddFault(check_texts::kNullKey, name_, page);
  std::string key;
  if (!key_.Make(values_, key)) {
    context_.findings.AddFault(check_texts::kEntryOfNulls, name_, page);
    return;
  }
  const bool is_known = std::all_of(places_.begin(), places_.end(), [this](std::size_t place) {
    return !values_[place] || HasKnownKey(table_.columns[place], *values_[place]);
  });
  if (is_known && key != entry.key) context_.findings.AddFault(check_texts::kWrongKey, name_, page);
}

void IndexCheck::CheckMissingRows() {
  left_.ForEach([this](RowPointer row) {
    const bool may_be_missing =
        index_.IgnoresNulls() &&
        TakeKeyValues(Fetch(context_.source, table_, row)) == places_.size();
    if (may_be_missing) return;
    context_.findings.AddFault(check_texts::kRowWithoutEntry, name_, row.page);
  });
}

}  // namespace jet::file
