#include "engine/installed_files.h"

#include <algorithm>

#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "product/own_files.h"

namespace tmw {
namespace {

constexpr const char* kScriptEnding = ".tms";
constexpr const char* kScriptCompanionEnding = ".xml";

}  // namespace

std::string InstalledPath(const WuFileNode& file) {
  return JoinPath(file.Folder, file.OrigName);
}

bool IsUpdatersOwnFile(const WuFileNode& file) {
  return IsOwnFileName(file.OrigName);
}

std::optional<std::string> ScriptCompanion(const WuFileNode& file, const Manifest& manifest) {
  if (!LowerCase(file.OrigName).ends_with(kScriptEnding)) return std::nullopt;
  std::string companion =
      JoinPath(file.Folder, SplitFileName(file.OrigName).Name + kScriptCompanionEnding);
  const auto is_it = [&](const WuFileNode& other) {
    return EqualIgnoringCase(InstalledPath(other), companion);
  };
  if (std::any_of(manifest.Files.begin(), manifest.Files.end(), is_it)) return std::nullopt;
  return companion;
}

}  // namespace tmw
