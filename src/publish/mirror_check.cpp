#include "publish/mirror_check.h"

#include <algorithm>
#include <numeric>
#include <random>

#include "foundation/file_names.h"
#include "packages/companion_functions.h"
#include "publish/component_check.h"
#include "publish/file_tree.h"
#include "publish/release_names.h"
#include "publish/release_source.h"
#include "publish/server_lines.h"
#include "publish/unpack_folders.h"

namespace publish {
namespace {

// Numbers of components: files, then tables. User tables have nothing of their own on a server.
std::vector<std::size_t> Choose(const Manifest& manifest, std::optional<std::size_t> sample) {
  std::vector<std::size_t> numbers(manifest.files.size());
  std::iota(numbers.begin(), numbers.end(), 0);
  for (std::size_t i = 0; i < manifest.tables.size(); ++i) {
    if (!manifest.tables[i].is_user) numbers.push_back(manifest.files.size() + i);
  }
  if (!sample || *sample >= numbers.size()) return numbers;
  std::vector<std::size_t> chosen;
  std::sample(numbers.begin(), numbers.end(), std::back_inserter(chosen), *sample,
              std::mt19937(std::random_device()()));
  return chosen;
}

void CheckMirror(Digest digest, std::optional<std::size_t> sample, const std::string& scratch,
                 tools::Progress& progress, MirrorState& state) {
  const auto source = OpenReleaseSource(state.server, scratch);
  ComponentCheck check(*source, ReleaseFolder(digest.version) + "/");
  Manifest manifest;
  if (!check.ReadManifest(digest, scratch, manifest, state.faults)) {
    if (!source->IsReached()) state.unreached = state.faults.All().back().text;
    return;
  }
  for (const UpdaterFile& file : digest.files)
    check.CheckUpdaterFile(file, state.faults);
  for (const PackageRecord& package : {manifest.scripts, manifest.structures})
    check.CheckPackage(package, tmw::JoinPath(scratch, package.server_name + ".d"), state.faults);
  const std::vector<std::size_t> chosen = Choose(manifest, sample);
  state.components = Choose(manifest, std::nullopt).size();
  progress.Begin(state.server, chosen.size());
  UnpackFolders folders(scratch);
  for (const std::size_t number : chosen) {
    const std::string folder = folders.Take();
    if (number < manifest.files.size()) {
      check.CheckFile(manifest.files[number], folder, state.faults);
    } else {
      check.CheckDictionary(manifest.tables[number - manifest.files.size()], folder, state.faults);
    }
    folders.Return(folder);
    ++state.checked;
    progress.Advance();
  }
}

}  // namespace

std::vector<MirrorState> CheckMirrors(const Digest& digest, const std::string& server_list,
                                      std::optional<std::size_t> sample,
                                      tools::Progress& progress) {
  tmw::CompanionFunctions();
  std::vector<MirrorState> states;
  for (const std::string& server : ServersOf(server_list)) {
    const ScratchFolder scratch;
    states.emplace_back().server = server;
    CheckMirror(digest, sample, scratch.Path(), progress, states.back());
  }
  return states;
}

}  // namespace publish
