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

// Judges one record after another.
class Judge {
 public:
  Judge(bool is_client, UpdaterEvents& events, UpdateNeed& need)
      : is_client_(is_client), events_(events), need_(need) {}

  bool JudgeFile(WuFileNode& file) {
    events_.OnSetSubAction(engine_texts::JudgingFile(file.OrigName));
    CheckForFileUpdate(file);
    if (file.NeedUpdate) {
      need_.Files = true;
      AddChecked(need_.DownloadVolume, file.SrvSize);
    }
    return Count();
  }

  bool JudgeTable(WuTableNode& table) {
    events_.OnSetSubAction(engine_texts::JudgingTable(table.TableName, table.IsUser));
    if (!CheckForTableUpdate(table)) return false;
    if (table.NeedUpdate) {
      need_.Tables = true;
      if (!table.IsUser && !is_client_) AddChecked(need_.DownloadVolume, table.SrvSize);
    }
    return Count();
  }

 private:
  bool Count() {
    events_.OnSetProgress(++judged_);
    return !events_.CancelPressed();
  }

  bool is_client_;
  UpdaterEvents& events_;
  UpdateNeed& need_;
  std::int32_t judged_ = 0;
};

bool JudgeAll(Manifest& manifest, Judge judge) {
  for (WuFileNode& file : manifest.Files) {
    if (!judge.JudgeFile(file)) return false;
  }
  for (WuTableNode& table : manifest.Tables) {
    if (!judge.JudgeTable(table)) return false;
  }
  return true;
}

}  // namespace

bool BuildUpdateList(Manifest& manifest, bool is_client, UpdaterEvents& events, UpdateNeed& need) {
  events.OnSetMainAction(engine_texts::kSelecting);
  events.OnSetupProgress(static_cast<std::int32_t>(manifest.Files.size() + manifest.Tables.size()),
                         false);
  need = {};
  const bool result = JudgeAll(manifest, Judge(is_client, events, need));
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
  // Opened anew for every table, and held no longer than judging it takes.
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
