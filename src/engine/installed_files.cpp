#include "engine/installed_files.h"

#include <algorithm>

#include "foundation/contract_names.h"
#include "foundation/encodings.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "ports/companion_library.h"
#include "ports/ports.h"
#include "ports/processes.h"

namespace tmw {
namespace {

constexpr const char* kScriptEnding = ".tms";
constexpr const char* kScriptCompanionEnding = ".xml";

}  // namespace

std::string InstalledPath(const WuFileNode& file) {
  return JoinPath(file.Folder, file.OrigName);
}

bool IsUpdatersOwnFile(const WuFileNode& file) {
  const ports::Ports& ports = ports::CurrentPorts();
  return EqualIgnoringCase(file.OrigName, std::string(names::kUpdaterProgram) +
                                              ports.processes->ProgramEnding()) ||
         EqualIgnoringCase(file.OrigName, SplitFileName(ports.companion->Path()).FileName());
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
