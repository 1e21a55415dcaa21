#include "engine/keeping.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "database/access_helpers.h"
#include "database/database_paths.h"
#include "engine/engine_texts.h"
#include "engine/installed_files.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/version.h"
#include "packages/hash_api.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/interruption_mark.h"
#include "product/kept_list.h"
#include "product/local_moment.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr std::size_t kLongestNameTaken = 200;  // bytes

// A place that the installation is going to change.
struct Concerned {
  std::string Path;
  std::string Source;  // of what comes; empty: not known yet
  bool IsRegistered = false;
  bool IsWrittenTo = false;  // by the product, in place
  bool IsRemovedOnly = false;
};

std::vector<Concerned> ConcernedPlaces(const KeepingRun& run) {
  std::vector<Concerned> places;
  for (const WuFileNode& file : run.Content.Files) {
    if (!file.NeedUpdate) continue;
    places.push_back(
        {InstalledPath(file), MakeComponentPlaces(run.Release, file.OrigName).Loaded, file.IsCom});
    if (auto companion = ScriptCompanion(file, run.Content))
      places.push_back({*std::move(companion), "", false, false, true});
  }
  if (run.IsClient) return places;
  places.push_back({InstalledReferencePath(), "", false, true});
  const std::string scripts = InstalledScriptsFolder();
  if (!IsFolderExists(scripts)) return places;
  for (const std::string& name :
       CollectFileNamesInFolder(run.Release.Scripts, std::string(names::kScriptMask))) {
    places.push_back({JoinPath(scripts, name), JoinPath(run.Release.Scripts, name)});
  }
  return places;
}

// Distinguishes a repair of the listed release from one that has been published anew.
std::string ContentOf(const Manifest& manifest) {
  std::string text;
  for (const WuFileNode& file : manifest.Files)
    text += InstalledPath(file) + "|" + file.Hash + "\n";
  return GetStringHash(text);
}

void KeepFile(const Concerned& concerned, KeptList& list) {
  const std::string name = SplitFileName(concerned.Path).FileName();
  KeptFile file;
  file.Path = concerned.Path;
  file.IsRegistered = concerned.IsRegistered;
  file.Name = std::to_string(list.Files.size() + 1);
  if (name.size() <= kLongestNameTaken) file.Name += " " + name;
  const std::string place = KeptPlace(list, file);
  DeleteFile(place);
  // A file of two names has one set of attributes, and removing one name of a read-only file clears
  // that attribute on some systems.
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const auto facts = files.Examine(concerned.Path);
  const bool may_share = !concerned.IsWrittenTo && facts && !facts.value.read_only;
  if (!may_share || !files.AddName(concerned.Path, place)) CopyFile(concerned.Path, place);
  file.Length = GetFileLength(place);
  file.Hash = GetFileHash(place);
  list.Files.push_back(std::move(file));
}

// The places of a list by the form in which they are compared: a release may have 30,000 files.
struct ListedPlaces {
  explicit ListedPlaces(const KeptList& list) {
    for (const KeptFile& file : list.Files)
      Files.insert(PathKey(file.Path));
    for (std::size_t at = 0; at < list.Added.size(); ++at)
      Added.emplace(PathKey(list.Added[at].Path), at);
    for (const std::string& folder : list.MadeFolders)
      Folders.insert(PathKey(folder));
  }

  std::unordered_set<std::string> Files;
  std::unordered_map<std::string, std::size_t> Added;  // the index in the list
  std::unordered_set<std::string> Folders;             // those that are there too
};

// Lists the folder, and before it the ones it lies in, unless they are there already.
void ListMissingFolders(const std::string& folder, KeptList& list, ListedPlaces& listed) {
  if (!listed.Folders.insert(PathKey(folder)).second || IsFolderExists(folder)) return;
  ListMissingFolders(SplitFileName(folder).Folder, list, listed);
  list.MadeFolders.push_back(folder);
}

// What is listed already stays: it is older than what lies in its place now.
void Keep(const Concerned& concerned, KeptList& list, ListedPlaces& listed) {
  const std::string key = PathKey(concerned.Path);
  if (listed.Files.contains(key)) return;
  const auto added = listed.Added.find(key);
  if (added == listed.Added.end() && IsFileExists(concerned.Path)) {
    KeepFile(concerned, list);
    listed.Files.insert(key);
    return;
  }
  if (concerned.IsRemovedOnly) return;
  const bool is_known = !concerned.Source.empty() && IsFileExists(concerned.Source);
  const AddedFile file = {concerned.Path, is_known ? GetFileHash(concerned.Source) : "",
                          concerned.IsRegistered};
  if (added == listed.Added.end()) {
    listed.Added.emplace(key, list.Added.size());
    list.Added.push_back(file);
    ListMissingFolders(SplitFileName(concerned.Path).Folder, list, listed);
  } else {
    list.Added[added->second] = file;
  }
}

// Returns false if the user has cancelled.
bool KeepAll(const KeepingRun& run, KeptList& list, UpdaterEvents& events) {
  const std::vector<Concerned> places = ConcernedPlaces(run);
  const std::string folder = JoinPath(KeptRoot(), list.Folder);
  CreateFolderIfAbsent(folder);
  events.OnSetMainAction(engine_texts::kKeeping);
  events.OnSetupProgress(static_cast<std::int32_t>(places.size()), false);
  ListedPlaces listed(list);
  std::int32_t count = 0;
  for (const Concerned& concerned : places) {
    events.OnSetSubAction(SplitFileName(concerned.Path).FileName());
    Keep(concerned, list, listed);
    events.OnSetProgress(++count);
    if (events.CancelPressed()) return false;
  }
  events.ClearProgress();
  static_cast<void>(ports::CurrentPorts().files->FlushFolder(folder));
  static_cast<void>(ports::CurrentPorts().files->FlushFolder(KeptRoot()));
  LogEvent("kept", {{"files", list.Files.size()}, {"added", list.Added.size()}});
  return true;
}

bool KeepAnew(const KeepingRun& run, const std::optional<KeptList>& old, UpdaterEvents& events) {
  KeptList list;
  list.Folder = old && old->Folder == "1" ? "2" : "1";
  list.Date = LocalMomentText();
  list.OldVersion = run.OldVersion;
  list.NewVersion = run.NewVersion;
  list.Content = ContentOf(run.Content);
  list.Releases = {run.Content.VersionID};
  const std::string folder = JoinPath(KeptRoot(), list.Folder);
  DeleteFolderTree(folder);
  if (!KeepAll(run, list, events)) {
    DeleteFolderTree(folder);
    return false;
  }
  WriteKeptList(list);
  DeleteFolderTree(JoinPath(KeptRoot(), list.Folder == "1" ? "2" : "1"));
  return true;
}

bool AddToKept(const KeepingRun& run, KeptList list, UpdaterEvents& events) {
  if (!KeepAll(run, list, events)) return false;
  list.NewVersion = run.NewVersion;
  list.Content = ContentOf(run.Content);
  std::vector<std::string>& releases = list.Releases;
  if (std::find(releases.begin(), releases.end(), run.Content.VersionID) == releases.end())
    releases.push_back(run.Content.VersionID);
  WriteKeptList(list);
  return true;
}

bool ForgetKept(const char* reason) {
  LogEvent("not_kept", {{"reason", reason}});
  RemoveKept();
  return true;
}

bool KeepWhatIsNeeded(const KeepingRun& run, UpdaterEvents& events) {
  std::string reason;
  std::optional<KeptList> list = TryReadKeptList(reason);
  const bool is_same_content = list && list->Content == ContentOf(run.Content);
  if (const auto begun = InterruptedRelease(run.TempDir)) {
    if (!list) return ForgetKept("the installation was begun without");
    if (list->IsUnderRepair) return is_same_content || ForgetKept("a repair was interrupted");
    const std::vector<std::string>& releases = list->Releases;
    if (std::find(releases.begin(), releases.end(), *begun) == releases.end())
      return ForgetKept("another release was interrupted");
    return AddToKept(run, *std::move(list), events);
  }
  if (CompareVersionStrings(run.OldVersion, run.NewVersion, 1) != 0 || (list && !is_same_content))
    return KeepAnew(run, list, events);
  if (list && !list->IsUnderRepair) {
    list->IsUnderRepair = true;
    WriteKeptList(*list);
  }
  return true;
}

bool GoOnWithout(const std::string& reason) {
  if (!AskQuestion(box_titles::kProductUpdate, engine_texts::NotKept(reason))) return false;
  return ForgetKept("keeping failed");
}

}  // namespace

bool KeepPrevious(const KeepingRun& run, UpdaterEvents& events) {
  std::string reason;
  try {
    return KeepWhatIsNeeded(run, events);
  } catch (const ProgramError& error) {
    reason = error.Description;
  }
  events.ClearProgress();
  return GoOnWithout(reason);
}

void KeepBackup(const std::string& version_id, const BooksBefore& books) {
  std::string reason;
  std::optional<KeptList> list = TryReadKeptList(reason);
  if (!list || list->IsUnderRepair || list->Releases.back() != version_id) return;
  const std::string file = database_utils::GetUserDBFileName();
  const std::string hash = GetFileHash(file);
  if (const auto& first = list->Backup) {
    const auto version = ParseDbVersion(first->Version);
    const bool has_new_version =
        version && *version < books.TargetVersion && books.Version >= books.TargetVersion;
    if (hash == first->NewHash || has_new_version) return;
  }
  list->Backup = KeptBackup{books.Archive, GetFileLength(file), hash, DbVersionText(books.Version),
                            books.NewHash};
  WriteKeptList(*list);
}

}  // namespace tmw
