#include "jet/store/row_limit.h"

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/file/limits.h"
#include "jet/file/packed_text.h"
#include "jet/storage_sql.h"
#include "jet/values/sort_key.h"

namespace jet {
namespace {

using file::ColumnLayout;
using ports::DataType;

constexpr std::size_t kUnitBytes = sizeof(char16_t);

constexpr std::size_t kMarkWidth = 1;  // of each value in a key

std::size_t LongValueLength(std::size_t unpacked, std::size_t stored) {
  namespace long_value = file::long_value;
  return long_value::kReferenceWidth + (unpacked <= long_value::kLongestInline ? stored : 0);
}

std::size_t LongestValue(const ColumnLayout& column) {
  if (file::IsLong(column.type))
    return file::long_value::kReferenceWidth + file::long_value::kLongestInline;
  const std::size_t width = file::ValueWidth(column.type);
  return width != 0 ? width : column.size;
}

// Of a field's value in a key, its mark included. A character takes up to four bytes and an accent.
std::size_t LongestKey(const ports::FieldDefinition& field) {
  constexpr std::size_t kCharacter = 5;
  constexpr std::size_t kLevelMarks = 6;
  constexpr std::size_t kLongestFixed = 18;
  const auto size = static_cast<std::size_t>(field.size);
  if (field.type == DataType::kBinary) return kMarkWidth + BytesKeyLength(size);
  if (!IsTextType(field.type)) return kMarkWidth + kLongestFixed;
  const std::size_t units = field.type == DataType::kMemo ? file::limits::kTextUnits : size;
  return kMarkWidth + kCharacter * units + kLevelMarks;
}

bool IsVariable(const ColumnLayout& column) {
  return !column.IsFixed() && column.type != file::ColumnType::kBoolean;
}

std::string Trigger(const TableInfo& table, char suffix, const char* event,
                    const std::string& condition) {
  return "CREATE TRIGGER IF NOT EXISTS w" + std::to_string(table.id) + suffix + " AFTER " + event +
         " ON " + table.StorageName() + " WHEN " + condition + " BEGIN SELECT " +
         CallSql(fn::kRefuse, {std::to_string(kRecordTooLong), TextLiteral(table.name)}) + "; END;";
}

}  // namespace

std::string RowLimitTriggers(const TableInfo& table, const file::TableLayout& layout) {
  const std::size_t rest = file::ShapeOf(layout).declared_length;
  std::size_t longest = rest;
  std::string length = std::to_string(rest);
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    const ColumnLayout& column = layout.columns[i];
    if (!IsVariable(column)) continue;
    longest += LongestValue(column);
    const bool may_compress = (column.extra_flags & file::definition::column::kCompressed) != 0;
    length += " + " + CallSql(fn::kStoredLength,
                              {"NEW." + table.fields[i].column,
                               std::to_string(static_cast<int>(table.fields[i].definition.type)),
                               may_compress ? "1" : "0"});
  }
  std::string condition;
  if (longest > file::limits::kRecordLength)
    condition = length + " > " + std::to_string(file::limits::kRecordLength);
  for (const IndexInfo& index : table.indexes) {
    const std::string key = KeyTooLongSql(table, index, "NEW.");
    if (!key.empty()) Append(condition, key, " OR ");
  }
  if (condition.empty()) return {};
  return Trigger(table, 'a', "INSERT", condition) + Trigger(table, 'b', "UPDATE", condition);
}

std::string KeyTooLongSql(const TableInfo& table, const IndexInfo& index, std::string_view prefix) {
  std::size_t longest = 0;
  std::size_t rest = 0;
  std::string length;
  for (const std::size_t position : index.positions) {
    const FieldInfo& field = table.fields[position];
    const ports::FieldDefinition& definition = field.definition;
    longest += LongestKey(definition);
    if (IsTextType(definition.type) || definition.type == DataType::kBinary) {
      rest += kMarkWidth;
      Append(length, CallSql(fn::kKeyLength, {std::string(prefix) + field.column}), " + ");
    } else {
      rest += LongestKey(definition);
    }
  }
  if (longest <= file::limits::kIndexKeyLength) return {};
  return length + " > " + std::to_string(file::limits::kIndexKeyLength - rest);
}

std::string DropRowLimitTriggers(std::int64_t table) {
  const std::string name = "DROP TRIGGER IF EXISTS w" + std::to_string(table);
  return name + "a; " + name + "b;";
}

std::size_t StoredTextLength(std::string_view text, DataType type, bool may_compress) {
  const std::size_t stored = file::PackText(text, may_compress).size();
  if (type != DataType::kMemo) return stored;
  return LongValueLength(kUnitBytes * tmw::Utf8ToUtf16(text).size(), stored);
}

std::size_t StoredBytesLength(std::size_t length, DataType type) {
  return type == DataType::kLongBinary ? LongValueLength(length, length) : length;
}

std::size_t TextKeyLength(std::string_view text) {
  return SortKey(text).size() + 1;  // descending keys have one byte more
}

std::size_t BytesKeyLength(std::size_t length) {
  constexpr std::size_t kSegment = 8;
  return (kSegment + 1) * (length <= kSegment ? 1 : (length + kSegment - 1) / kSegment);
}

void CheckPackable(const ports::DatabaseValue& value, const Target& target) {
  const auto* const text = std::get_if<std::string>(&value);
  if (text != nullptr && !file::CanPackText(*text))
    Fail(kConversion, ": поле \"" + target.name + "\"");
}

}  // namespace jet
