#include "engine/interruption_mark.h"

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

}  // namespace

void MarkInstallation(const ReleasePaths& release, const std::string& version_id) {
  platform::FileSystem& files = *platform::CurrentPorts().files;
  const std::string path = InterruptionMarkPath(release);
  platform::Status status = WriteDurably(files, path, version_id);
  if (status) status = files.FlushFolder(release.Folder);
  if (!status) {
    RaiseApiErrorWithMessage("Ошибка записи в файл " + Quoted(path) + ":", status.code);
  }
}

void UnmarkInstallation(const ReleasePaths& release) {
  DeleteFile(InterruptionMarkPath(release));
}

bool IsInstallationInterrupted(const ReleasePaths& release, const std::string& version_id) {
  const std::string path = InterruptionMarkPath(release);
  return IsFileExists(path) && ReadFileBytes(path) == version_id;
}

}  // namespace tmw
