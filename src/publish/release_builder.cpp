#include "publish/release_builder.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <numeric>
#include <set>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "foundation/xml_helpers.h"
#include "packages/companion_functions.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"
#include "publish/unicode_text.h"
#include "publish/workers.h"
#include "tools/fill.h"
#include "tools/stop.h"

namespace publish {
namespace {

constexpr std::int64_t kLargestNumber = std::numeric_limits<std::int32_t>::max();

void CheckSize(std::int64_t length, const std::string& place, Faults& faults) {
  if (length > kLargestNumber) faults.Add(place, texts::kTooLong);
}

void StopOnRequest(std::size_t /*piece*/) {
  tools::ThrowIfStopped();
}

// A file's part of the progress: its bytes are read twice, and opening it counts too.
std::int64_t WorkOf(const ProductFile& file) {
  constexpr std::int64_t kOpening = 16384;
  return 2 * file.record.length + kOpening;
}

// A file that cannot be read is a fault like any other and does not end the run.
bool CheckReadable(const std::string& file, const std::string& place, Faults& faults) {
  try {
    OpenToRead(file);
    return true;
  } catch (const tmw::ProgramError& error) {
    faults.Add(place, texts::kReason, {tmw::TrimCharacters(error.Description, tmw::kCrLf)});
    return false;
  }
}

}  // namespace

ReleaseBuilder::ReleaseBuilder(const Description& description, std::string release,
                               std::string work, tools::Progress& progress, Packer* packer)
    : description_(description),
      release_(std::move(release)),
      work_(std::move(work)),
      progress_(progress),
      packer_(packer) {
  manifest_.product = tmw::names::kProductCode;
  manifest_.version = description.version;
  manifest_.version_id = description.version_id;
  digest_.version = description.version;
  digest_.needed_updater = description.needed_updater;
}

std::string ReleaseBuilder::PathOf(const std::string& server_name) const {
  return tmw::JoinPath(release_, server_name);
}

// An extracted file without a mode gets the system's default for new files.
packing::RarEntryFacts ReleaseBuilder::FactsOf(const std::string& name, bool is_executable) const {
  packing::RarEntryFacts facts;
  facts.name = name;
  facts.modified = description_.date;
  if (is_executable) facts.unix_mode = 0755;
  return facts;
}

PackageRecord ReleaseBuilder::PackTogether(const std::string& server_name,
                                           const std::vector<Entry>& entries) {
  const std::string path = PathOf(server_name);
  packing::StoredRarWriter writer(path, description_.format);
  for (const auto& [file, name] : entries)
    writer.AddFile(FactsOf(name), file, StopOnRequest);
  writer.Finish(false);
  return {server_name, tmw::GetFileLength(path), HashOfFile(path)};
}

PackageRecord ReleaseBuilder::PackAlone(const std::string& server_name, const Entry& entry,
                                        Faults& faults) {
  const std::string path = PathOf(server_name);
  if (packer_ != nullptr) {
    PackJob job;
    job.place = server_name;
    job.source = entry.first;
    job.name = entry.second;
    job.length = tmw::GetFileLength(job.source);
    job.hash = HashOfFile(job.source);
    job.most_bytes = packing::StoredSize(description_.format, FactsOf(job.name), job.length);
    if (PackShorter(job, path, false, tmw::JoinPath(work_, "p" + server_name), faults))
      return {server_name, tmw::GetFileLength(path), HashOfFile(path)};
  }
  return PackTogether(server_name, {entry});
}

// Has the maker's archiver pack a file. Returns false if the stored package is to be made, or if
// there was a fault.
bool ReleaseBuilder::PackShorter(const PackJob& job, const std::string& target, bool with_trailer,
                                 const std::string& scratch, Faults& faults) const {
  const auto archive = packer_->Pack(job, scratch, faults);
  if (archive && with_trailer) {
    packing::CopyFileWithIntegrityTrailer(*archive, target, StopOnRequest);
  } else if (archive) {
    tmw::MoveFile(*archive, target);
  }
  // The system may hold the archiver's folder for a moment; all of it goes with the work folder.
  tmw::DeleteFolderTree(scratch);
  return archive.has_value();
}

void ReleaseBuilder::AddTables(ReferenceTables& reference, std::vector<TableRecord> tables,
                               Faults& faults) {
  progress_.Begin(texts::kTables, tables.size());
  std::vector<Entry> structures;
  const std::string table_file = tmw::JoinPath(work_, "table");
  for (TableRecord& table : tables) {
    if (!tmw::CheckFileName(table.name).IsAccepted()) continue;  // CheckManifest reports it
    if (table.is_user) {
      const std::string file = tmw::JoinPath(work_, "s" + std::to_string(structures.size()));
      reference.WriteText(table, file, faults);
      structures.emplace_back(file, table.name + std::string(tmw::names::kTableStructureEnding));
    } else {
      table.hash = reference.WriteText(table, table_file, faults);
      const PackageRecord package =
          PackAlone(TablePackage(table.name),
                    {table_file, table.name + std::string(tmw::names::kTableEnding)}, faults);
      table.server_length = package.length;
    }
    progress_.Advance();
  }
  manifest_.tables = std::move(tables);
  manifest_.structures = PackTogether(kStructuresPackage, structures);
}

void ReleaseBuilder::AddFiles(std::vector<ProductFile> files, Faults& faults) {
  for (const ProductFile& file : files)
    manifest_.files.push_back(file.record);
  CheckManifest(manifest_, faults);
  if (!faults.IsEmpty()) return;
  is_packed_ = true;
  std::int64_t bytes = 0;
  for (ProductFile& file : files) {
    if (!file.ready_package.empty())
      tmw::CompanionFunctions();  // loads the library before other threads start
    file.record.length = tmw::GetFileLength(file.source);
    bytes += WorkOf(file);
    tmw::CreateFolderIfAbsent(tmw::SplitFileName(PathOf(file.record.server_name)).Folder);
  }
  progress_.BeginBytes(texts::kFiles, bytes);
  // Largest first, so that no thread starts a large file when the others have finished.
  std::vector<std::size_t> order(files.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return files[a].record.length > files[b].record.length;
  });
  std::vector<Faults> found(files.size());
  RunSideBySide(files.size(), WorkerCount(), [&](std::size_t i) {
    const std::size_t number = order[i];
    const std::int64_t work = WorkOf(files[number]);
    std::int64_t done = 0;
    PackFile(
        files[number], number,
        [&](std::size_t piece) {
          done += static_cast<std::int64_t>(piece);
          progress_.Advance(piece);
        },
        found[number]);
    progress_.Advance(static_cast<std::size_t>(std::max<std::int64_t>(work - done, 0)));
  });
  for (std::size_t i = 0; i < files.size(); ++i) {
    faults.Append(found[i]);
    manifest_.files[i] = std::move(files[i].record);
  }
}

void ReleaseBuilder::PackFile(ProductFile& file, std::size_t number,
                              const packing::PieceHandler& on_piece, Faults& faults) const {
  FileRecord& record = file.record;
  if (!CheckReadable(file.source, file.path, faults)) return;
  if (record.length > packing::StoredRarWriter::kLargestFile) {
    CheckSize(record.length, file.path, faults);
    return;
  }
  const std::string scratch = tmw::JoinPath(work_, "f" + std::to_string(number));
  if (!file.ready_package.empty()) {
    TakeReadyPackage(file, scratch, faults);
    return;
  }
  const std::string target = PathOf(record.server_name);
  const bool has_integrity = record.pack_method == kIntegrity;
  std::string source = file.source;
  if (has_integrity) {
    packing::CopyFileWithIntegrityTrailer(file.source, scratch, StopOnRequest);
    source = scratch;
  }
  const packing::RarEntryFacts facts = FactsOf(record.name, file.is_executable);
  bool is_packed = false;
  if (packer_ != nullptr) {
    PackJob job;
    job.place = file.path;
    job.source = source;
    job.name = record.name;
    job.is_executable = file.is_executable;
    job.length = record.length = tmw::GetFileLength(source);
    job.hash = record.hash = HashOfFile(source);
    job.most_bytes = packing::StoredSize(description_.format, facts, job.length);
    is_packed = PackShorter(job, target, has_integrity, scratch + "p", faults);
    if (!faults.IsEmpty()) return;
  }
  if (!is_packed) {
    packing::StoredRarWriter writer(target, description_.format, has_integrity);
    const packing::PackedFile packed = writer.AddFile(facts, source, on_piece);
    writer.Finish(false);
    record.length = packed.length;
    record.hash = tmw::GetHashString(packed.digest);
  }
  if (has_integrity) tmw::DeleteFile(scratch);
  record.server_length = tmw::GetFileLength(target);
  CheckSize(record.server_length, file.path, faults);
  if (record.pack_method == kText) CheckText(file, faults);
}

// The package is accepted only if extracting it gives the file's content.
void ReleaseBuilder::TakeReadyPackage(ProductFile& file, const std::string& scratch,
                                      Faults& faults) const {
  FileRecord& record = file.record;
  if (record.pack_method == kIntegrity) {
    faults.Add(file.path, texts::kReadyWithIntegrity);
    return;
  }
  if (!CheckReadable(file.ready_package, file.path, faults)) return;
  record.hash = HashOfFile(file.source);
  const std::string target = PathOf(record.server_name);
  CopyContent(file.ready_package, target);
  record.server_length = tmw::GetFileLength(target);
  CheckSize(record.server_length, file.path, faults);
  std::string reason;
  if (!tmw::UnrarOneFile(target, record.name, scratch, "", reason, tmw::kNoUnpackLimit,
                         tools::GoesOn)) {
    tools::ThrowIfStopped();
    faults.Add(file.path, texts::kPackageLacksFile, {file.ready_package, reason});
  } else if (HashOfFile(tmw::JoinPath(scratch, record.name)) != record.hash) {
    faults.Add(file.path, texts::kPackageHoldsOther, {file.ready_package});
  }
  RemoveTree(scratch);
  if (record.pack_method == kText) CheckText(file, faults);
}

// The updater compares installed files by the hash of their bytes, whatever the pack method.
void ReleaseBuilder::CheckText(const ProductFile& file, Faults& faults) const {
  if (UnicodeText(file.source).Hash() != file.record.hash) faults.Add(file.path, texts::kNotUtf16);
}

void ReleaseBuilder::AddScripts(const std::string& folder) {
  std::vector<Entry> entries;
  if (!folder.empty()) {
    for (const std::string& name :
         tmw::CollectFileNamesInFolder(folder, std::string(tmw::names::kScriptMask)))
      entries.emplace_back(tmw::JoinPath(folder, name), name);
  }
  manifest_.scripts = PackTogether(kScriptsPackage, entries);
}

void ReleaseBuilder::AddUpdater(const std::string& product_folder, Faults& faults) {
  std::set<std::string> taken;
  for (const std::string& name :
       {std::string(tmw::names::kManifestPackage), kScriptsPackage, kStructuresPackage,
        std::string(kListing), std::string(kAnnouncement), std::string(kServers),
        std::string(kFilesFolder)})
    taken.insert(tmw::LowerCase(name));
  for (const TableRecord& table : manifest_.tables)
    taken.insert(tmw::LowerCase(TablePackage(table.name)));
  for (const std::string& file : description_.updater_files) {
    const std::string source = tmw::JoinPath(product_folder, file);
    const std::string name = tmw::SplitFileName(file).FileName();
    if (!faults.Require(tmw::CheckFileName(name), file)) continue;
    if (!FitsAddresses(name)) {
      faults.Add(file, texts::kFitsNoAddress);
    } else if (!taken.insert(tmw::LowerCase(name)).second) {
      faults.Add(file, texts::kUpdaterNameTaken);
    } else if (!tmw::IsFileExists(source)) {
      faults.Add(file, texts::kUpdaterFileMissing);
    } else {
      tmw::CopyFile(source, PathOf(name));
      const std::int64_t length = tmw::GetFileLength(PathOf(name));
      CheckSize(length, file, faults);
      digest_.files.push_back({name, length, HashOfFile(PathOf(name))});
    }
  }
}

void ReleaseBuilder::Finish(Faults& faults) {
  if (is_packed_) CheckManifest(manifest_, faults);  // again, now that hashes and lengths are known
  if (!faults.IsEmpty()) return;
  const std::string file = tmw::JoinPath(work_, "manifest");
  WriteWholeFile(file, WriteManifest(manifest_));
  if (tmw::GetFileLength(file) > tmw::kMaxXmlLength) {
    faults.Add(texts::kInManifest, texts::kManifestTooLong);
    return;
  }
  const PackageRecord package =
      PackAlone(std::string(tmw::names::kManifestPackage),
                {file, manifest_.product + std::string(tmw::names::kManifestFile)}, faults);
  digest_.manifest = BoundManifest{package.length, package.hash};
  WriteWholeFile(PathOf(kListing), Listing());
}

std::string ReleaseBuilder::Listing() const {
  std::string text = tools::Fill(texts::kListingHead, {ReleaseFolder(manifest_.version)});
  const auto add = [&](const std::string& name, const std::string& what) {
    text += std::to_string(tmw::GetFileLength(PathOf(name))) + "\t" + name + "\t" + what + "\n";
  };
  add(std::string(tmw::names::kManifestPackage), texts::kListOfFiles);
  add(manifest_.scripts.server_name, texts::kUpdateScripts);
  add(manifest_.structures.server_name, texts::kStructures);
  for (const UpdaterFile& file : digest_.files)
    add(file.name, texts::kUpdatersFile);
  for (const TableRecord& table : manifest_.tables) {
    if (!table.is_user)
      add(TablePackage(table.name), tools::Fill(texts::kDictionary, {table.name}));
  }
  for (const FileRecord& record : manifest_.files)
    add(record.server_name,
        record.folder + " " + record.name + (record.is_com ? texts::kIsCom : ""));
  return text;
}

}  // namespace publish
