#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "engine/server_list.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/ports.h"
#include "services/updater_settings.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

}  // namespace

bool KsUpdater::CalculateLoadingUrl() try {
  SetMainAction(engine_texts::kChoosingServer);
  const bool result = ChooseServer();
  SetMainAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "CalculateLoadingUrl");
}

bool KsUpdater::ChooseServer() {
  const std::string name(names::kServerListFile);
  const std::string local = JoinPath(temp_dir_, name);
  if (IsFileExists(local)) DeleteFileRepeatedly(local);
  if (!FetchSmallFile(name, local, engine_texts::ServerListNotLoaded)) return false;
  const std::string text = ReadFileToString(local);
  DeleteFile(local);
  if (text.empty()) {
    DownloadError(engine_texts::kServerListEmpty);
    return false;
  }
  const std::vector<std::string> servers = ParseServerList(text, GetUpdaterSettings().NoFtp);
  if (servers.empty()) {
    DownloadError(engine_texts::kNoServer);
    return false;
  }
  const std::int64_t tick = ports::CurrentPorts().clock->TickCount();
  loading_url_ =
      JoinUrl(servers[PickServer(tick, servers.size())], product_code_ + "_" + new_version_);
  return true;
}

}  // namespace tmw
