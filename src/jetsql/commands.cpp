#include "jetsql/commands.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>

#include "database/db_string.h"
#include "database/held_relations.h"
#include "database/imp_table.h"
#include "database/statement_cutter.h"
#include "database/table_export.h"
#include "database/transaction.h"
#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/file_commands.h"
#include "jetsql/jetsql_texts.h"
#include "ports/database.h"
#include "ports/ports.h"
#include "tools/fill.h"
#include "tools/tools_texts.h"

namespace jetsql {
namespace {

using tools::Arguments;
using tools::Fill;

ports::DatabaseEngine& Engine() {
  return *ports::CurrentPorts().database;
}

std::unique_ptr<ports::Database> Open(const std::string& path, bool read_only) {
  return Engine().OpenDatabase(path, !read_only, read_only);
}

void WriteFile(const std::string& path, const std::string& bytes) {
  const ports::Status written = tmw::WriteFileBytes(path, bytes);
  if (written) return;
  tmw::RaiseApiErrorWithMessage(Fill(tools::texts::kCannotWrite, {tmw::Quoted(path)}),
                                written.code);
}

void PrintRows(ports::Database& database, const std::string& statement) {
  const auto rows = database.OpenRecordset(statement, ports::RecordsetType::kDynaset);
  const std::vector<std::string> names = rows->FieldNames();
  for (std::size_t i = 0; i < names.size(); ++i)
    std::cout << (i == 0 ? "" : "\t") << names[i];
  std::cout << '\n';
  for (; !rows->AtEnd(); rows->MoveNext()) {
    for (std::size_t i = 0; i < names.size(); ++i)
      std::cout << (i == 0 ? "" : "\t") << tmw::VariantToDBString(rows->Value(i));
    std::cout << '\n';
  }
}

// Only the engine knows which statements return rows: SELECT … INTO, for example, returns none.
void RunStatement(ports::Database& database, const std::string& statement) {
  try {
    std::cout << Fill(texts::kRowCount, {std::to_string(database.Execute(statement, true))});
  } catch (const ports::DatabaseError& error) {
    if (error.Number != ports::kNotAnActionQuery) throw;
    PrintRows(database, statement);
  }
}

void RunStatements(ports::Database& database, const std::string& script) {
  for (const std::string& statement : tmw::CutStatements(script)) {
    try {
      RunStatement(database, statement);
    } catch (const ports::DatabaseError& error) {
      throw ports::DatabaseError(error.Number, error.Description + "\n" + statement, error.Source);
    }
  }
}

int Create(const Arguments& arguments) {
  Engine().CreateDatabase(arguments.Words()[0])->Close();
  return tools::kDone;
}

std::string ScriptOf(const Arguments& arguments) {
  const auto file = arguments.Value("--file");
  const auto& words = arguments.Words();
  if (file && words.size() > 1) throw tools::UsageError(texts::kStatementsTwice);
  if (file) return tmw::ReadFileToString(*file);
  if (words.size() > 1) return words[1];
  return {std::istreambuf_iterator<char>(std::cin), {}};
}

// Runs all statements or none: an error rolls everything back.
int Run(const Arguments& arguments) {
  const std::string script = ScriptOf(arguments);
  const auto database = Open(arguments.Words()[0], false);
  tmw::Transaction transaction;
  RunStatements(*database, script);
  transaction.Commit();
  database->Close();
  return tools::kDone;
}

int Tables(const Arguments& arguments) {
  const auto& words = arguments.Words();
  const auto database = Open(words[0], true);
  if (words.size() == 2) {
    std::cout << tmw::ExportTableToString(words[1], true, database.get());
    return tools::kDone;
  }
  for (const ports::TableSummary& table : database->Tables()) {
    if (arguments.Has("--all") || (table.attributes & ports::kSystemTable) == 0)
      std::cout << table.name << '\n';
  }
  return tools::kDone;
}

int Export(const Arguments& arguments) {
  const auto& words = arguments.Words();
  const auto database = Open(words[0], true);
  const std::string text =
      tmw::ExportTableToString(words[1], arguments.Has("--structure"), database.get());
  if (words.size() == 2) {
    std::cout << text;
  } else if (arguments.Has("--utf8")) {
    WriteFile(words[2], "\xEF\xBB\xBF" + text);
  } else {
    const auto bytes = tmw::TryUtf8ToCodePage(tmw::CodePage::k1251, text);
    if (!bytes) tmw::RaiseProgramError(texts::kOutsideCodePage);
    WriteFile(words[2], *bytes);
  }
  return tools::kDone;
}

int Import(const Arguments& arguments) {
  const auto& words = arguments.Words();
  const auto database = Open(words[0], false);
  // All or none, where the engine allows it.
  std::optional<tmw::Transaction> whole;
  if (Engine().TakesDefinitionsBack()) whole.emplace();
  tmw::HeldRelations relations(*database);
  for (std::size_t i = 1; i < words.size(); ++i) {
    tmw::ImpTable importer;
    importer.SetRelations(relations);
    importer.ImportFromFile(words[i], *database);
  }
  relations.PutBack();
  if (!relations.IsEmpty()) tmw::RaiseProgramError(tmw::Joined(relations.Misfits(), "\n"));
  if (whole) whole->Commit();
  database->Close();
  return tools::kDone;
}

int Compact(const Arguments& arguments) {
  Engine().CompactDatabase(arguments.Words()[0], arguments.Words()[1]);
  return tools::kDone;
}

}  // namespace

tools::Program MakeProgram() {
  return {"jetsql",
          texts::kHelpHead,
          texts::kHelpTail,
          {{texts::kCreate, Create},
           {texts::kRun, Run},
           {texts::kTables, Tables},
           {texts::kExport, Export},
           {texts::kImport, Import},
           {texts::kCompact, Compact},
           {texts::kInfo, Info},
           {texts::kCheck, Check}}};
}

}  // namespace jetsql
