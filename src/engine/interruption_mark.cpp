#include "engine/interruption_mark.h"

#include <vector>

#include "engine/engine_texts.h"
#include "foundation/api_errors.h"
#include "foundation/file_utils.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kMark = "_Installing.txt";

std::vector<std::string> Marks(const std::string& temp_dir) {
  std::vector<std::string> marks;
  const auto entries = ports::CurrentPorts().files->List(temp_dir);
  if (!entries) return marks;
  for (const ports::FolderEntry& entry : entries.value) {
    if (entry.kind != ports::FileKind::kFolder) continue;
    const std::string mark = JoinPath(JoinPath(temp_dir, entry.name), kMark);
    if (IsFileExists(mark)) marks.push_back(mark);
  }
  return marks;
}

}  // namespace

void MarkInstallation(const ReleasePaths& release, const std::string& version_id) {
  const std::string path = JoinPath(release.Folder, kMark);
  if (IsFileExists(path)) return;
  ports::Status status = WriteFileBytes(path, version_id);
  if (status) status = ports::CurrentPorts().files->FlushFolder(release.Folder);
  if (!status) RaiseApiErrorWithMessage(engine_texts::MarkNotWritten(path), status.code);
}

void UnmarkInstallations(const std::string& temp_dir) {
  for (const std::string& mark : Marks(temp_dir))
    DeleteFile(mark);
}

bool IsInstallationInterrupted(const std::string& temp_dir) {
  return !Marks(temp_dir).empty();
}

}  // namespace tmw
