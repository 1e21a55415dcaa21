#include "publish/component_check.h"

#include <algorithm>

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/tables.h"
#include "tools/stop.h"

namespace publish {
namespace {

// The updater aborts a transfer that exceeds this.
std::int64_t MostBytes(std::int64_t announced) {
  return announced * 2 + (std::int64_t{1} << 20);
}

bool IsIntact(const std::string& file) {
  return ReadWithTrailer(file, [](std::string_view /*piece*/) {});
}

std::optional<std::string> Unpack(const FetchedFile& package, const std::string& entry,
                                  std::int64_t max_bytes, const std::string& scratch,
                                  const std::string& place, Faults& faults) {
  std::string reason;
  if (tmw::UnrarOneFile(package.Path(), entry, scratch, "", reason, max_bytes, tools::GoesOn))
    return tmw::JoinPath(scratch, entry);
  tools::ThrowIfStopped();
  faults.Add(place, texts::kReason, {reason});
  return std::nullopt;
}

}  // namespace

bool ComponentCheck::ReadManifest(Digest& digest, const std::string& scratch, Manifest& manifest,
                                  Faults& faults) {
  const std::string package(tmw::names::kManifestPackage);
  const auto fetched = Fetch(package, kMaxManifestPackage, package, faults);
  if (fetched == nullptr) return false;
  const BoundManifest found{tmw::GetFileLength(fetched->Path()), HashOfFile(fetched->Path())};
  if (!digest.manifest) digest.manifest = found;
  if (found.length != digest.manifest->length || found.hash != digest.manifest->hash)
    faults.Add(package, texts::kNotTheBoundManifest);
  const std::string entry =
      std::string(tmw::names::kProductCode) + std::string(tmw::names::kManifestFile);
  std::string reason;
  if (!tmw::UnrarOneFile(fetched->Path(), entry, scratch, "", reason, tmw::kNoUnpackLimit,
                         tools::GoesOn)) {
    faults.Add(package, texts::kReason, {reason});
    return false;
  }
  return publish::ReadManifest(tmw::JoinPath(scratch, entry), manifest, faults);
}

std::optional<ImageFacts> ComponentCheck::CheckUpdaterFile(const UpdaterFile& file,
                                                           Faults& faults) {
  if (!tmw::CheckFileName(file.name).IsAccepted() || file.length < 0) return std::nullopt;
  const auto fetched = FetchSized(file.name, file.length, file.name, faults);
  if (fetched == nullptr) return std::nullopt;
  if (HashOfFile(fetched->Path()) != file.hash) faults.Add(file.name, texts::kDiffersFromDigest);
  return ReadImage(fetched->Path());
}

std::optional<ReleaseImage> ComponentCheck::CheckFile(const FileRecord& file,
                                                      const std::string& scratch, Faults& faults) {
  const std::string place = file.folder + " " + file.name;
  const std::int32_t method = file.pack_method;
  if (method != kPlain && method != kIntegrity && method != kText)
    faults.Add(place, texts::kUnknownPackMethod, {std::to_string(method)});
  if (!tmw::IsHashText(file.hash)) faults.Add(place, texts::kNoHash);
  const bool has_names = tmw::CheckRelativeName(file.server_name).IsAccepted() &&
                         tmw::CheckFileName(file.name).IsAccepted();
  if (!has_names) return std::nullopt;  // CheckManifest reports them
  const auto fetched = FetchSized(file.server_name, file.server_length, place, faults);
  if (fetched == nullptr) return std::nullopt;
  const bool has_integrity = method == kIntegrity;
  if (has_integrity && !IsIntact(fetched->Path())) faults.Add(place, texts::kPackageLacksIntegrity);
  // A wrong length is a fault of its own; the limit is for bombs.
  const std::int64_t max_bytes = std::max(file.length, tmw::MaxUnpacked(file.server_length));
  const auto unpacked = Unpack(*fetched, file.name, max_bytes, scratch, place, faults);
  if (!unpacked) return std::nullopt;
  if (has_integrity && !IsIntact(*unpacked)) faults.Add(place, texts::kFileLacksIntegrity);
  const std::int64_t length = tmw::GetFileLength(*unpacked);
  if (length != file.length) {
    faults.Add(place, texts::kWrongLength, {std::to_string(length), std::to_string(file.length)});
  }
  if (HashOfFile(*unpacked) != file.hash) faults.Add(place, texts::kDiffersFromManifest);
  if (!file.is_com && !MayBeImage(file.name)) return std::nullopt;
  return ReleaseImage{place, file.name, file.is_com ? texts::kTheManifest : "",
                      ReadImage(*unpacked)};
}

void ComponentCheck::CheckDictionary(const TableRecord& table, const std::string& scratch,
                                     Faults& faults) {
  if (!tmw::CheckFileName(table.name).IsAccepted()) return;
  const auto fetched =
      FetchSized(TablePackage(table.name), table.server_length, table.name, faults);
  if (fetched == nullptr) return;
  const auto unpacked = Unpack(*fetched, table.name + std::string(tmw::names::kTableEnding),
                               tmw::MaxUnpacked(table.server_length), scratch, table.name, faults);
  if (!unpacked) return;
  const std::string hash = CheckTableFile(*unpacked, table, faults);
  if (hash != table.hash) faults.Add(table.name, texts::kTextDiffers);
  if (HashOfFile(*unpacked) != hash) faults.Add(table.name, texts::kNotJustText);
}

bool ComponentCheck::CheckPackage(const PackageRecord& package, const std::string& scratch,
                                  Faults& faults) {
  if (!faults.Require(tmw::CheckFileName(package.server_name), package.server_name)) return false;
  const auto fetched = FetchSized(package.server_name, package.length, package.server_name, faults);
  if (fetched == nullptr) return false;
  if (HashOfFile(fetched->Path()) != package.hash)
    faults.Add(package.server_name, texts::kDiffersFromManifest);
  std::string reason;
  if (tmw::UnrarAllFiles(fetched->Path(), scratch, "", reason, tmw::MaxUnpacked(package.length),
                         tools::GoesOn))
    return true;
  faults.Add(package.server_name, texts::kReason, {reason});
  return false;
}

std::unique_ptr<FetchedFile> ComponentCheck::Fetch(const std::string& name, std::int64_t max_bytes,
                                                   const std::string& place, Faults& faults) {
  std::string reason;
  auto fetched = source_.Fetch(folder_ + name, max_bytes, reason);
  if (fetched == nullptr) faults.Add(place, texts::kNotFetchedAs, {name, reason});
  return fetched;
}

std::unique_ptr<FetchedFile> ComponentCheck::FetchSized(const std::string& name,
                                                        std::int64_t length,
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

}  // namespace publish
