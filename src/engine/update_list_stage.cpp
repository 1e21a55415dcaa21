#include "database/open_mdb.h"
#include "database/table_export.h"
#include "engine/checked_sum.h"
#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "ports/database.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

}  // namespace

bool KsUpdater::BuildUpdateList() try {
  SetMainAction(engine_texts::kSelecting);
  SetupProgress(static_cast<std::int32_t>(files_.size() + tables_.size()), false);
  components_judged_ = 0;
  files_need_update_ = false;
  tables_need_update_ = false;
  download_volume_ = 0;
  const bool result = JudgeFiles() && JudgeTables();
  if (result && !GetUpdaterSettings().IsClientInstallation) {
    AddChecked(download_volume_, scripts_package_.PackSize);
    AddChecked(download_volume_, structures_package_.PackSize);
  }
  ClearProgress();
  return result;
} catch (...) {
  ReRaiseError(kModule, "BuildUpdateList");
}

bool KsUpdater::JudgeFiles() {
  for (WuFileNode& file : files_) {
    SetSubAction("Компонента: " + file.OrigName);
    if (!CheckForFileUpdate(file)) return false;
    if (file.NeedUpdate) {
      files_need_update_ = true;
      AddChecked(download_volume_, file.SrvSize);
    }
    SetProgress(++components_judged_);
    if (CancelPressed()) return false;
  }
  return true;
}

bool KsUpdater::JudgeTables() {
  const bool is_client = GetUpdaterSettings().IsClientInstallation;
  for (WuTableNode& table : tables_) {
    SetSubAction((table.IsUser ? "Таблица: " : "Справочник: ") + table.TableName);
    if (!CheckForTableUpdate(table)) return false;
    if (table.NeedUpdate) {
      tables_need_update_ = true;
      if (!table.IsUser && !is_client) AddChecked(download_volume_, table.SrvSize);
    }
    SetProgress(++components_judged_);
    if (CancelPressed()) return false;
  }
  return true;
}

bool KsUpdater::CheckForFileUpdate(WuFileNode& node) try {
  const std::string installed = JoinPath(node.Folder, node.OrigName);
  node.NeedUpdate = true;
  if (!IsFileExists(installed)) return true;
  // The hash is computed only when the length already matches.
  const bool is_current =
      GetFileLength(installed) == node.OrigSize && GetFileHash(installed) == node.Hash;
  node.NeedUpdate = !is_current;
  return true;
} catch (...) {
  ReRaiseError(kModule, "CheckForFileUpdate");
}

bool KsUpdater::CheckForTableUpdate(WuTableNode& node) try {
  // Opened anew for every table: whoever wants the database meanwhile finds out at once.
  const std::unique_ptr<ports::Database> database = GetUserDB();
  if (database == nullptr) return false;
  node.NeedUpdate = false;
  if (node.IsUser) return true;
  if (!TableExists(node.TableName, *database)) {
    node.NeedUpdate = true;
    return true;
  }
  const std::string text = ExportTableToString(node.TableName, false, database.get());
  node.NeedUpdate = GetStringHash(text) != node.Hash;
  return true;
} catch (...) {
  ReRaiseError(kModule, "CheckForTableUpdate");
}

bool TableExists(const std::string& table, ports::Database& database) {
  try {
    database.Table(table);
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace tmw
