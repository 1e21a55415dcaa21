#include "jetsql/commands.h"

#include <iostream>
#include <string>

#include "database/table_export.h"
#include "jetsql/database_access.h"
#include "jetsql/diff.h"
#include "jetsql/dump.h"
#include "jetsql/file_commands.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/row_writer.h"
#include "jetsql/script.h"
#include "jetsql/transfer_commands.h"
#include "ports/database.h"
#include "tools/json.h"

namespace jetsql {
namespace {

using tools::Arguments;

int Create(const Arguments& arguments) {
  Engine().CreateDatabase(arguments.Words()[0])->Close();
  return tools::kDone;
}

int Tables(const Arguments& arguments) {
  const auto database = OpenToRead(arguments.Words()[0]);
  tools::Json names = tools::Json::array();
  for (const ports::TableSummary& table : database->Tables()) {
    if (!arguments.Has("--all") && (table.attributes & ports::kSystemTable) != 0) continue;
    names.push_back(table.name);
    if (!arguments.Has(tools::kJsonOption)) std::cout << table.name << '\n';
  }
  if (arguments.Has(tools::kJsonOption)) std::cout << tools::JsonLine({{"tables", names}});
  return tools::kDone;
}

int Compact(const Arguments& arguments) {
  Engine().CompactDatabase(arguments.Words()[0], arguments.Words()[1]);
  return tools::kDone;
}

// Commands that need the engine choose it first.
template <int (*Command)(const Arguments&)>
int WithEngine(const Arguments& arguments) {
  SelectEngine(arguments);
  return Command(arguments);
}

template <int (*Command)(const Arguments&)>
tools::Command EngineCommand(tools::Usage usage) {
  usage.options.push_back(EngineOption());
  return {std::move(usage), WithEngine<Command>};
}

tools::Usage WithFormat(tools::Usage usage) {
  usage.options.insert(usage.options.end(), {ModeOption(), HeaderOption(), NoHeaderOption()});
  return usage;
}

}  // namespace

tools::Program MakeProgram() {
  tools::Program program;
  program.name = "jetsql";
  program.help_head = texts::kHelpHead;
  program.help_tail = texts::kHelpTail;
  program.has_json = true;
  program.commands = {EngineCommand<Create>(texts::kCreate),
                      EngineCommand<Run>(WithFormat(texts::kRun)),
                      EngineCommand<Tables>(texts::kTables),
                      EngineCommand<Schema>(texts::kSchema),
                      EngineCommand<Dump>(texts::kDump),
                      EngineCommand<Export>(WithFormat(texts::kExport)),
                      EngineCommand<Import>(texts::kImport),
                      EngineCommand<Diff>(texts::kDiff),
                      EngineCommand<Compact>(texts::kCompact),
                      {texts::kInfo, Info},
                      {texts::kCheck, Check},
                      EngineCommand<Recover>(texts::kRecover)};
  return program;
}

}  // namespace jetsql
