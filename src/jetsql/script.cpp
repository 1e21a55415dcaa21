#include "jetsql/script.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string_view>

#include "database/transaction.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/program_error.h"
#include "jetsql/database_access.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/output.h"
#include "jetsql/own_statements.h"
#include "jetsql/row_writer.h"
#include "jetsql/statement_reader.h"
#include "tools/program.h"

namespace jetsql {
namespace {

constexpr const char* kArgumentName = "statement";

struct ScriptName {
  std::string name;  // for errors: the file, "stdin" or "statement"
  TextSource source;
};

ScriptName OpenScript(const tools::Arguments& arguments) {
  const auto encoding = EncodingOf(arguments.Value("--encoding"));
  const auto file = arguments.Value("--file");
  const auto& words = arguments.Words();
  if (file && words.size() > 1) throw tools::UsageError(Say(texts::kStatementsTwice));
  if (file) return {*file, ReadTextFile(*file, encoding)};
  if (words.size() > 1) return {kArgumentName, ReadText(words[1])};
  return {"stdin", ReadStandardInput(encoding)};
}

// Statements that only read need no more than that of the file.
bool OnlyReads(const std::string& script) {
  StatementReader reader(ReadText(script));
  ScriptStatement statement;
  while (reader.Next(statement)) {
    const std::string lower = tmw::LowerCase(statement.text);
    const bool is_select = lower.starts_with("select") || lower.starts_with("(select");
    if (!is_select || lower.find("into") != std::string::npos) return false;
  }
  return true;
}

// "script.sql:3:7: words" and the statement's beginning.
std::string Complaint(const std::string& script, const ScriptStatement& statement,
                      const std::string& words) {
  constexpr std::size_t kShown = 300;
  std::string shown = statement.text.substr(0, kShown);
  while (!shown.empty() && shown.size() < statement.text.size() &&
         tmw::ContinuesCharacter(statement.text[shown.size()]))
    shown.pop_back();
  if (shown.size() < statement.text.size()) shown += "…";
  return script + ":" + std::to_string(statement.line) + ":" + std::to_string(statement.column) +
         ": " + words + "\n" + shown;
}

class ScriptRunner {
 public:
  ScriptRunner(ports::Database& database, bool only_reads, const RowFormat& format, Output& output)
      : database_(database), only_reads_(only_reads), format_(format), output_(output) {}

  void RunStatement(const std::string& statement) {
    if (only_reads_) return ShowRows(statement);
    if (RunOwnStatement(database_, statement)) return;
    // Only the engine knows which statements return rows: SELECT … INTO, for example, returns none.
    try {
      changed_rows_ += static_cast<std::uint64_t>(database_.Execute(statement, true));
      has_changed_ = true;
    } catch (const ports::DatabaseError& error) {
      if (error.Number != ports::kNotAnActionQuery) throw;
      ShowRows(statement);
    }
  }

  // What was changed, on standard error: the rows on standard output stay alone.
  void Report(std::uint64_t failures) const {
    if (has_changed_) std::cerr << Count(texts::kRowsChanged, changed_rows_) << '\n';
    if (failures != 0) std::cerr << Count(texts::kStatementsFailed, failures) << '\n';
  }

 private:
  void ShowRows(const std::string& statement) {
    const auto rows = database_.OpenRecordset(statement, ports::RecordsetType::kDynaset);
    if (has_shown_ && format_.mode == Mode::kTable) output_.Text().Add("\n");
    has_shown_ = true;
    WriteRows(*rows, *MakeRowWriter(format_, output_.Text()));
  }

  ports::Database& database_;
  bool only_reads_;
  RowFormat format_;
  Output& output_;
  bool has_changed_ = false;
  bool has_shown_ = false;
  std::uint64_t changed_rows_ = 0;
};

}  // namespace

int Run(const tools::Arguments& arguments) {
  const RowFormat format = FormatOf(arguments);
  const bool continues = arguments.Has("--continue");
  ScriptName script = OpenScript(arguments);
  const auto& words = arguments.Words();
  const bool only_reads = words.size() > 1 && OnlyReads(words[1]);
  const auto database = only_reads ? OpenToRead(words[0]) : OpenToChange(words[0]);
  Output output;
  ScriptRunner runner(*database, only_reads, format, output);
  StatementReader reader(std::move(script.source));
  ScriptStatement statement;
  std::uint64_t failures = 0;
  std::optional<tmw::Transaction> whole;
  if (!continues) whole.emplace();
  while (reader.Next(statement)) {
    try {
      std::optional<tmw::Transaction> single;
      if (continues) single.emplace();
      runner.RunStatement(statement.text);
      if (single) single->Commit();
    } catch (...) {
      const tmw::ProgramError error = tmw::CurrentError();
      const std::string complaint = Complaint(script.name, statement, error.Description);
      if (!continues) throw tmw::ProgramError(error.Number, complaint, error.Source);
      std::cerr << "jetsql: "
                << Say(texts::kNumberedError, {std::to_string(error.Number), complaint}) << '\n';
      ++failures;
    }
  }
  if (whole) whole->Commit();
  database->Close();
  output.Finish();
  runner.Report(failures);
  constexpr int kFailed = 1;
  return failures == 0 ? tools::kDone : kFailed;
}

}  // namespace jetsql
