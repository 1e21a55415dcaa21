#include "engine/interruption_mark.h"

#include <vector>

#include "foundation/api_errors.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "platform/file_system.h"
#include "platform/ports.h"

namespace tmw {
namespace {

platform::Status WriteDurably(platform::FileSystem& files, const std::string& path,
                              const std::string& text) {
  const auto opened = files.Open(path, platform::FileMode::kWriteNew);
  if (!opened) return platform::Status::Failure(opened.code);
  if (const auto written = opened.value->Write(text.data(), text.size()); !written) return written;
  if (const auto flushed = opened.value->Flush(); !flushed) return flushed;
  return opened.value->Close();
}

std::vector<std::string> Marks(const std::string& temp_dir) {
  std::vector<std::string> marks;
  const auto entries = platform::CurrentPorts().files->List(temp_dir);
  if (!entries) return marks;
  for (const platform::FolderEntry& entry : entries.value) {
    if (entry.kind != platform::FileKind::kFolder) continue;
    const std::string mark = InterruptionMarkPath(MakeReleasePaths(temp_dir, entry.name));
    if (IsFileExists(mark)) marks.push_back(mark);
  }
  return marks;
}

}  // namespace

void MarkInstallation(const ReleasePaths& release, const std::string& version_id) {
  platform::FileSystem& files = *platform::CurrentPorts().files;
  const std::string path = InterruptionMarkPath(release);
  if (IsFileExists(path)) return;
  platform::Status status = WriteDurably(files, path, version_id);
  if (status) status = files.FlushFolder(release.Folder);
  if (!status) {
    RaiseApiErrorWithMessage("Ошибка записи в файл " + Quoted(path) + ":", status.code);
  }
}

void UnmarkInstallations(const std::string& temp_dir) {
  for (const std::string& mark : Marks(temp_dir))
    DeleteFile(mark);
}

bool IsInstallationInterrupted(const std::string& temp_dir) {
  return !Marks(temp_dir).empty();
}

}  // namespace tmw
