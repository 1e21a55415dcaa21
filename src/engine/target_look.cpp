#include "engine/target_look.h"

#include <string>

#include "database/database_paths.h"
#include "engine/installed_files.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "product/registration.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

void AddDatabaseTargets(LookPlan& plan) {
  for (const std::string& file :
       {UserDatabasePlace(), NewUserDatabasePath(), InstalledReferencePath()}) {
    plan.Files.push_back({file});
    plan.Folders.push_back(SplitFileName(file).Folder);
  }
  const std::string scripts = InstalledScriptsFolder();
  if (!IsFolderExists(scripts)) return;
  plan.Folders.push_back(scripts);
  for (const std::string& name : CollectFileNamesInFolder(scripts, std::string(names::kScriptMask)))
    plan.Files.push_back({JoinPath(scripts, name)});
}

}  // namespace

LookPlan PlanLook(const Manifest& manifest, bool is_client) {
  LookPlan plan;
  plan.Folders.push_back(GetProductRootPath());
  plan.Files.push_back(
      {JoinPath(GetProductRootPath(), names::kRootMark), ports::Replacement::kRenameOver});
  for (const WuFileNode& file : manifest.Files) {
    if (!file.NeedUpdate) continue;
    plan.Files.push_back({InstalledPath(file), IsUpdatersOwnFile(file)
                                                   ? ports::Replacement::kRenameOver
                                                   : ports::Replacement::kRemoval});
    if (const auto companion = ScriptCompanion(file, manifest)) plan.Files.push_back({*companion});
    plan.Folders.push_back(file.Folder);
    plan.Registers = plan.Registers || (file.IsCom && !GetNoRegisteringParam());
  }
  if (!is_client) AddDatabaseTargets(plan);
  return plan;
}

}  // namespace tmw
