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

std::string Reversed(std::string_view bytes) {
  return {bytes.rbegin(), bytes.rend()};
}

std::string SignedKey(std::string_view stored) {
  std::string key = Reversed(stored);
  FlipSign(key, 0);
  return key;
}

// IEEE numbers: those below zero sort by their inverted bytes.
std::string FloatingKey(std::string_view stored) {
  std::string key = Reversed(stored);
  if (IsNegative(key)) {
    Invert(key, 0);
  } else {
    FlipSign(key, 0);
  }
  return key;
}

// A sign, then the absolute value in words, the most significant one first.
std::string NumericKey(std::string_view stored, bool is_descending) {
  constexpr std::size_t kWord = 4;
  const bool is_negative = IsNegative(stored);
  std::string key;
  key.push_back(static_cast<char>(is_negative ? 0x00 : 0xFF));
  for (std::size_t at = 1; at + kWord <= stored.size(); at += kWord)
    key += Reversed(stored.substr(at, kWord));
  if (is_negative) Invert(key, 1);
  if (is_descending) Invert(key, 0);
  return key;
}

// Eight bytes at a time, each time followed by how many of them count or a mark that more follow,
// which is the same in both directions.
std::string BinaryKey(std::string_view bytes, bool is_descending) {
  constexpr std::size_t kSegment = 8;
  constexpr char kMoreFollow = 9;
  std::string key;
  for (;;) {
    const std::size_t begin = key.size();
    const std::size_t taken = std::min(bytes.size(), kSegment);
    key += bytes.substr(0, taken);
    key.append(kSegment - taken, '\0');
    bytes.remove_prefix(taken);
    if (bytes.empty()) {
      key.push_back(static_cast<char>(taken));
      if (is_descending) Invert(key, begin);
      return key;
    }
    if (is_descending) Invert(key, begin);
    key.push_back(kMoreFollow);
  }
}

// The first three parts are stored as little-endian numbers.
std::string GuidBytes(std::string_view stored) {
  return Reversed(stored.substr(0, 4)) + Reversed(stored.substr(4, 2)) +
         Reversed(stored.substr(6, 2)) + std::string(stored.substr(8));
}

std::string TextKey(std::string_view stored, bool is_descending) {
  std::string key = SortKey(UnpackText(stored));
  if (!is_descending) return key;
  Invert(key, 0);
  key.push_back('\0');
  return key;
}

std::string FixedKey(std::string key, bool is_descending) {
  if (is_descending) Invert(key, 0);
  return key;
}

std::string ValueKey(ColumnType type, std::string_view stored, bool is_descending) {
  switch (type) {
    case ColumnType::kBoolean:
      // True sorts first.
      return FixedKey(std::string(1, stored.front() == 0 ? '\xFF' : '\0'), is_descending);
    case ColumnType::kByte:
      return FixedKey(std::string(stored), is_descending);
    case ColumnType::kInteger:
    case ColumnType::kLong:
    case ColumnType::kCurrency:
      return FixedKey(SignedKey(stored), is_descending);
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDate:
      return FixedKey(FloatingKey(stored), is_descending);
    case ColumnType::kNumeric:
      return NumericKey(stored, is_descending);
    case ColumnType::kText:
    case ColumnType::kMemo:
      return TextKey(stored, is_descending);
    case ColumnType::kGuid:
      return BinaryKey(GuidBytes(stored), is_descending);
    case ColumnType::kBinary:
    case ColumnType::kOle:
    case ColumnType::kWideBinary:
      break;
  }
  return BinaryKey(stored, is_descending);
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
    key += ValueKey(table_->columns[part.place].type, *value, part.is_descending);
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
