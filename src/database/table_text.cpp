#include "database/table_text.h"

#include <charconv>
#include <optional>
#include <utility>

#include "database/database_texts.h"
#include "database/db_string.h"
#include "database/default_text.h"
#include "foundation/program_error.h"
#include "foundation/text.h"

namespace tmw {
namespace {

constexpr std::string_view kTable = "Table:";
constexpr std::string_view kField = "Field:";
constexpr std::string_view kIndex = "Index:";
constexpr std::string_view kRows = "Rows";
constexpr std::string_view kEndRows = "EndRows";
constexpr std::string_view kEndTable = "EndTable";

// Cuts off the text up to the separator, or all of it if there is none.
std::string_view CutPiece(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view piece = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return piece;
}

std::optional<std::int32_t> ReadSize(std::string_view digits) {
  std::int32_t size = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), size);
  if (result.ec != std::errc() || result.ptr != digits.data() + digits.size() || size < 0)
    return std::nullopt;
  return size;
}

}  // namespace

bool TableTextReader::ReadPiece() {
  const std::string piece = source_ ? source_() : "";
  if (piece.empty()) return false;
  held_.erase(0, position_);
  position_ = 0;
  text_ = held_ += piece;
  return true;
}

std::string_view TableTextReader::Peek(const char* expected) {
  std::size_t end = text_.find(kCrLf, position_);
  while (end == std::string_view::npos && ReadPiece())
    end = text_.find(kCrLf, position_);
  if (end == std::string_view::npos) RaiseProgramError(database_texts::UnexpectedEnd(expected));
  return text_.substr(position_, end - position_);
}

std::string_view TableTextReader::Take(const char* expected) {
  ++line_;
  const std::string_view line = Peek(expected);
  if (line.find(kCrLf[0]) != std::string_view::npos ||
      line.find(kCrLf[1]) != std::string_view::npos)
    RaiseProgramError(database_texts::StrayLineBreak());
  position_ += line.size() + kCrLf.size();
  return line;
}

ports::TableDefinition TableTextReader::ReadStructure() {
  ports::TableDefinition table;
  const std::string_view header = Take("Table:");
  if (!header.starts_with(kTable) || header.size() == kTable.size())
    RaiseProgramError(database_texts::ExpectedLine("Table:", std::string(header)));
  table.name = header.substr(kTable.size());
  while (Peek("EndTable").starts_with(kField))
    ReadField(Take("Field:"), table);
  if (table.fields.empty())
    RaiseProgramError(database_texts::ExpectedLine("Field:", std::string(Take("Field:"))));
  while (Peek("EndTable").starts_with(kIndex)) {
    ReadIndex(Take("Index:"), table);
    index_lines_.push_back(line_);
  }
  field_count_ = table.fields.size();
  return table;
}

void TableTextReader::ReadField(std::string_view line, ports::TableDefinition& table) const {
  ports::FieldDefinition field;
  std::string_view rest = line.substr(kField.size());
  field.name = CutPiece(rest, '|');
  const std::string type(CutPiece(rest, '|'));
  const std::optional<std::int32_t> size = ReadSize(CutPiece(rest, '|'));
  if (field.name.empty() || !size)
    RaiseProgramError(database_texts::BadFieldLine(std::string(line)));
  const std::optional<ports::DataType> known_type = FieldTypeFromStr(type);
  if (!known_type) RaiseProgramError(database_texts::BadFieldType(type));
  field.type = *known_type;
  field.size = *size;
  constexpr std::string_view kDefault = "Default:";
  if (rest.starts_with("NotNull")) field.required = CutPiece(rest, '|') == "NotNull";
  if (rest.starts_with("AllowZero")) field.allow_zero_length = CutPiece(rest, '|') == "AllowZero";
  if (rest.starts_with(kDefault)) {
    field.default_value = DefaultText(DBStringToVariant(rest.substr(kDefault.size())));
    rest = {};
  }
  if (!rest.empty()) RaiseProgramError(database_texts::BadFieldLine(std::string(line)));
  table.fields.push_back(std::move(field));
}

void TableTextReader::ReadIndex(std::string_view line, ports::TableDefinition& table) const {
  ports::IndexDefinition index;
  std::string_view rest = line.substr(kIndex.size());
  index.name = CutPiece(rest, '|');
  if (rest.starts_with("Primary|")) {
    index.primary = index.unique = index.required = true;
    CutPiece(rest, '|');
  } else {
    if (rest.starts_with("Unique|")) index.unique = CutPiece(rest, '|') == "Unique";
    if (rest.starts_with("IgnoreNulls|")) index.ignore_nulls = CutPiece(rest, '|') == "IgnoreNulls";
  }
  constexpr std::string_view kFields = "Fields:";
  const bool is_whole = rest.starts_with(kFields) && rest.ends_with(";") && !index.name.empty();
  if (!is_whole) RaiseProgramError(database_texts::BadIndexLine(std::string(line)));
  rest.remove_prefix(kFields.size());
  while (!rest.empty()) {
    std::string_view name = CutPiece(rest, ';');
    ports::IndexFieldDefinition field;
    field.descending = name.ends_with("/D");
    if (field.descending) name.remove_suffix(2);
    if (name.empty()) RaiseProgramError(database_texts::BadIndexLine(std::string(line)));
    field.name = name;
    index.fields.push_back(std::move(field));
  }
  table.indexes.push_back(std::move(index));
}

bool TableTextReader::ReadRowsOpener() {
  if (Peek("EndTable") != kRows) return false;
  Take("Rows");
  return true;
}

bool TableTextReader::ReadRow(std::vector<std::string_view>& values) {
  std::string_view line = Take("EndRows");
  if (line == kEndRows) return false;
  values.clear();
  for (;;) {
    const std::size_t end = line.find('|');
    values.push_back(line.substr(0, end));
    if (end == std::string_view::npos) break;
    line.remove_prefix(end + 1);
  }
  // After a Null in the first column no separator stands, so that such a row is a value short or
  // begins with an empty one.
  if (values.size() != field_count_)
    RaiseProgramError(database_texts::WrongValueCount(field_count_, values.size()));
  if (values.front().empty()) RaiseProgramError(database_texts::NullInFirstField());
  return true;
}

void TableTextReader::ReadEnd() {
  const std::string_view line = Take("EndTable");
  if (line != kEndTable)
    RaiseProgramError(database_texts::ExpectedLine("EndTable", std::string(line)));
  if (position_ == text_.size() && !ReadPiece()) return;
  ++line_;
  RaiseProgramError(database_texts::TextBehindEnd());
}

}  // namespace tmw
