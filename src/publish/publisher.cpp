#include "publish/publisher.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "ports/file_lock.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/announcement.h"
#include "publish/description.h"
#include "publish/digest.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "publish/image_check.h"
#include "publish/product_files.h"
#include "publish/release_builder.h"
#include "publish/release_names.h"
#include "publish/release_source.h"
#include "publish/scripts.h"
#include "publish/server_lines.h"
#include "publish/succession.h"
#include "publish/tables.h"
#include "tools/fill.h"
#include "tools/tools_texts.h"

namespace publish {
namespace {

void Rename(const std::string& from, const std::string& to) {
  const ports::Status renamed = ports::CurrentPorts().files->Rename(from, to);
  if (!renamed) {
    tmw::RaiseApiErrorWithMessage(
        tools::Fill(texts::kCannotRename, {tmw::Quoted(from), tmw::Quoted(to)}), renamed.code);
  }
}

// The temporary folder in which a release is built, and its move into place.
class Building {
 public:
  Building(const std::string& root, const std::string& version)
      : root_(root), place_(tmw::JoinPath(root, ReleaseFolder(version))), folder_(place_ + ".new") {
    tmw::CreateFolderIfAbsent(folder_);
    Lock();
    TakeExchangeBack();
    for (const std::string& leftover : {Release(), Work(), Old()})
      RemoveTree(leftover);
    tmw::CreateFolderIfAbsent(Release());
    tmw::CreateFolderIfAbsent(Work());
  }
  Building(const Building&) = delete;
  Building& operator=(const Building&) = delete;
  ~Building() {
    try {
      TakeExchangeBack();
      lock_ = nullptr;
      RemoveTree(folder_);
    } catch (const std::exception&) {
      // The next run removes it.
    }
  }

  const std::string& Place() const { return place_; }
  std::string Release() const { return tmw::JoinPath(folder_, "release"); }
  std::string Work() const { return tmw::JoinPath(folder_, "work"); }

  // Renames the release to its final name.
  void MoveIntoPlace() const {
    const ports::Status flushed = ports::CurrentPorts().files->FlushTree(Release());
    if (!flushed) {
      tmw::RaiseApiErrorWithMessage(
          tools::Fill(tools::texts::kCannotWrite, {tmw::Quoted(Release())}), flushed.code);
    }
    if (tmw::IsFolderExists(place_)) Rename(place_, Old());
    Rename(Release(), place_);
    static_cast<void>(ports::CurrentPorts().files->FlushFolder(root_));
  }

 private:
  std::string Old() const { return tmw::JoinPath(folder_, "old"); }

  // Restores the old release of this version if the new one has not taken its place.
  void TakeExchangeBack() const {
    if (tmw::IsFolderExists(Old()) && !tmw::IsFolderExists(place_)) Rename(Old(), place_);
  }

  void Lock() { lock_ = LockFile(tmw::JoinPath(folder_, "lock"), texts::kAnotherRun, folder_); }

  std::string root_;
  std::string place_;
  std::string folder_;
  std::unique_ptr<ports::FileLock> lock_;
};

std::string ServerList(const Description& description) {
  std::string text;
  for (const Located& server : description.servers)
    text += server.text + "\r\n";
  return text;
}

void RequireInputs(const PublishOptions& options) {
  if (!tmw::IsFolderExists(options.product)) Raise(texts::kNoFolder, options.product);
  if (!options.scripts.empty() && !tmw::IsFolderExists(options.scripts))
    Raise(texts::kNoFolder, options.scripts);
  for (const std::string& file : {options.description, options.database}) {
    if (!tmw::IsFileExists(file)) Raise(texts::kNoFile, file);
  }
  for (const std::string& file : options.tries) {
    if (!tmw::IsFileExists(file)) Raise(texts::kNoFile, file);
  }
}

// What the headers of programs and libraries say against the description.
void CheckImages(const std::string& product, const Description& description,
                 const std::vector<ProductFile>& files, Faults& faults) {
  if (std::any_of(files.begin(), files.end(),
                  [](const ProductFile& file) { return file.record.is_com; })) {
    std::vector<ReleaseImage> images;
    for (const ProductFile& file : files) {
      const std::string marked_by = file.record.is_com ? file.com_place : "";
      if (file.record.is_com || MayBeImage(file.record.name))
        images.push_back({file.path, file.record.name, marked_by, ReadImage(file.source)});
    }
    CheckRegistered(images, faults);
  }
  const std::string program =
      description.updater_files.empty() ? "" : description.updater_files.front();
  CheckNeededUpdater(description.needed_updater, program,
                     ReadImage(tmw::JoinPath(product, program)), description.updater_place, faults);
}

PublishedRelease Summary(const Manifest& manifest, std::size_t scripts) {
  PublishedRelease made;
  made.version = manifest.version;
  made.files = manifest.files.size();
  made.user_tables = static_cast<std::size_t>(
      std::count_if(manifest.tables.begin(), manifest.tables.end(),
                    [](const TableRecord& table) { return table.is_user; }));
  made.dictionaries = manifest.tables.size() - made.user_tables;
  made.scripts = scripts;
  made.volume = WholeVolume(manifest);
  return made;
}

}  // namespace

PublishedRelease Publish(const PublishOptions& options, tools::Progress& progress, Faults& faults) {
  RequireInputs(options);
  const std::string root = tmw::GetAbsoluteFileName(options.output);
  if (IsWithin(root, tmw::GetAbsoluteFileName(options.product)))
    faults.Add(root, texts::kOutputInProduct);
  Description description;
  if (!ReadDescription(options.description, description, faults)) return {};
  std::vector<ProductFile> files = CollectProductFiles(options.product, description, faults);
  CheckImages(options.product, description, files, faults);
  std::vector<UpdateScript> scripts;
  if (!options.scripts.empty()) scripts = ReadScripts(options.scripts, faults);
  CheckUpdater(description.needed_updater, description.updater_files, description.updater_place,
               faults);
  for (const Located& server : description.servers)
    CheckServer(server.text, server.place, faults);
  CheckChain(scripts, description.oldest_database, description.version, faults);
  ReferenceTables reference(options.database);
  std::vector<TableRecord> tables = reference.Choose(description, faults);
  Manifest lists;
  lists.tables = tables;
  for (const ProductFile& file : files)
    lists.files.push_back(file.record);
  CheckSuccession(root, lists, description, faults);
  const std::string place = tmw::JoinPath(root, ReleaseFolder(description.version));
  if (!options.may_replace && tmw::IsFolderExists(place) && IsAnnounced(root, description.version))
    faults.Add(place, texts::kPublishedAlready);
  if (!options.may_downgrade)
    CheckNotOlder(root, description.version, description.version_place, faults);
  if (options.is_announced) CheckMayAnnounce(root, options.signer, faults);
  // Without a version there is no folder to build in.
  if (!IsVersion(description.version, 4)) return {};

  const Building building(root, description.version);
  std::unique_ptr<Packer> packer;
  if (options.packer) packer = std::make_unique<Packer>(*options.packer, description.format);
  ReleaseBuilder builder(description, building.Release(), building.Work(), progress, packer.get());
  builder.AddTables(reference, std::move(tables), faults);
  builder.AddScripts(options.scripts);
  // Before the files, whose packing takes longest.
  const auto source = OpenReleaseSource(building.Release(), building.Work());
  std::vector<TriedDatabase> tried = TryDatabases(options.tries, *source, "", builder.Content(),
                                                  building.Work(), progress, faults);
  builder.AddFiles(std::move(files), faults);
  WarnOfCompanions(builder.Content(), faults);
  builder.AddUpdater(options.product, faults);
  const std::string server_list = Encoded(ServerList(description), texts::kInServers, faults);
  builder.Finish(faults);
  const std::string digest = Encoded(WriteDigest(builder.Announcement()), texts::kInDigest, faults);
  PublishedRelease made = Summary(builder.Content(), scripts.size());
  made.tried = std::move(tried);
  if (!faults.IsEmpty()) return made;

  KeepForAnnouncing(building.Release(), digest, server_list);
  building.MoveIntoPlace();
  made.folder = building.Place();
  if (options.is_announced) {
    const AnnouncingLock lock(root);
    if (!options.may_downgrade)
      CheckNotOlder(root, description.version, description.version_place, faults);
    made.announcement = Announce(root, description.version, options.signer, faults);
  }
  return made;
}

}  // namespace publish
