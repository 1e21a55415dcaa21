#include "publish/checker.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/text.h"
#include "packages/companion_functions.h"
#include "packages/rar_archive.h"
#include "ports/ports.h"
#include "publish/digest.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/image_check.h"
#include "publish/release_names.h"
#include "publish/scripts.h"
#include "publish/server_lines.h"
#include "publish/tables.h"
#include "publish/trust_check.h"
#include "publish/workers.h"

namespace publish {
namespace {

// The updater aborts a transfer that exceeds this.
std::int64_t MostBytes(std::int64_t announced) {
  return announced * 2 + (std::int64_t{1} << 20);
}

using IntegrityCheck = std::int32_t(COMPANION_CALL*)(const char* path);

bool IsIntact(IntegrityCheck check, const std::string& file) {
  return check(ports::CurrentPorts().companion->NarrowPath(file).c_str()) != 0;
}

// Checks one release of a source.
class Checker {
 public:
  Checker(ReleaseSource& source, std::string folder, const std::string& scratch)
      : source_(source), folder_(std::move(folder)), scratch_(scratch) {}

  bool ReadManifest(const Digest& digest, Manifest& manifest, Faults& faults) {
    const std::string package(tmw::names::kManifestPackage);
    const auto fetched = Fetch(package, kMaxManifestPackage, package, faults);
    if (fetched == nullptr) return false;
    if (digest.manifest && (tmw::GetFileLength(fetched->Path()) != digest.manifest->length ||
                            HashOfFile(fetched->Path()) != digest.manifest->hash)) {
      faults.Add(package, texts::kNotTheBoundManifest);
    }
    const std::string entry =
        std::string(tmw::names::kProductCode) + std::string(tmw::names::kManifestFile);
    std::string reason;
    if (!tmw::UnrarOneFile(fetched->Path(), entry, scratch_, "", reason)) {
      faults.Add(package, texts::kReason, {reason});
      return false;
    }
    return publish::ReadManifest(tmw::JoinPath(scratch_, entry), manifest, faults);
  }

  // Returns what the file's headers say, if it is a program.
  std::optional<ImageFacts> CheckUpdaterFile(const UpdaterFile& file, Faults& faults) {
    if (!tmw::CheckFileName(file.name).IsAccepted() || file.length < 0) return std::nullopt;
    const auto fetched = FetchSized(file.name, file.length, file.name, faults);
    if (fetched == nullptr) return std::nullopt;
    if (HashOfFile(fetched->Path()) != file.hash) faults.Add(file.name, texts::kDiffersFromDigest);
    return ReadImage(fetched->Path());
  }

  // image gets what the file's headers say, if it can be had.
  void CheckFile(const FileRecord& file, const std::string& scratch, ReleaseImage& image,
                 Faults& faults) {
    const std::string place = file.folder + " " + file.name;
    const std::int32_t method = file.pack_method;
    if (method != kPlain && method != kIntegrity && method != kText)
      faults.Add(place, texts::kUnknownPackMethod, {std::to_string(method)});
    if (!IsHash(file.hash)) faults.Add(place, texts::kNoHash);
    const bool has_names = tmw::CheckRelativeName(file.server_name).IsAccepted() &&
                           tmw::CheckFileName(file.name).IsAccepted();
    if (!has_names) return;  // CheckManifest reports them
    const auto fetched = FetchSized(file.server_name, file.server_length, place, faults);
    if (fetched == nullptr) return;
    const bool has_integrity = method == kIntegrity;
    if (has_integrity && !IsIntact(tmw::CompanionFunctions().Sha256_GetFileCrcEx, fetched->Path()))
      faults.Add(place, texts::kPackageLacksIntegrity);
    // A wrong length is a fault of its own; the limit is for bombs.
    const std::int64_t max_bytes = std::max(file.length, tmw::MaxUnpacked(file.server_length));
    const auto unpacked = Unpack(*fetched, file.name, max_bytes, scratch, place, faults);
    if (!unpacked) return;
    if (has_integrity && !IsIntact(tmw::CompanionFunctions().Sha256_GetFileCrc, *unpacked))
      faults.Add(place, texts::kFileLacksIntegrity);
    const std::int64_t length = tmw::GetFileLength(*unpacked);
    if (length != file.length) {
      faults.Add(place, texts::kWrongLength, {std::to_string(length), std::to_string(file.length)});
    }
    if (HashOfFile(*unpacked) != file.hash) faults.Add(place, texts::kDiffersFromManifest);
    if (!file.is_com && !MayBeImage(file.name)) return;
    image = {place, file.name, file.is_com ? texts::kTheManifest : "", ReadImage(*unpacked)};
  }

  void CheckDictionary(const TableRecord& table, const std::string& scratch, Faults& faults) {
    if (!tmw::CheckFileName(table.name).IsAccepted()) return;
    const auto fetched =
        FetchSized(TablePackage(table.name), table.server_length, table.name, faults);
    if (fetched == nullptr) return;
    const auto unpacked =
        Unpack(*fetched, table.name + std::string(tmw::names::kTableEnding),
               tmw::MaxUnpacked(table.server_length), scratch, table.name, faults);
    if (!unpacked) return;
    const std::string hash = CheckTableFile(*unpacked, table, faults);
    if (hash != table.hash) faults.Add(table.name, texts::kTextDiffers);
    if (HashOfFile(*unpacked) != hash) faults.Add(table.name, texts::kNotJustText);
  }

  // Extracts the package into the scratch folder; returns false if there is nothing to look at.
  bool CheckPackage(const PackageRecord& package, const std::string& scratch, Faults& faults) {
    if (!faults.Require(tmw::CheckFileName(package.server_name), package.server_name)) return false;
    const auto fetched =
        FetchSized(package.server_name, package.length, package.server_name, faults);
    if (fetched == nullptr) return false;
    if (HashOfFile(fetched->Path()) != package.hash)
      faults.Add(package.server_name, texts::kDiffersFromManifest);
    std::string reason;
    if (tmw::UnrarAllFiles(fetched->Path(), scratch, "", reason, tmw::MaxUnpacked(package.length)))
      return true;
    faults.Add(package.server_name, texts::kReason, {reason});
    return false;
  }

 private:
  std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                     const std::string& place, Faults& faults) {
    std::string reason;
    auto fetched = source_.Fetch(folder_ + name, max_bytes, reason);
    if (fetched == nullptr) faults.Add(place, texts::kNotFetchedAs, {name, reason});
    return fetched;
  }

  std::unique_ptr<FetchedFile> FetchSized(const std::string& name, std::int64_t length,
                                          const std::string& place, Faults& faults) {
    auto fetched = Fetch(name, MostBytes(length), place, faults);
    if (fetched == nullptr) return nullptr;
    const std::int64_t found = tmw::GetFileLength(fetched->Path());
    if (found != length) {
      faults.Add(place, texts::kWrongServerLength,
                 {name, std::to_string(found), std::to_string(length)});
    }
    return fetched;
  }

  static std::optional<std::string> Unpack(const FetchedFile& package, const std::string& entry,
                                           std::int64_t max_bytes, const std::string& scratch,
                                           const std::string& place, Faults& faults) {
    std::string reason;
    if (tmw::UnrarOneFile(package.Path(), entry, scratch, "", reason, max_bytes))
      return tmw::JoinPath(scratch, entry);
    faults.Add(place, texts::kReason, {reason});
    return std::nullopt;
  }

  ReleaseSource& source_;
  std::string folder_;  // of the release, with a "/" at the end; empty for the source's root
  const std::string& scratch_;
};

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
    const Digest digest = ReadDigest(tmw::FileTextOf(*bytes), faults_);
    if (options.key) CheckTrust(source_, *bytes, digest, *options.key, release, faults_);
    if (servers) WarnOfOpenServers(tmw::FileTextOf(*servers), digest, faults_);
    release.version = digest.version;
    if (digest.version.empty()) return release;
    Checker checker(source_, ReleaseFolder(digest.version) + "/", scratch_);
    CheckUpdaterFiles(digest, checker);
    Manifest manifest;
    if (!checker.ReadManifest(digest, manifest, faults_)) return release;
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

  void CheckUpdaterFiles(const Digest& digest, Checker& checker) {
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

  void CheckComponents(const Manifest& manifest, Checker& checker) {
    const std::size_t files = manifest.files.size();
    const std::size_t count = files + manifest.tables.size();
    progress_.Begin(texts::kComponents, count);
    std::vector<Faults> found(count);
    std::vector<ReleaseImage> images(files);
    RunSideBySide(count, source_.Workers(), [&](std::size_t i) {
      const std::string scratch = tmw::JoinPath(scratch_, std::to_string(i));
      if (i < files) {
        checker.CheckFile(manifest.files[i], scratch, images[i], found[i]);
      } else if (!manifest.tables[i - files].is_user) {
        checker.CheckDictionary(manifest.tables[i - files], scratch, found[i]);
      }
      RemoveTree(scratch);
      progress_.Advance();
    });
    for (const Faults& faults : found)
      faults_.Append(faults);
    CheckRegistered(images, faults_);
  }

  void CheckPackages(const Manifest& manifest, Checker& checker,
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
  }
  return Checker(*source, folder, scratch.Path()).ReadManifest(announced, manifest, faults);
}

}  // namespace publish
