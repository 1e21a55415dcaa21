#include "jet/file/index_key.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "jet/file/bytes.h"
#include "jet/file/packed_text.h"
#include "jet/values/sort_key.h"

namespace jet::file {
namespace {

constexpr std::uint8_t kSignBit = 0x80;

void Invert(std::string& bytes, std::size_t from) {
  std::transform(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                 bytes.begin() + static_cast<std::ptrdiff_t>(from),
                 [](char byte) { return static_cast<char>(~byte); });
}

void FlipSign(std::string& bytes, std::size_t at) {
  bytes[at] = static_cast<char>(static_cast<std::uint8_t>(bytes[at]) ^ kSignBit);
}

bool IsNegative(std::string_view big_endian) {
  return (static_cast<std::uint8_t>(big_endian.front()) & kSignBit) != 0;
}

void AppendReversed(std::string& key, std::string_view bytes) {
  key.append(bytes.rbegin(), bytes.rend());
}

void AppendSigned(std::string& key, std::string_view stored) {
  const std::size_t begin = key.size();
  AppendReversed(key, stored);
  FlipSign(key, begin);
}

// IEEE numbers: those below zero sort by their inverted bytes.
void AppendFloating(std::string& key, std::string_view stored) {
  const std::size_t begin = key.size();
  AppendReversed(key, stored);
  if (IsNegative(std::string_view(key).substr(begin))) {
    Invert(key, begin);
  } else {
    FlipSign(key, begin);
  }
}

// A sign, then the absolute value in words, the most significant one first.
void AppendNumeric(std::string& key, std::string_view stored) {
  constexpr std::size_t kWord = 4;
  const bool is_negative = IsNegative(stored);
  key.push_back(static_cast<char>(is_negative ? 0x00 : 0xFF));
  const std::size_t begin = key.size();
  for (std::size_t at = 1; at + kWord <= stored.size(); at += kWord)
    AppendReversed(key, stored.substr(at, kWord));
  if (is_negative) Invert(key, begin);
}

// Eight bytes at a time, each time followed by how many of them count or a mark that more follow,
// which is the same in both directions.
void AppendBinary(std::string& key, std::string_view bytes, bool is_descending) {
  constexpr std::size_t kSegment = 8;
  constexpr char kMoreFollow = 9;
  for (;;) {
    const std::size_t begin = key.size();
    const std::size_t taken = std::min(bytes.size(), kSegment);
    key += bytes.substr(0, taken);
    key.append(kSegment - taken, '\0');
    bytes.remove_prefix(taken);
    if (bytes.empty()) {
      key.push_back(static_cast<char>(taken));
      if (is_descending) Invert(key, begin);
      return;
    }
    if (is_descending) Invert(key, begin);
    key.push_back(kMoreFollow);
  }
}

// The first three parts are stored as little-endian numbers.
std::string GuidBytes(std::string_view stored) {
  std::string bytes;
  AppendReversed(bytes, stored.substr(0, 4));
  AppendReversed(bytes, stored.substr(4, 2));
  AppendReversed(bytes, stored.substr(6, 2));
  return bytes.append(stored.substr(8));
}

void AppendText(std::string& key, std::string_view stored, bool is_descending) {
  const std::size_t begin = key.size();
  AppendSortKey(UnpackUnits(stored), key);
  if (!is_descending) return;
  Invert(key, begin);
  key.push_back('\0');
}

// Numbers and Booleans, which descend by their inverted bytes.
bool TryAppendNumber(std::string& key, ColumnType type, std::string_view stored) {
  switch (type) {
    case ColumnType::kBoolean:
      // True sorts first.
      key.push_back(stored.front() == 0 ? '\xFF' : '\0');
      return true;
    case ColumnType::kByte:
      key += stored;
      return true;
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kCurrency:
      AppendSigned(key, stored);
      return true;
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDate:
      AppendFloating(key, stored);
      return true;
    case ColumnType::kNumeric:
      AppendNumeric(key, stored);
      return true;
    default:
      return false;
  }
}

void AppendValue(std::string& key, ColumnType type, std::string_view stored, bool is_descending) {
  const std::size_t begin = key.size();
  if (TryAppendNumber(key, type, stored)) {
    if (is_descending) Invert(key, begin);
  } else if (type == ColumnType::kText || type == ColumnType::kMemo) {
    AppendText(key, stored, is_descending);
  } else if (type == ColumnType::kGuid) {
    AppendBinary(key, GuidBytes(stored), is_descending);
  } else {
    AppendBinary(key, stored, is_descending);
  }
}

}  // namespace

IndexKey::IndexKey(const TableLayout& table, const IndexLayout& index)
    : table_(&table), ignores_nulls_(index.IgnoresNulls()) {
  for (const KeyColumn& column : index.columns) {
    for (std::size_t place = 0; place < table.columns.size(); ++place) {
      if (table.columns[place].id == column.column_id)
        parts_.push_back({place, column.is_descending});
    }
  }
}

bool IndexKey::Make(StoredValues values, std::string& key) const {
  key.clear();
  bool has_value = false;
  for (const Part& part : parts_) {
    const std::optional<std::string_view>& value = values[part.place];
    const std::uint8_t mark = value ? index::kValue : index::kNull;
    key.push_back(static_cast<char>(part.is_descending ? ~mark : mark));
    if (!value) continue;
    has_value = true;
    AppendValue(key, table_->columns[part.place].type, *value, part.is_descending);
  }
  return has_value || !ignores_nulls_;
}

std::vector<std::size_t> IndexKey::Places() const {
  std::vector<std::size_t> places;
  for (const Part& part : parts_)
    places.push_back(part.place);
  return places;
}

}  // namespace jet::file
