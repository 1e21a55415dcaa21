#include "publish/checker.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "packages/companion_functions.h"
#include "publish/component_check.h"
#include "publish/digest.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/image_check.h"
#include "publish/release_names.h"
#include "publish/scripts.h"
#include "publish/server_lines.h"
#include "publish/tables.h"
#include "publish/trust_check.h"
#include "publish/unpack_folders.h"
#include "publish/workers.h"

namespace publish {
namespace {

// Checks everything that a server offers.
class ServerCheck {
 public:
  ServerCheck(ReleaseSource& source, const std::string& scratch, tools::Progress& progress,
              Faults& faults)
      : source_(source), scratch_(scratch), progress_(progress), faults_(faults) {}

  CheckedRelease Run(const CheckOptions& options) {
    CheckedRelease release;
    const auto servers = ReadBytes(tmw::names::kServerListFile);
    if (servers) CheckServerList(tmw::FileTextOf(*servers), faults_);
    const auto bytes = ReadBytes(tmw::names::kDigestFile);
    if (!bytes) return release;
    Digest digest = ReadDigest(tmw::FileTextOf(*bytes), faults_);
    if (options.key) CheckTrust(source_, *bytes, digest, *options.key, release, faults_);
    if (servers) WarnOfOpenServers(tmw::FileTextOf(*servers), digest, faults_);
    release.version = digest.version;
    if (digest.version.empty()) return release;
    ComponentCheck checker(source_, ReleaseFolder(digest.version) + "/");
    CheckUpdaterFiles(digest, checker);
    Manifest manifest;
    if (!checker.ReadManifest(digest, scratch_, manifest, faults_)) return release;
    release.digest = digest;
    if (servers) release.server_list = tmw::FileTextOf(*servers);
    CheckHead(manifest, digest.version);
    CheckManifest(manifest, faults_);
    WarnOfCompanions(manifest, faults_);
    CheckComponents(manifest, checker);
    CheckPackages(manifest, checker, options.oldest_database);
    release.files = manifest.files.size();
    release.tables = manifest.tables.size();
    release.volume = WholeVolume(manifest);
    release.tried = TryDatabases(options.tries, source_, ReleaseFolder(digest.version) + "/",
                                 manifest, scratch_, progress_, faults_);
    return release;
  }

 private:
  std::optional<std::string> ReadBytes(std::string_view name) {
    std::string reason;
    const auto fetched = source_.Fetch(std::string(name), kMaxSmallFile, reason);
    if (fetched != nullptr) return tmw::ReadFileBytes(fetched->Path());
    RequireReached(source_, reason);
    faults_.Add(std::string(name), texts::kNotFetched, {reason});
    return std::nullopt;
  }

  void CheckHead(const Manifest& manifest, const std::string& version) {
    const std::string place = texts::kInManifest;
    if (manifest.product != tmw::names::kProductCode)
      faults_.Add(place, texts::kOtherProduct, {manifest.product});
    if (manifest.version != version)
      faults_.Add(place, texts::kOtherVersion, {manifest.version, version});
    if (const auto verdict = tmw::CheckFileName(manifest.version_id); !verdict.IsAccepted())
      faults_.Add(place, texts::kVersionIdRefused, {verdict.message});
  }

  void CheckUpdaterFiles(const Digest& digest, ComponentCheck& checker) {
    std::optional<ImageFacts> program;
    std::string name;
    for (const UpdaterFile& file : digest.files) {
      auto facts = checker.CheckUpdaterFile(file, faults_);
      if (!name.empty()) continue;
      name = file.name;
      program = std::move(facts);
    }
    CheckNeededUpdater(digest.needed_updater, name, program, std::string(tmw::names::kDigestFile),
                       faults_);
  }

  // A component's part of the progress: its bytes on the server, and opening it counts too.
  static std::int64_t WorkOf(const Manifest& manifest, std::size_t number) {
    constexpr std::int64_t kOpening = 16384;
    const std::size_t files = manifest.files.size();
    const std::int64_t length = number < files ? manifest.files[number].server_length
                                               : manifest.tables[number - files].server_length;
    return std::max<std::int64_t>(length, 0) + kOpening;
  }

  void CheckComponents(const Manifest& manifest, ComponentCheck& checker) {
    const std::size_t files = manifest.files.size();
    const std::size_t count = files + manifest.tables.size();
    std::int64_t bytes = 0;
    for (std::size_t i = 0; i < count; ++i)
      bytes += WorkOf(manifest, i);
    progress_.BeginBytes(texts::kComponents, bytes);
    std::vector<Faults> found(count);
    std::mutex images_guard;
    std::map<std::size_t, ReleaseImage> images_by_number;
    UnpackFolders folders(scratch_);
    RunSideBySide(count, source_.Workers(), [&](std::size_t i) {
      const std::string scratch = folders.Take();
      if (i < files) {
        if (auto image = checker.CheckFile(manifest.files[i], scratch, found[i])) {
          const std::lock_guard lock(images_guard);
          images_by_number.emplace(i, std::move(*image));
        }
      } else if (!manifest.tables[i - files].is_user) {
        checker.CheckDictionary(manifest.tables[i - files], scratch, found[i]);
      }
      folders.Return(scratch);
      progress_.Advance(static_cast<std::size_t>(WorkOf(manifest, i)));
    });
    for (const Faults& faults : found)
      faults_.Append(faults);
    std::vector<ReleaseImage> images;
    for (auto& [number, image] : images_by_number)
      images.push_back(std::move(image));
    CheckRegistered(images, faults_);
  }

  void CheckPackages(const Manifest& manifest, ComponentCheck& checker,
                     const std::string& oldest_database) {
    const std::string scripts = tmw::JoinPath(scratch_, "scripts");
    if (checker.CheckPackage(manifest.scripts, scripts, faults_))
      CheckChain(ReadScripts(scripts, faults_), {oldest_database, texts::kInScripts},
                 manifest.version, faults_);
    const std::string structures = tmw::JoinPath(scratch_, "structures");
    if (!checker.CheckPackage(manifest.structures, structures, faults_)) return;
    for (const TableRecord& table : manifest.tables) {
      if (table.is_user) CheckStructure(table, structures);
    }
  }

  void CheckStructure(const TableRecord& table, const std::string& folder) {
    if (!tmw::CheckFileName(table.name).IsAccepted()) return;
    const std::string name = table.name + std::string(tmw::names::kTableStructureEnding);
    const std::string file = tmw::JoinPath(folder, name);
    if (!tmw::IsFileExists(file)) {
      faults_.Add(table.name, texts::kNoStructure, {name});
    } else {
      CheckStructureFile(file, table, faults_);
    }
  }

  ReleaseSource& source_;
  const std::string& scratch_;
  tools::Progress& progress_;
  Faults& faults_;
};

}  // namespace

CheckedRelease CheckRelease(const std::string& place, const CheckOptions& options,
                            tools::Progress& progress, Faults& faults) {
  tmw::CompanionFunctions();  // loads the library before other threads start
  const ScratchFolder scratch;
  const auto source = OpenReleaseSource(place, scratch.Path());
  return ServerCheck(*source, scratch.Path(), progress, faults).Run(options);
}

bool LoadManifest(const std::string& place, Manifest& manifest, Faults& faults) {
  const ScratchFolder scratch;
  const auto source = OpenReleaseSource(place, scratch.Path());
  std::string reason;
  std::string folder;
  Digest announced;
  // A server's root announces a release in its digest; a release's own folder has none.
  if (const auto digest =
          source->Fetch(std::string(tmw::names::kDigestFile), kMaxSmallFile, reason)) {
    announced = ReadDigest(tmw::ReadFileToString(digest->Path()), faults);
    if (announced.version.empty()) return false;
    folder = ReleaseFolder(announced.version) + "/";
  } else {
    RequireReached(*source, reason);
  }
  return ComponentCheck(*source, folder).ReadManifest(announced, scratch.Path(), manifest, faults);
}

}  // namespace publish
