#include "publish/tables.h"

#include <algorithm>
#include <string_view>

#include "database/db_string.h"
#include "database/table_export.h"
#include "database/table_text.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/ports.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"
#include "publish/unicode_text.h"
#include "tools/stop.h"

namespace publish {
namespace {

// The last rule that matches, null if none does.
const TableRule* RuleOf(const std::string& table, const std::vector<TableRule>& rules) {
  const auto found = std::find_if(rules.rbegin(), rules.rend(), [&](const TableRule& rule) {
    return tmw::MatchesMask(table, rule.mask);
  });
  return found == rules.rend() ? nullptr : &*found;
}

void ReadText(tmw::TableTextReader& reader, const TableRecord& table) {
  const ports::TableDefinition definition = reader.ReadStructure();
  if (definition.name != table.name) Raise(texts::kOtherTable, definition.name);
  const bool has_rows = reader.ReadRowsOpener();
  if (has_rows == table.is_user)
    tmw::RaiseProgramError(has_rows ? texts::kCarriesRows : texts::kCarriesNoRows);
  std::vector<std::string_view> values;
  while (has_rows && reader.ReadRow(values)) {
    for (const std::string_view value : values)
      static_cast<void>(tmw::DBStringToVariant(value));
  }
  reader.ReadEnd();
}

void CheckText(tmw::TableTextReader& reader, const TableRecord& table, Faults& faults) {
  try {
    ReadText(reader, table);
  } catch (...) {
    tools::ThrowIfStopped();
    faults.Add(table.name, texts::kNotImported,
               {std::to_string(reader.Line()), tmw::CurrentError().Description});
  }
}

}  // namespace

ReferenceTables::ReferenceTables(const std::string& database)
    : database_(ports::CurrentPorts().database->OpenDatabase(database, false, true)) {}

std::vector<TableRecord> ReferenceTables::Choose(const Description& description, Faults& faults) {
  std::vector<TableRecord> dictionaries;
  std::vector<TableRecord> user_tables;
  std::vector<bool> is_rule_used(description.tables.size());
  for (const ports::TableSummary& table : database_->Tables()) {
    if ((table.attributes & ports::kSystemTable) != 0) continue;
    if (tmw::EqualIgnoringCase(table.name, tmw::names::kVersionTable)) continue;
    const TableRule* const rule = RuleOf(table.name, description.tables);
    if (rule == nullptr) {
      faults.Add(table.name, texts::kUnknownKind);
      continue;
    }
    is_rule_used[static_cast<std::size_t>(rule - description.tables.data())] = true;
    if (rule->kind == TableKind::kSkipped) continue;
    const bool is_user = rule->kind == TableKind::kUser;
    (is_user ? user_tables : dictionaries).push_back({table.name, is_user, 0, ""});
  }
  for (std::size_t i = 0; i < is_rule_used.size(); ++i) {
    const TableRule& rule = description.tables[i];
    if (!is_rule_used[i] && !rule.is_optional)
      faults.Add(rule.place, texts::kMatchesNoTable, {rule.mask});
  }
  dictionaries.insert(dictionaries.end(), user_tables.begin(), user_tables.end());
  return dictionaries;
}

std::string ReferenceTables::WriteText(const TableRecord& table, const std::string& file,
                                       Faults& faults) {
  const auto opened = OpenToWrite(file);
  tmw::StringAccumulator text([&](std::string_view piece) {
    tools::ThrowIfStopped();
    WritePiece(*opened, tmw::Utf16ToBytes(tmw::Utf8ToUtf16(piece)), file);
  });
  tmw::ExportTable(table.name, table.is_user, *database_, text);
  text.HandOn();
  CloseWritten(*opened, file);
  return CheckTableFile(file, table, faults);
}

std::string CheckTableFile(const std::string& path, const TableRecord& table, Faults& faults) {
  UnicodeText text(path);
  tmw::TableTextReader reader([&] { return text.Next(); });
  CheckText(reader, table, faults);
  return text.Hash();
}

void CheckStructureFile(const std::string& path, const TableRecord& table, Faults& faults) {
  // The text begins with "Table:", so a zero as the second byte means UTF-16, as a mark does.
  const std::string bytes = tmw::ReadFileBytes(path);
  const bool is_utf16 = bytes.starts_with("\xFF\xFE") || (bytes.size() > 1 && bytes[1] == '\0');
  const std::string text =
      is_utf16 ? tmw::ReadUnicodeFileToString(path) : tmw::ReadFileToString(path);
  tmw::TableTextReader reader(text);
  CheckText(reader, table, faults);
}

}  // namespace publish
