#include "publish/pruning.h"

#include <algorithm>
#include <string_view>

#include "foundation/api_errors.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/announcement.h"
#include "publish/digest.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"
#include "tools/fill.h"

namespace publish {
namespace {

constexpr std::string_view kPrunedEnding = ".pruned";

std::vector<std::string> NamesIn(const std::string& root) {
  const auto entries = ports::CurrentPorts().files->List(root);
  if (!entries) {
    tmw::RaiseApiErrorWithMessage(tools::Fill(texts::kCannotReadFolder, {tmw::Quoted(root)}),
                                  entries.code);
  }
  std::vector<std::string> names;
  for (const ports::FolderEntry& entry : entries.value) {
    if (entry.kind == ports::FileKind::kFolder && entry.name.starts_with(ReleaseFolder("")))
      names.push_back(entry.name);
  }
  return names;
}

std::int64_t BytesIn(const std::string& folder) {
  std::int64_t sum = 0;
  for (const TreeEntry& entry : ListTree(folder)) {
    if (entry.fault.empty()) sum += tmw::GetFileLength(tmw::JoinPath(folder, entry.path));
  }
  return sum;
}

// What a link leads to stays.
void Remove(const std::string& folder) {
  if (!ports::CurrentPorts().files->RemoveFile(folder)) RemoveTree(folder);
}

void Remove(const std::string& root, const std::string& version) {
  const std::string place = tmw::JoinPath(root, ReleaseFolder(version));
  const std::string doomed = place + std::string(kPrunedEnding);
  const ports::Status renamed = ports::CurrentPorts().files->Rename(place, doomed);
  if (!renamed) {
    tmw::RaiseApiErrorWithMessage(
        tools::Fill(texts::kCannotRename, {tmw::Quoted(place), tmw::Quoted(doomed)}), renamed.code);
  }
  Remove(doomed);
}

}  // namespace

std::vector<PrunedRelease> Prune(const std::string& root, std::size_t keep, bool is_dry,
                                 Faults& faults) {
  const std::string announced = AnnouncedVersion(root, faults);
  if (!faults.IsEmpty()) return {};
  const std::string prefix = ReleaseFolder("");
  std::vector<std::string> versions;  // the announced one and those before it, newest first
  for (const std::string& name : NamesIn(root)) {
    const std::string version = name.substr(prefix.size());
    if (name.ends_with(kPrunedEnding) && !is_dry) Remove(tmw::JoinPath(root, name));
    if (IsVersion(version, 4) && !IsOlder(announced, version)) versions.push_back(version);
  }
  std::sort(versions.begin(), versions.end(),
            [](const std::string& a, const std::string& b) { return IsOlder(b, a); });
  if (versions.empty() || IsOlder(versions.front(), announced)) {
    faults.Add(root, texts::kAnnouncedMissing, {announced});
    return {};
  }
  std::vector<PrunedRelease> pruned;
  for (std::size_t i = keep; i < versions.size(); ++i) {
    if (!IsOlder(versions[i], announced)) continue;  // the announced one, written otherwise
    pruned.push_back({versions[i], BytesIn(tmw::JoinPath(root, ReleaseFolder(versions[i])))});
    if (!is_dry) Remove(root, versions[i]);
  }
  return pruned;
}

}  // namespace publish
