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

ports::Status WriteDurably(ports::FileSystem& files, const std::string& path,
                           const std::string& text) {
  const auto opened = files.Open(path, ports::FileMode::kWriteNew);
  if (!opened) return ports::Status::Failure(opened.code);
  if (const auto written = opened.value->Write(text.data(), text.size()); !written) return written;
  if (const auto flushed = opened.value->Flush(); !flushed) return flushed;
  return opened.value->Close();
}

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
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const std::string path = JoinPath(release.Folder, kMark);
  if (IsFileExists(path)) return;
  ports::Status status = WriteDurably(files, path, version_id);
  if (status) status = files.FlushFolder(release.Folder);
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
