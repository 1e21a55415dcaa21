#include "engine/update_list.h"

#include <memory>

#include "database/open_mdb.h"
#include "database/table_export.h"
#include "database/table_lookup.h"
#include "engine/engine_texts.h"
#include "engine/limits.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "ports/database.h"
#include "services/run_module.h"

namespace tmw {
namespace {

bool JudgeAll(Manifest& manifest, bool is_client, UpdaterEvents& events, UpdateNeed& need) {
  std::int32_t judged = 0;
  const auto goes_on = [&] {
    events.OnSetProgress(++judged);
    return !events.CancelPressed();
  };
  for (WuFileNode& file : manifest.Files) {
    events.OnSetSubAction(engine_texts::JudgingFile(file.OrigName));
    CheckForFileUpdate(file);
    if (file.NeedUpdate) {
      need.Files = true;
      AddChecked(need.DownloadVolume, file.SrvSize);
    }
    if (!goes_on()) return false;
  }
  for (WuTableNode& table : manifest.Tables) {
    events.OnSetSubAction(engine_texts::JudgingTable(table.TableName, table.IsUser));
    if (!CheckForTableUpdate(table)) return false;
    if (table.NeedUpdate) {
      need.Tables = true;
      if (!is_client) AddChecked(need.DownloadVolume, table.SrvSize);
    }
    if (!goes_on()) return false;
  }
  return true;
}

}  // namespace

bool BuildUpdateList(Manifest& manifest, bool is_client, UpdaterEvents& events, UpdateNeed& need) {
  events.OnSetMainAction(engine_texts::kSelecting);
  events.OnSetupProgress(static_cast<std::int32_t>(manifest.Files.size() + manifest.Tables.size()),
                         false);
  need = {};
  const bool result = JudgeAll(manifest, is_client, events, need);
  if (result && !is_client) {
    AddChecked(need.DownloadVolume, manifest.ScriptsPackage.PackSize);
    AddChecked(need.DownloadVolume, manifest.StructuresPackage.PackSize);
  }
  events.ClearProgress();
  return result;
}

void CheckForFileUpdate(WuFileNode& file) try {
  const std::string installed = JoinPath(file.Folder, file.OrigName);
  file.NeedUpdate = !IsFileExists(installed) || GetFileLength(installed) != file.OrigSize ||
                    GetFileHash(installed) != file.Hash;
} catch (...) {
  ReRaiseError(kRunModule, "CheckForFileUpdate");
}

bool CheckForTableUpdate(WuTableNode& table) try {
  // Opened anew for every table, and not held between two of them.
  const std::unique_ptr<ports::Database> database = GetUserDB();
  if (database == nullptr) return false;
  table.NeedUpdate = false;
  if (table.IsUser) return true;
  if (!TableExists(table.TableName, *database)) {
    table.NeedUpdate = true;
    return true;
  }
  const std::string text = ExportTableToString(table.TableName, false, database.get());
  table.NeedUpdate = GetStringHash(text) != table.Hash;
  return true;
} catch (...) {
  ReRaiseError(kRunModule, "CheckForTableUpdate");
}

}  // namespace tmw
