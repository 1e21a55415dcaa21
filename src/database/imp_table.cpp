#include "database/imp_table.h"

#include <array>
#include <utility>
#include <vector>

#include "database/database_texts.h"
#include "database/db_string.h"
#include "database/held_relations.h"
#include "database/table_lookup.h"
#include "database/table_text.h"
#include "database/transaction.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "ImpTable";

// A table's text begins with "Table:", so that a zero in its second byte, like a mark, means
// UTF-16.
bool IsUnicodeFile(const std::string& path) {
  std::array<char, 2> start{'\xFF', '\xFF'};
  const auto opened = ports::CurrentPorts().files->Open(path, ports::FileMode::kRead);
  if (!opened || !opened.value->Read(start.data(), start.size())) return false;
  return start[1] == '\0' || (start[0] == '\xFF' && start[1] == '\xFE');
}

// An amount is read without the detour of a double, which holds only fifteen digits.
ports::DatabaseValue RowValue(std::string_view text, ports::DataType type) {
  if (type == ports::DataType::kCurrency) {
    if (const auto amount = ReadCurrency(text)) return ports::CurrencyValue{*amount};
  }
  return DBStringToVariant(text);
}

}  // namespace

void ImpTable::ImportFromFile(const std::string& path, ports::Database& database) try {
  const std::string text =
      IsUnicodeFile(path) ? ReadUnicodeFileToString(path) : ReadFileToString(path);
  const bool has_rows = !LowerCase(path).ends_with(names::kTableStructureEnding);
  TableTextReader reader(text);
  Import(reader, has_rows, path, database);
} catch (...) {
  ReRaiseError(kModule, "ImportFromFile");
}

void ImpTable::ImportFromSource(std::function<std::string()> source, bool has_rows,
                                const std::string& label, ports::Database& database) try {
  TableTextReader reader(std::move(source));
  Import(reader, has_rows, label, database);
} catch (...) {
  ReRaiseError(kModule, "ImportFromSource");
}

void ImpTable::ImportFromString(const std::string& text, ports::Database& database) try {
  TableTextReader reader(text);
  Import(reader, true, table_name_, database);
} catch (...) {
  ReRaiseError(kModule, "ImportFromString");
}

void ImpTable::Import(TableTextReader& reader, bool has_rows, const std::string& label,
                      ports::Database& database) {
  try {
    blamed_line_ = 0;
    row_count_ = 0;
    Replace(reader, has_rows, database);
  } catch (...) {
    const ProgramError error = CurrentError();
    const std::size_t line = blamed_line_ != 0 ? blamed_line_ : reader.Line();
    throw ProgramError(error.Number, database_texts::TableFileError(label, line, error.Description),
                       error.Source);
  }
}

void ImpTable::Replace(TableTextReader& reader, bool has_rows, ports::Database& database) {
  ports::TableDefinition table = reader.ReadStructure();
  if (!table_name_.empty() && !EqualIgnoringCase(table.name, table_name_))
    RaiseProgramError(database_texts::WrongTable(table_name_, table.name));
  const bool rows_follow = reader.ReadRowsOpener();
  if (has_rows && !rows_follow) RaiseProgramError(database_texts::RowsMissing());
  if (!has_rows && rows_follow) RaiseProgramError(database_texts::RowsNotWanted());

  // Each index is built in one pass after the rows are in. The transaction covers the rows alone:
  // inside it the product's own engine may report the table in use when an index is created.
  const std::vector<ports::IndexDefinition> indexes = std::exchange(table.indexes, {});
  if (relations_ != nullptr) relations_->TakeOut(table.name);
  if (HasTable(database, table.name)) database.DeleteTable(table.name);
  database.CreateTable(table);
  if (rows_follow) {
    Transaction transaction;
    Fill(reader, table, database);
    transaction.Commit();
  }
  reader.ReadEnd();
  for (std::size_t i = 0; i < indexes.size(); ++i) {
    // A relation brings its own index along; one of that name would be in its way.
    if (relations_ != nullptr && relations_->IsOwnIndex(table.name, indexes[i])) continue;
    blamed_line_ = reader.IndexLine(i);
    database.CreateIndex(table.name, indexes[i]);
  }
}

void ImpTable::Fill(TableTextReader& reader, const ports::TableDefinition& table,
                    ports::Database& database) {
  const auto rows = database.OpenRecordset(table.name, ports::RecordsetType::kTable);
  std::vector<std::size_t> positions;
  for (const ports::FieldDefinition& field : table.fields)
    positions.push_back(rows->FieldPosition(field.name));
  std::vector<std::string_view> values;
  while (reader.ReadRow(values)) {
    ++row_count_;
    rows->AddNew();
    for (std::size_t i = 0; i < values.size(); ++i)
      rows->SetValue(positions[i], RowValue(values[i], table.fields[i].type));
    rows->Update();
  }
}

}  // namespace tmw
