#include "jetsql/commands.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string_view>

#include "database/db_string.h"
#include "database/imp_table.h"
#include "database/statement_cutter.h"
#include "database/table_export.h"
#include "database/transaction.h"
#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "ports/database.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jetsql {
namespace {

using Arguments = std::vector<std::string>;

constexpr std::uint32_t kSystemMask = 0x80000003;
// What executing a statement that only gives rows fails with.
constexpr std::int32_t kNotAnActionQuery = 3065;

ports::DatabaseEngine& Engine() {
  return *ports::CurrentPorts().database;
}

std::unique_ptr<ports::Database> Open(const std::string& path, bool read_only) {
  return Engine().OpenDatabase(path, !read_only, read_only);
}

// Takes an option out of the arguments; true when it was there.
bool TakeFlag(Arguments& arguments, const std::string& name) {
  const auto count = std::erase(arguments, name);
  return count > 0;
}

// Takes an option and its value out of the arguments.
std::optional<std::string> TakeOption(Arguments& arguments, const std::string& name) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] != name) continue;
    if (i + 1 == arguments.size()) throw UsageError(name + " needs a value");
    std::string value = arguments[i + 1];
    const auto at = arguments.begin() + static_cast<std::ptrdiff_t>(i);
    arguments.erase(at, at + 2);
    return value;
  }
  return std::nullopt;
}

void Expect(const Arguments& arguments, std::size_t least, std::size_t most) {
  for (const std::string& argument : arguments) {
    if (argument.starts_with("--")) throw UsageError("unknown option " + argument);
  }
  if (arguments.size() < least) throw UsageError("too few arguments");
  if (arguments.size() > most) throw UsageError("too many arguments");
}

void WriteFile(const std::string& path, const std::string& bytes) {
  const auto check = [&path](ports::Status status) {
    if (!status)
      tmw::RaiseApiErrorWithMessage("Cannot write " + tmw::Quoted(path) + ": ", status.code);
  };
  const auto opened = ports::CurrentPorts().files->Open(path, ports::FileMode::kWriteNew);
  check({opened.ok, opened.code});
  check(opened.value->Write(bytes.data(), bytes.size()));
  check(opened.value->Close());
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

// The engine itself tells which statements give rows: SELECT … INTO, for one, gives none.
void RunStatement(ports::Database& database, const std::string& statement) {
  try {
    std::cout << database.Execute(statement, true) << " rows\n";
  } catch (const ports::DatabaseError& error) {
    if (error.Number != kNotAnActionQuery) throw;
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

void Create(Arguments arguments) {
  Expect(arguments, 1, 1);
  Engine().CreateDatabase(arguments[0]);
}

// All statements or none: an error takes everything back.
void Run(Arguments arguments) {
  const std::optional<std::string> file = TakeOption(arguments, "--file");
  Expect(arguments, 1, file ? 1 : 2);
  std::string script;
  if (file) {
    script = tmw::ReadFileToString(*file);
  } else if (arguments.size() == 2) {
    script = arguments[1];
  } else {
    script.assign(std::istreambuf_iterator<char>(std::cin), {});
  }
  const auto database = Open(arguments[0], false);
  tmw::Transaction transaction;
  RunStatements(*database, script);
  transaction.Commit();
}

void Tables(Arguments arguments) {
  const bool all = TakeFlag(arguments, "--all");
  Expect(arguments, 1, 2);
  const auto database = Open(arguments[0], true);
  if (arguments.size() == 2) {
    std::cout << tmw::ExportTableToString(arguments[1], true, database.get());
    return;
  }
  for (const ports::TableSummary& table : database->Tables()) {
    if (all || (table.attributes & kSystemMask) == 0) std::cout << table.name << '\n';
  }
}

void Export(Arguments arguments) {
  const bool structure_only = TakeFlag(arguments, "--structure");
  const bool utf8 = TakeFlag(arguments, "--utf8");
  Expect(arguments, 2, 3);
  const auto database = Open(arguments[0], true);
  const std::string text = tmw::ExportTableToString(arguments[1], structure_only, database.get());
  if (arguments.size() == 2) {
    std::cout << text;
    return;
  }
  if (utf8) {
    WriteFile(arguments[2], "\xEF\xBB\xBF" + text);
    return;
  }
  const auto bytes = tmw::TryUtf8ToCodePage(tmw::CodePage::k1251, text);
  if (!bytes)
    tmw::RaiseProgramError("The table has characters outside code page 1251: use --utf8.");
  WriteFile(arguments[2], *bytes);
}

void Import(Arguments arguments) {
  Expect(arguments, 2, SIZE_MAX);
  const auto database = Open(arguments[0], false);
  tmw::Transaction transaction;
  for (std::size_t i = 1; i < arguments.size(); ++i)
    tmw::ImpTable().ImportFromFile(arguments[i], *database);
  transaction.Commit();
}

void Compact(Arguments arguments) {
  Expect(arguments, 2, 2);
  Engine().CompactDatabase(arguments[0], arguments[1]);
}

struct Command {
  const char* name;
  void (*run)(Arguments);
};

constexpr Command kCommands[] = {{"create", Create}, {"run", Run},       {"tables", Tables},
                                 {"export", Export}, {"import", Import}, {"compact", Compact}};

}  // namespace

void RunCommand(const std::vector<std::string>& arguments) {
  if (arguments.empty()) throw UsageError("no command");
  for (const Command& command : kCommands) {
    if (arguments[0] == command.name) {
      command.run(Arguments(arguments.begin() + 1, arguments.end()));
      return;
    }
  }
  throw UsageError("unknown command " + arguments[0]);
}

}  // namespace jetsql
