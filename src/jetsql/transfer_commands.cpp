#include "jetsql/transfer_commands.h"

#include <cstdint>
#include <iostream>
#include <optional>

#include "database/held_relations.h"
#include "database/imp_table.h"
#include "database/table_export.h"
#include "database/transaction.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/csv_import.h"
#include "jetsql/database_access.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/output.h"
#include "jetsql/row_writer.h"
#include "jetsql/text_input.h"
#include "tools/json.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace jetsql {
namespace {

std::uint64_t ExportRows(ports::Database& database, const std::string& table,
                         const RowFormat& format, Output& output) {
  const ports::TableDefinition definition = database.Table(table);
  const std::string primary = tmw::GetPrimaryIndex(definition);
  const auto rows = database.OpenRecordset(definition.name, ports::RecordsetType::kTable);
  if (!primary.empty()) rows->SetIndex(primary);
  return WriteRows(*rows, *MakeRowWriter(format, output.Text()));
}

void ExportTo(const tools::Arguments& arguments, Output& output) {
  const auto& words = arguments.Words();
  const auto database = OpenToRead(words[0]);
  if (const auto mode = ModeOf(arguments)) {
    const std::uint64_t count =
        ExportRows(*database, words[1], {*mode, !arguments.Has("--no-header")}, output);
    output.Finish();
    std::cerr << Count(texts::kRowsWritten, count) << '\n';
    return;
  }
  tmw::ExportTable(words[1], arguments.Has("--structure"), *database, output.Text());
  output.Finish();
}

bool IsTableText(const std::string& path) {
  return !tmw::LowerCase(path).ends_with(".csv");
}

std::uint64_t ImportTableText(const std::string& path, const tools::Arguments& arguments,
                              tmw::HeldRelations& relations, ports::Database& database) {
  tmw::ImpTable importer;
  importer.SetRelations(relations);
  const bool has_rows = !tmw::LowerCase(path).ends_with(tmw::names::kTableStructureEnding);
  importer.ImportFromSource(ReadTextFile(path, EncodingOf(arguments.Value("--encoding"))), has_rows,
                            path, database);
  return static_cast<std::uint64_t>(importer.RowCount());
}

}  // namespace

int Export(const tools::Arguments& arguments) {
  const auto& words = arguments.Words();
  if (words.size() == 2) {
    Output output;
    ExportTo(arguments, output);
    return tools::kDone;
  }
  // Table texts are delivered in code page 1251; other programs expect UTF-8 of other forms.
  const bool is_table_text = !ModeOf(arguments);
  const auto encoding = EncodingOf(arguments.Value("--encoding"));
  Output::FileForm form = is_table_text ? Output::FileForm::k1251 : Output::FileForm::kUtf8;
  if (arguments.Has("--utf8") || encoding == Encoding::kUtf8)
    form = is_table_text ? Output::FileForm::kUtf8WithMark : Output::FileForm::kUtf8;
  if (encoding == Encoding::k1251) form = Output::FileForm::k1251;
  Output output(words[2], form);
  ExportTo(arguments, output);
  return tools::kDone;
}

int Import(const tools::Arguments& arguments) {
  const auto& words = arguments.Words();
  const auto database = OpenToChange(words[0]);
  // All or none, where the engine allows it.
  std::optional<tmw::Transaction> whole;
  if (Engine().TakesDefinitionsBack()) whole.emplace();
  tmw::HeldRelations relations(*database);
  tools::Progress progress;
  progress.Begin(Say(texts::kImporting), words.size() - 1);
  std::uint64_t rows = 0;
  for (std::size_t i = 1; i < words.size(); ++i) {
    rows += IsTableText(words[i]) ? ImportTableText(words[i], arguments, relations, *database)
                                  : ImportCsv(words[i], arguments, *database);
    progress.Advance();
  }
  relations.PutBack();
  if (!relations.IsEmpty()) tmw::RaiseProgramError(tmw::Joined(relations.Misfits(), "\n"));
  if (whole) whole->Commit();
  database->Close();
  if (arguments.Has(tools::kJsonOption)) {
    std::cout << tools::JsonLine({{"rows", rows}});
  } else {
    std::cerr << Count(texts::kRowsImported, rows) << '\n';
  }
  return tools::kDone;
}

}  // namespace jetsql
