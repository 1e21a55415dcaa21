#include "engine/digest.h"
#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "ports/front_end.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr std::size_t kLeastLines = 2;

}  // namespace

bool KsUpdater::DownloadDigest() try {
  SetMainAction(engine_texts::kGettingVersion);
  const bool result = LoadDigest();
  SetMainAction("");
  return result;
} catch (...) {
  ReRaiseError(kModule, "DownloadDigest");
}

bool KsUpdater::LoadDigest() {
  const std::string name(names::kDigestFile);
  const std::string local = JoinPath(temp_dir_, name);
  if (!FetchSmallFile(name, local, engine_texts::DigestNotLoaded)) return false;
  const std::string text = ReadFileToString(local);
  if (text.empty()) {
    DownloadError(engine_texts::kDigestEmpty);
    return false;
  }
  const std::vector<std::string> lines = Split(text, kCrLf);
  if (lines.size() < kLeastLines) {
    DownloadError(engine_texts::kDigestError);
    return false;
  }
  if (!CheckForUpdaterVersion(lines[1])) return false;
  new_version_ = lines[0];
  if (!ParseUpdateVersion(new_version_, new_version_numbers_)) {
    DownloadError(engine_texts::kNoUpdateVersion);
    return false;
  }
  if (updater_update_needed_ && !ParseUpdaterDigestPart(lines)) return false;
  DeleteFile(local);
  return true;
}

bool KsUpdater::CheckForUpdaterVersion(const std::string& line) try {
  const AppVersion own = GetAppVersion();
  switch (CheckUpdaterVersion(line, own.Major, own.Minor)) {
    case UpdaterVersionCheck::kUnreadable:
      DownloadError(engine_texts::kNoUpdaterVersion);
      return false;
    case UpdaterVersionCheck::kTooOld:
      ports::CurrentPorts().front_end->ShowMessage(ports::MessageKind::kInformation,
                                                   engine_texts::kUpdateTitle,
                                                   engine_texts::kUpdaterTooOld);
      return false;
    case UpdaterVersionCheck::kUpdateNeeded:
      updater_update_needed_ = true;
      return true;
    case UpdaterVersionCheck::kGood:
      break;
  }
  return true;
} catch (...) {
  ReRaiseError(kModule, "CheckForUpdaterVersion");
}

bool KsUpdater::ParseUpdaterDigestPart(const std::vector<std::string>& lines) try {
  switch (ParseComponentLines(lines, updater_components_)) {
    case ComponentLineError::kEmpty:
      DownloadError(engine_texts::kUpdateLineEmpty);
      return false;
    case ComponentLineError::kTooFewFields:
      DownloadError(engine_texts::kUpdateLineShort);
      return false;
    case ComponentLineError::kBadSize:
      DownloadError(engine_texts::kUpdateLineSize);
      return false;
    case ComponentLineError::kNone:
      break;
  }
  for (const WuUpdaterComponent& component : updater_components_)
    RequireFileName(component.Name);
  return true;
} catch (...) {
  ReRaiseError(kModule, "ParseUpdaterDigestPart");
}

}  // namespace tmw
