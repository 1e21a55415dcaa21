#include "database/etalon_db.h"

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "database/access_helpers.h"
#include "database/compaction.h"
#include "database/database_paths.h"
#include "database/database_texts.h"
#include "database/held_relations.h"
#include "database/imp_table.h"
#include "database/open_mdb.h"
#include "database/row_counts.h"
#include "database/table_export.h"
#include "database/table_lookup.h"
#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_names.h"
#include "services/run_module.h"

namespace tmw {
namespace {

// Creates one table after another. The user database is opened once, for the first dictionary that
// is carried over from it.
class TableCreator {
 public:
  TableCreator(const DatabaseBuild& build, UpdaterEvents& events, ports::Database& database,
               HeldRelations& relations)
      : build_(build), events_(events), database_(database), relations_(relations) {}

  bool Create(const WuTableNode& table) {
    ImpTable importer;
    importer.SetTableName(table.TableName);
    importer.SetRelations(relations_);
    if (!table.IsUser && !table.NeedUpdate) return Carry(table.TableName, importer);
    events_.OnSetSubAction(table.IsUser ? database_texts::CreatingTable(table.TableName)
                                        : database_texts::ImportingDictionary(table.TableName));
    const std::string& folder = table.IsUser ? build_.StructuresFolder : build_.LoadedFolder;
    const auto ending = table.IsUser ? names::kTableStructureEnding : names::kTableEnding;
    importer.ImportFromFile(JoinPath(folder, table.TableName + std::string(ending)), database_);
    counts_.Expect(table.TableName, table.IsUser ? 0 : importer.RowCount());
    return true;
  }

  bool CheckCounts() { return counts_.Check(database_); }

 private:
  bool Carry(const std::string& table, ImpTable& importer) {
    events_.OnSetSubAction(database_texts::CarryingDictionary(table));
    if (!user_database_) user_database_ = GetUserDB();
    if (!user_database_) return false;
    importer.ImportFromString(ExportTableToString(table, false, user_database_.get()), database_);
    counts_.Expect(table, CountRows(*user_database_, table));
    return true;
  }

  const DatabaseBuild& build_;
  UpdaterEvents& events_;
  ports::Database& database_;
  HeldRelations& relations_;
  std::unique_ptr<ports::Database> user_database_;
  RowCounts counts_;
};

// The reference database guards no user's data: a relation that its rows violate is left out.
void PutBackRelations(HeldRelations& relations, UpdaterEvents& events) {
  relations.PutBack();
  for (const std::string& misfit : relations.Misfits())
    events.OnSetSubAction(misfit);
}

bool Build(const DatabaseBuild& build, UpdaterEvents& events) {
  const std::string path = BuiltReferencePath(build.StructuresFolder);
  events.OnSetSubAction(database_texts::kCopyingExisting);
  CopyUserDatabase(path);
  if (events.CancelPressed()) return false;
  events.OnSetSubAction(database_texts::kOpening);
  const auto database = OpenMdb(path, database_texts::kWorkingCopy, true, false);
  if (!database) return false;
  HeldRelations relations(*database);
  relations.TakeOutAll();
  events.OnSetSubAction(database_texts::kDeletingObsolete);
  if (!DeteleUnnecessaryTables(build, *database) || events.CancelPressed()) return false;
  events.OnSetSubAction("");
  if (!CreateTablesInEtalonDB(build, events, *database, relations) || events.CancelPressed())
    return false;
  PutBackRelations(relations, events);
  events.OnSetupProgress(0, false);
  events.OnSetSubAction(database_texts::kSavingVersion);
  database_utils::TmExecuteSql(SetDataBaseVersionSql(build.TargetVersion), database.get());
  database->Close();
  FlushDBEngine();
  events.OnSetSubAction(database_texts::kCompacting);
  PackDataBase(path);
  return true;
}

}  // namespace

bool BuildEtalonDB(const DatabaseBuild& build, UpdaterEvents& events) {
  events.OnSetMainAction(database_texts::kBuildingReference);
  const bool result = Build(build, events);
  events.ClearProgress();
  return result;
}

bool DeteleUnnecessaryTables(const DatabaseBuild& build, ports::Database& database) try {
  std::set<std::string> kept = {std::string(names::kVersionTable)};
  for (const WuTableNode& table : *build.Tables)
    kept.insert(LowerCase(table.TableName));
  std::vector<std::string> unnecessary = OrdinaryTables(database);
  std::erase_if(unnecessary,
                [&](const std::string& table) { return kept.contains(LowerCase(table)); });
  for (const std::string& table : unnecessary)
    database.DeleteTable(table);
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "DeteleUnnecessaryTables");
}

bool CreateTablesInEtalonDB(const DatabaseBuild& build, UpdaterEvents& events,
                            ports::Database& database, HeldRelations& relations) try {
  events.OnSetupProgress(static_cast<std::int32_t>(build.Tables->size()), false);
  TableCreator creator(build, events, database, relations);
  std::int32_t count = 0;
  for (const WuTableNode& table : *build.Tables) {
    if (!creator.Create(table)) return false;
    events.OnSetProgress(++count);
    if (events.CancelPressed()) return false;
  }
  if (!creator.CheckCounts()) return false;
  events.OnSetupProgress(0, false);
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "CreateTablesInEtalonDB");
}

}  // namespace tmw
