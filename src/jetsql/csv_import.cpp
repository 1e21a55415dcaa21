#include "jetsql/csv_import.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/number_text.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/csv_reader.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/schema_sql.h"
#include "jetsql/value_text.h"

namespace jetsql {
namespace {

using ports::DatabaseValue;
using ports::DataType;

CsvReader OpenCsv(const std::string& path, const tools::Arguments& arguments) {
  const std::string separator = arguments.Value("--separator").value_or(",");
  if (separator.size() != 1) throw tools::UsageError(Say(texts::kBadSeparator, {separator}));
  return {ReadTextFile(path, EncodingOf(arguments.Value("--encoding"))), separator[0]};
}

// Raises the error that is being handled, with the file and the line put before its text.
[[noreturn]] void RaiseAt(const std::string& path, const CsvReader& reader) {
  const tmw::ProgramError error = tmw::CurrentError();
  throw tmw::ProgramError(error.Number,
                          path + ":" + std::to_string(std::max<std::size_t>(reader.Line(), 1)) +
                              ": " + error.Description,
                          error.Source);
}

std::vector<std::string> ReadNames(CsvReader& reader) {
  CsvReader::Row row;
  if (!reader.Next(row)) tmw::RaiseProgramError(Say(texts::kNoHeader));
  std::vector<std::string> names;
  for (const auto& value : row)
    names.push_back(value.value_or(""));
  return names;
}

bool IsTruth(const std::string& lower) {
  return lower == "yes" || lower == "no" || lower == "true" || lower == "false";
}

// What begins with a zero, or has more digits than a number keeps, is a code: an account's number.
bool IsCode(std::string_view text) {
  constexpr std::size_t kExactDigits = 15;
  if (text.starts_with('-')) text.remove_prefix(1);
  const bool has_leading_zero =
      text.size() > 1 && text[0] == '0' && text[1] >= '0' && text[1] <= '9';
  const auto digits =
      std::count_if(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
  return has_leading_zero || static_cast<std::size_t>(digits) > kExactDigits;
}

std::optional<std::int32_t> ReadWhole(const std::string& text) {
  std::int32_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_whole =
      read.ec == std::errc() && read.ptr == text.data() + text.size() && !IsCode(text);
  return is_whole ? std::optional(number) : std::nullopt;
}

std::optional<double> ReadNumber(const std::string& text) {
  std::size_t length = 0;
  const double number = tmw::ReadNumberPrefix(text, &length);
  return length == text.size() && !text.empty() ? std::optional(number) : std::nullopt;
}

bool IsDate(const std::string& text) {
  constexpr std::string_view kPattern = "dddd-dd-dd dd:dd:dd";
  if (text.size() != 10 && text.size() != kPattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_digit = text[i] >= '0' && text[i] <= '9';
    if (kPattern[i] == 'd' ? !is_digit : text[i] != kPattern[i]) return false;
  }
  return true;
}

// The moment of a text that IsDate accepts; nothing if there is none, as on 30 February.
std::optional<double> ReadDate(std::string_view text) {
  const auto part = [text](std::size_t from, std::size_t count) {
    std::int32_t number = 0;
    if (from < text.size()) std::from_chars(&text[from], &text[from] + count, number);
    return number;
  };
  return tmw::DateFromParts(
      {part(0, 4), part(5, 2), part(8, 2), part(11, 2), part(14, 2), part(17, 2)});
}

// What the values of a column have in common.
struct ColumnFacts {
  bool all_truth = true;
  bool all_whole = true;
  bool all_numbers = true;
  bool all_dates = true;
  bool has_value = false;
  std::size_t longest = 0;  // UTF-16 units

  void Add(const std::string& value) {
    has_value = true;
    all_truth = all_truth && IsTruth(tmw::LowerCase(value));
    all_whole = all_whole && ReadWhole(value);
    all_numbers = all_numbers && ReadNumber(value) && !IsCode(value);
    all_dates = all_dates && IsDate(value);
    longest = std::max(longest, tmw::Utf8ToUtf16(value).size());
  }

  DataType Type() const {
    constexpr std::size_t kLongestText = 255;
    if (!has_value) return DataType::kText;
    if (all_truth) return DataType::kBoolean;
    if (all_whole) return DataType::kLong;
    if (all_numbers) return DataType::kDouble;
    if (all_dates) return DataType::kDate;
    return longest > kLongestText ? DataType::kMemo : DataType::kText;
  }
};

void CreateTable(const std::string& name, const std::string& path,
                 const tools::Arguments& arguments, ports::Database& database) {
  CsvReader reader = OpenCsv(path, arguments);
  std::vector<std::string> names;
  std::vector<ColumnFacts> facts;
  try {
    names = ReadNames(reader);
    facts.resize(names.size());
    CsvReader::Row row;
    while (reader.Next(row)) {
      for (std::size_t i = 0; i < std::min(row.size(), facts.size()); ++i) {
        if (row[i]) facts[i].Add(*row[i]);
      }
    }
  } catch (...) {
    RaiseAt(path, reader);
  }
  ports::TableDefinition table;
  table.name = name;
  for (std::size_t i = 0; i < names.size(); ++i) {
    ports::FieldDefinition field;
    field.name = names[i];
    field.type = facts[i].Type();
    field.allow_zero_length = field.type == DataType::kText || field.type == DataType::kMemo;
    if (field.type == DataType::kText) field.size = 255;
    table.fields.push_back(std::move(field));
  }
  database.CreateTable(table);
}

// As texts are written and read here; the engine converts the rest.
DatabaseValue ValueOf(const std::optional<std::string>& text, DataType type) {
  if (!text) return ports::NullValue{};
  const bool is_whole_kind =
      type == DataType::kLong || type == DataType::kInteger || type == DataType::kByte;
  if (is_whole_kind) {
    if (const auto number = ReadWhole(*text)) return *number;
  }
  if (type == DataType::kDate && IsDate(*text)) {
    if (const auto days = ReadDate(*text)) return ports::DateValue{*days};
  }
  const bool is_floating = type == DataType::kDouble || type == DataType::kSingle;
  if (is_floating) {
    if (const auto number = ReadNumber(*text)) return *number;
  }
  if (type == DataType::kBinary || type == DataType::kLongBinary) {
    std::string bytes;
    const bool has_prefix = text->starts_with("0x");
    for (std::size_t i = has_prefix ? 2 : 0; i + 1 < text->size(); i += 2) {
      std::uint8_t byte = 0;
      const char* const first = text->data() + i;
      if (std::from_chars(first, first + 2, byte, 16).ptr != first + 2) return *text;
      bytes.push_back(static_cast<char>(byte));
    }
    return ports::BinaryValue{std::move(bytes)};
  }
  return *text;
}

// The indexes of an empty table are built in one pass when its rows are in.
class HeldIndexes {
 public:
  HeldIndexes(ports::Database& database, const ports::TableDefinition& table)
      : database_(database) {
    if (!database.OpenRecordset(table.name, ports::RecordsetType::kTable)->AtEnd()) return;
    for (const ports::IndexDefinition& index : table.indexes) {
      ports::TableDefinition only = table;
      only.indexes = {index};
      const std::vector<std::string> made = IndexSql(only);
      if (!made.empty() && TryDrop(table.name, index.name)) statements_.push_back(made.front());
    }
  }

  void PutBack() {
    for (const std::string& statement : statements_)
      database_.Execute(statement, true);
  }

 private:
  // One that a relation needs stays.
  bool TryDrop(const std::string& table, const std::string& index) {
    try {
      database_.Execute("DROP INDEX " + SqlName(index) + " ON " + SqlName(table), true);
      return true;
    } catch (const ports::DatabaseError&) {
      return false;
    }
  }

  ports::Database& database_;
  std::vector<std::string> statements_;
};

// Adds rows to a table. A counter takes values from statements only.
class RowAdder {
 public:
  RowAdder(ports::Database& database, const ports::TableDefinition& table,
           const std::vector<std::string>& names)
      : database_(database),
        rows_(database.OpenRecordset(table.name, ports::RecordsetType::kTable)) {
    std::vector<std::string> quoted;
    for (const std::string& name : names) {
      const std::size_t position = rows_->FieldPosition(name);
      const auto found = std::find_if(
          table.fields.begin(), table.fields.end(),
          [&name](const auto& field) { return tmw::EqualIgnoringCase(field.name, name); });
      positions_.push_back(position);
      types_.push_back(found->type);
      fills_counter_ = fills_counter_ || (found->attributes & ports::kAutoIncrementField) != 0;
      quoted.push_back(SqlName(name));
    }
    begin_ = "INSERT INTO " + SqlName(table.name) + " (" + tmw::Joined(quoted, ", ") + ") VALUES (";
  }

  void Add(const CsvReader::Row& row) {
    if (fills_counter_) return Execute(row);
    rows_->AddNew();
    for (std::size_t i = 0; i < row.size(); ++i)
      rows_->SetValue(positions_[i], ValueOf(row[i], types_[i]));
    rows_->Update();
  }

 private:
  void Execute(const CsvReader::Row& row) {
    std::vector<std::string> literals;
    for (std::size_t i = 0; i < row.size(); ++i)
      literals.push_back(SqlLiteral(ValueOf(row[i], types_[i])));
    database_.Execute(begin_ + tmw::Joined(literals, ", ") + ")", true);
  }

  ports::Database& database_;
  std::unique_ptr<ports::DatabaseRecordset> rows_;
  std::vector<std::size_t> positions_;
  std::vector<DataType> types_;
  std::string begin_;
  bool fills_counter_ = false;
};

}  // namespace

std::uint64_t ImportCsv(const std::string& path, const tools::Arguments& arguments,
                        ports::Database& database) {
  const std::string name = arguments.NeededValue("--into");
  if (arguments.Has("--create")) CreateTable(name, path, arguments, database);
  CsvReader reader = OpenCsv(path, arguments);
  const ports::TableDefinition table = database.Table(name);
  HeldIndexes indexes(database, table);
  std::uint64_t count = 0;
  try {
    const std::vector<std::string> names = ReadNames(reader);
    RowAdder adder(database, table, names);
    CsvReader::Row row;
    while (reader.Next(row)) {
      if (row.size() != names.size())
        tmw::RaiseProgramError(Say(texts::kWrongValueCount,
                                   {std::to_string(names.size()), std::to_string(row.size())}));
      adder.Add(row);
      ++count;
    }
  } catch (...) {
    RaiseAt(path, reader);
  }
  indexes.PutBack();
  return count;
}

}  // namespace jetsql
