#include "product/start_conditions.h"

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "services/product_settings.h"

namespace tmw {

bool IsClientInstallation() {
  const std::string installation = GetProductSetting_String(
      true, std::string(names::kGeneralSection), std::string(names::kInstallationTypeSetting), "");
  return LowerCase(installation) == names::kClientInstallation;
}

bool HasClientLists(const std::string& root) {
  const std::string folder = JoinPath(root, names::kProgramFolder);
  return !CollectFileNamesInFolder(folder, std::string(names::kNetworkMarkMask)).empty();
}

bool WaitForOthersAndLock(const std::string& root, const WaitingTexts& texts) {
  for (const names::GuardedApplication& application : names::kGuardedApplications) {
    if (!WaitUntilAppMutexClosed(std::string(application.mutex), std::string(application.title),
                                 texts))
      return false;
  }
  return LockUpdaterMutex(std::string(names::kUpdaterMutex), texts) &&
         (root.empty() || LockProductFolder(root, texts));
}

}  // namespace tmw
