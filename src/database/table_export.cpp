#include "database/table_export.h"

#include <cstddef>
#include <memory>
#include <vector>

#include "database/access_helpers.h"
#include "database/db_string.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miDBExport";
constexpr const char* kExportOrder = "ExportOrder";

std::string FieldLine(const ports::FieldDefinition& field) {
  std::string line =
      "Field:" + field.name + "|" + FieldTypeToStr(field.type) + "|" + std::to_string(field.size);
  if (field.required) line += "|NotNull";
  if (field.allow_zero_length) line += "|AllowZero";
  if (!field.default_value.empty()) line += "|Default:" + VariantToDBString(field.default_value);
  return line;
}

std::string IndexLine(const ports::IndexDefinition& index) {
  std::string line = "Index:" + index.name;
  if (index.primary) {
    line += "|Primary";
  } else {
    if (index.unique) line += "|Unique";
    if (index.ignore_nulls) line += "|IgnoreNulls";
  }
  line += "|Fields:";
  for (const ports::IndexFieldDefinition& field : index.fields)
    line += field.name + (field.descending ? "/D;" : ";");
  return line;
}

std::string OrderIndex(const ports::TableDefinition& table) {
  return TableHasIndex(table, kExportOrder) ? kExportOrder : GetPrimaryIndex(table);
}

}  // namespace

std::string ExportTableToString(const std::string& table, bool structure_only,
                                ports::Database* database) try {
  ports::Database& source = database != nullptr ? *database : database_utils::GetCachedUserDB();
  StringAccumulator text;
  ExportTable(table, structure_only, source, text);
  return text.TakeText();
} catch (...) {
  ReRaiseError(kModule, "ExportTableToString");
}

// Has no frame of its own: in an error's chain it is part of the export to a string.
void ExportTable(const std::string& table, bool structure_only, ports::Database& database,
                 StringAccumulator& text) {
  const ports::TableDefinition definition = database.Table(table);
  ExportTableHeader(definition, text);
  if (!structure_only) ExportTableRows(definition, text, database);
  text.AddLine("EndTable");
}

void ExportTableHeader(const ports::TableDefinition& table, StringAccumulator& text) try {
  text.AddLine("Table:" + table.name);
  ExportTableFields(table, text);
  ExportTableIndexes(table, text);
} catch (...) {
  ReRaiseError(kModule, "ExportTableHeader");
}

void ExportTableFields(const ports::TableDefinition& table, StringAccumulator& text) try {
  for (const ports::FieldDefinition& field : table.fields)
    text.AddLine(FieldLine(field));
} catch (...) {
  ReRaiseError(kModule, "ExportTableFields");
}

void ExportTableIndexes(const ports::TableDefinition& table, StringAccumulator& text) try {
  // A relation brings its own index along.
  for (const ports::IndexDefinition& index : table.indexes) {
    if (!index.foreign) text.AddLine(IndexLine(index));
  }
} catch (...) {
  ReRaiseError(kModule, "ExportTableIndexes");
}

void ExportTableRows(const ports::TableDefinition& table, StringAccumulator& text,
                     ports::Database& database) try {
  text.AddLine("Rows");
  const std::unique_ptr<ports::DatabaseRecordset> rows =
      database_utils::OpenTableRecordset(table.name, OrderIndex(table), &database);
  std::vector<std::size_t> positions;
  for (const ports::FieldDefinition& field : table.fields)
    positions.push_back(rows->FieldPosition(field.name));
  database_utils::SafeMoveFirst(*rows);
  std::string line;
  for (; !rows->AtEnd(); rows->MoveNext()) {
    line.clear();
    for (const std::size_t position : positions) {
      // Written only after text, not after a column: the format is so.
      if (!line.empty()) line += '|';
      line += VariantToDBString(rows->Value(position));
    }
    text.AddLine(line);
  }
  text.AddLine("EndRows");
} catch (...) {
  ReRaiseError(kModule, "ExportTableRows");
}

std::string GetPrimaryIndex(const ports::TableDefinition& table) try {
  for (const ports::IndexDefinition& index : table.indexes) {
    if (index.primary) return index.name;
  }
  return {};
} catch (...) {
  ReRaiseError(kModule, "GetPrimaryIndex");
}

bool TableHasIndex(const ports::TableDefinition& table, const std::string& index) {
  for (const ports::IndexDefinition& candidate : table.indexes) {
    if (EqualIgnoringCase(candidate.name, index)) return true;
  }
  return false;
}

}  // namespace tmw
