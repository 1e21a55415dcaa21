#include "database/working_db.h"

#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "database/compaction.h"
#include "database/database_paths.h"
#include "database/database_texts.h"
#include "database/imp_table.h"
#include "database/open_mdb.h"
#include "database/row_counts.h"
#include "database/table_lookup.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "services/run_module.h"

namespace tmw {
namespace {

// Everything but the dictionaries that have just been replaced.
bool ExpectUserRows(const std::set<std::string>& replaced, RowCounts& counts) {
  const auto user_database = GetUserDBForReading();
  if (!user_database) return false;
  for (const auto& [table, rows] : CountAllRows(*user_database)) {
    if (!replaced.contains(LowerCase(table))) counts.Expect(table, rows);
  }
  return true;
}

// Reports the relations that still cannot be put back and returns false: a rule of the user's
// database is never dropped silently.
bool PutBackRelations(HeldRelations& relations) {
  relations.PutBack();
  if (relations.IsEmpty()) return true;
  constexpr std::size_t kShown = 3;
  std::vector<std::string> texts = relations.Misfits();
  const std::size_t count = texts.size();
  if (count > kShown) {
    texts.resize(kShown);
    texts.push_back(database_texts::MoreRelations(count - kShown));
  }
  texts.emplace_back(database_texts::kRelationsEndUpdate);
  DownloadError(Joined(texts, "\r\n\r\n"), FailureKind::kScript);
  return false;
}

bool Build(const DatabaseBuild& build, UpdaterEvents& events) {
  const std::string path = BuiltWorkingPath(build.ScriptsFolder);
  events.OnSetSubAction(database_texts::kMakingTemporaryCopy);
  CopyUserDatabase(path);
  if (events.CancelPressed()) return false;
  events.OnSetSubAction(database_texts::kOpening);
  const auto database = OpenMdb(path, database_texts::kWorkingCopy, true, false);
  if (!database) return false;
  HeldRelations relations(*database);
  if (!CopyDictsIntoWorkingDB(build, events, *database, relations) || events.CancelPressed())
    return false;
  if (!RunUpdateScriptsOnWorkingDB(build, events, *database, relations) || events.CancelPressed())
    return false;
  if (!PutBackRelations(relations)) return false;
  events.OnSetSubAction(database_texts::kCompacting);
  database->Close();
  FlushDBEngine();
  PackDataBase(path);
  return true;
}

}  // namespace

bool BuildWorkingDB(const DatabaseBuild& build, UpdaterEvents& events) {
  events.OnSetMainAction(database_texts::kBuildingWorking);
  const bool result = Build(build, events);
  events.ClearProgress();
  return result;
}

bool CopyDictsIntoWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                            ports::Database& database, HeldRelations& relations) try {
  RowCounts counts;
  std::set<std::string> replaced;
  for (const WuTableNode& table : *build.Tables) {
    if (table.NeedUpdate && !table.IsUser) {
      events.OnSetSubAction(database_texts::ImportingDictionary(table.TableName));
      LogEvent("dictionary", {{"table", table.TableName}});
      ImpTable importer;
      importer.SetTableName(table.TableName);
      importer.SetRelations(relations);
      importer.ImportFromFile(
          JoinPath(build.LoadedFolder, table.TableName + std::string(names::kTableEnding)),
          database);
      counts.Expect(table.TableName, importer.RowCount());
      replaced.insert(LowerCase(table.TableName));
    }
    if (events.CancelPressed()) return false;
  }
  relations.PutBack();
  FlushDBEngine();
  return ExpectUserRows(replaced, counts) && counts.Check(database);
} catch (...) {
  ReRaiseError(kRunModule, "CopyDictsIntoWorkingDB");
}

bool LoadUpdateScripts(const DatabaseBuild& build, ScriptSet& scripts) try {
  scripts.clear();
  for (const std::string& name :
       CollectFileNamesInFolder(build.ScriptsFolder, std::string(names::kScriptMask))) {
    WuDbVerUpdate script;
    const std::int32_t loaded =
        script.LoadFromFile(JoinPath(build.ScriptsFolder, name), build.ProductCode);
    if (loaded == WuDbVerUpdate::kFailed) return false;
    if (loaded == WuDbVerUpdate::kOtherProduct) continue;
    const std::string version = script.FromVersionText();
    if (!scripts.emplace(version + "_", std::move(script)).second) {
      DownloadError(database_texts::ScriptTwice(version), FailureKind::kScript);
      return false;
    }
  }
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "LoadUpdateScripts");
}

bool RunUpdateScriptsOnWorkingDB(const DatabaseBuild& build, UpdaterEvents& events,
                                 ports::Database& database, HeldRelations& relations) try {
  events.OnSetSubAction(database_texts::kReadingScripts);
  ScriptSet scripts;
  if (!LoadUpdateScripts(build, scripts)) return false;
  DbVersion version = GetDataBaseVersion(database);
  while (version < build.TargetVersion) {
    const auto found = scripts.find(DbVersionText(version) + "_");
    if (found == scripts.end()) {
      DownloadError(database_texts::ScriptMissing(DbVersionText(version)), FailureKind::kScript);
      return false;
    }
    const WuDbVerUpdate& script = found->second;
    LogEvent("script", {{"from", script.FromVersionText()}, {"to", script.ToVersionText()}});
    events.OnSetSubAction(
        database_texts::RunningScript(script.FromVersionText(), script.ToVersionText()));
    events.OnRunScript(script.File(), script.FromVersionText(), script.ToVersionText());
    if (!script.Execute(database, relations)) return false;
    version = script.ToVersion();
    if (events.CancelPressed()) return false;
  }
  FlushDBEngine();
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "RunUpdateScriptsOnWorkingDB");
}

}  // namespace tmw
