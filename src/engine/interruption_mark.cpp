#include "engine/interruption_mark.h"

#include <vector>

#include "engine/engine_texts.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/product_settings.h"

namespace tmw {
namespace {

// A mark with this content stays as it is.
void WriteMark(const std::string& folder, std::string_view name, const std::string& version_id) {
  const std::string path = JoinPath(folder, name);
  if (IsFileExists(path) && ReadFileBytes(path) == version_id) return;
  ports::Status status = WriteFileBytes(path, version_id);
  if (status) status = ports::CurrentPorts().files->FlushFolder(folder);
  if (!status) RaiseApiErrorWithMessage(engine_texts::MarkNotWritten(path), status.code);
}

std::vector<std::string> Marks(const std::string& temp_dir) {
  std::vector<std::string> marks;
  const auto add = [&marks](const std::string& folder, std::string_view name) {
    std::string mark = JoinPath(folder, name);
    if (IsFileExists(mark)) marks.push_back(std::move(mark));
  };
  const auto entries = ports::CurrentPorts().files->List(temp_dir);
  if (entries) {
    for (const ports::FolderEntry& entry : entries.value) {
      if (entry.kind == ports::FileKind::kFolder)
        add(JoinPath(temp_dir, entry.name), names::kReleaseMark);
    }
  }
  add(GetProductRootPath(), names::kRootMark);
  return marks;
}

}  // namespace

void MarkInstallation(const ReleasePaths& release, const std::string& version_id) {
  const std::string root = GetProductRootPath();
  CreateFolderIfAbsent(root);
  WriteMark(root, names::kRootMark, version_id);
  WriteMark(release.Folder, names::kReleaseMark, version_id);
}

void UnmarkInstallations(const std::string& temp_dir) {
  for (const std::string& mark : Marks(temp_dir))
    DeleteFile(mark);
}

bool IsInstallationInterrupted(const std::string& temp_dir) {
  return !Marks(temp_dir).empty();
}

}  // namespace tmw
