#include "engine/release_reader.h"

#include <optional>
#include <utility>

#include "engine/component_check.h"
#include "engine/digest.h"
#include "engine/engine_texts.h"
#include "engine/fetching.h"
#include "engine/limits.h"
#include "engine/manifest.h"
#include "engine/server_list.h"
#include "engine/signed_digest.h"
#include "engine/update_keys.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/version.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "ports/clock.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/updater_settings.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

bool Refuse(const std::string& reason, FailureKind kind = FailureKind::kWrongData) {
  DownloadError(reason, kind);
  return false;
}

// A network that asks for a login answers every request with its own page.
FailureKind KindOfFaultyText(const std::string& text) {
  return TrimCharacters(text, " \t\r\n").starts_with('<') ? FailureKind::kLoginPage
                                                          : FailureKind::kWrongData;
}

bool IsAnnounced(const std::string& package, const std::optional<BoundPackage>& announced) {
  return announced && GetFileLength(package) == announced->Size &&
         GetFileHash(package) == announced->Hash;
}

}  // namespace

ReleaseReader::ReleaseReader(UpdaterEvents& events, std::string product_code, UpdateServers servers,
                             std::string temp_dir)
    : events_(events),
      product_code_(std::move(product_code)),
      servers_(std::move(servers)),
      temp_dir_(std::move(temp_dir)) {}

bool ReleaseReader::ReadDigest(Digest& digest) {
  events_.OnSetMainAction(engine_texts::kGettingVersion);
  const std::string local = JoinPath(temp_dir_, names::kDigestFile);
  std::string text;
  if (!FetchDigest(local, text)) return false;
  const AppVersion own = GetAppVersion();
  std::string reason;
  if (!TryParseDigest(text, own.Major, own.Minor, digest, reason))
    return Refuse(reason, KindOfFaultyText(text));
  if (digest.Updater == UpdaterVersionCheck::kTooOld) {
    ShowInformation(box_titles::kProductUpdate, engine_texts::kUpdaterTooOld, FailureKind::kByHand);
    return false;
  }
  DeleteFile(local);
  return true;
}

bool ReleaseReader::ChooseServer(const std::string& version, std::string& loading_url) {
  events_.OnSetMainAction(engine_texts::kChoosingServer);
  const std::string name(names::kServerListFile);
  const std::string local = JoinPath(temp_dir_, name);
  if (IsFileExists(local)) DeleteFileRepeatedly(local);
  if (!FetchSmallFile(name, local, engine_texts::ServerListNotLoaded)) return false;
  const std::string text = ReadFileToString(local);
  DeleteFile(local);
  std::string server;
  std::string reason;
  if (!TryChooseServer(text, GetUpdaterSettings().NoFtp, ports::CurrentPorts().clock->TickCount(),
                       server, reason)) {
    return Refuse(reason, KindOfFaultyText(text));
  }
  loading_url = JoinUrl(server, product_code_ + "_" + version);
  return true;
}

bool ReleaseReader::ReadManifest(const std::string& loading_url, Digest& digest,
                                 Manifest& manifest) {
  events_.OnSetMainAction(engine_texts::kGettingFileList);
  const std::string package = JoinPath(temp_dir_, names::kManifestPackage);
  const std::string url = loading_url + "/" + std::string(names::kManifestPackage);
  if (!FetchManifest(url, package, digest)) return false;
  const std::string entry = product_code_ + std::string(names::kManifestFile);
  std::string reason;
  if (!UnrarOneFile(package, entry, temp_dir_, "", reason, kMaxManifest))
    return Refuse(reason, KindOfRefusal());
  DeleteFile(package);
  events_.OnSetMainAction(engine_texts::kParsingFileList);
  const std::string file = JoinPath(temp_dir_, entry);
  const auto may_go_on = [this] { return !events_.CancelPressed(); };
  if (TryParseManifest(file, product_code_, digest.Version, manifest, reason, may_go_on))
    return true;
  return may_go_on() && Refuse(reason);
}

bool ReleaseReader::FetchDigest(const std::string& local, std::string& text) {
  std::vector<signature::PublicKey> keys;
  std::string reason;
  if (!TryReadUpdateKeys(keys, reason)) return Refuse(reason, FailureKind::kSetting);
  if (!keys.empty()) return FetchSignedDigest(events_, servers_, product_code_, keys, local, text);
  const std::string name(names::kDigestFile);
  if (!FetchSmallFile(name, local, engine_texts::DigestNotLoaded)) return false;
  text = ReadFileToString(local);
  return true;
}

bool ReleaseReader::FetchManifest(const std::string& url, const std::string& package,
                                  Digest& digest) {
  const bool is_bound = digest.Manifest.has_value();
  for (bool is_second = false;; is_second = true) {
    if (!FetchFile(events_, url, package, kMaxManifestPackage)) return false;
    if (!is_bound || IsAnnounced(package, digest.Manifest)) return true;
    DeleteFile(package);
    if (is_second) return Refuse(engine_texts::ManifestNotAnnounced(url));
    if (!ReadDigestAgain(digest)) return false;
    events_.OnSetMainAction(engine_texts::kGettingFileList);
  }
}

bool ReleaseReader::ReadDigestAgain(Digest& digest) {
  Digest again;
  if (!ReadDigest(again)) return false;
  // Every stage so far has judged the release that was announced first.
  if (again.Version != digest.Version || again.Updater != digest.Updater)
    return Refuse(engine_texts::ReleaseReplaced(digest.Version, again.Version),
                  FailureKind::kOther);
  digest = std::move(again);
  return true;
}

bool ReleaseReader::FetchSmallFile(const std::string& name, const std::string& local,
                                   std::string (*failure)(const std::string& reason)) {
  const std::string fallback = servers_.FallbackUrl.empty() ? "" : servers_.FallbackUrl + name;
  std::string reason;
  const bool is_loaded =
      TryDownloadFileFromTwoUrls(servers_.Url + name, fallback, local, reason, kMaxSmallFile,
                                 [this] { return !events_.CancelPressed(); });
  if (!is_loaded && !events_.CancelPressed()) DownloadError(failure(reason));
  return is_loaded;
}

}  // namespace tmw
