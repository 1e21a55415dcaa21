#include "jet/store/new_file.h"

#include <utility>

#include "foundation/file_names.h"
#include "foundation/patience.h"
#include "jet/errors.h"
#include "jet/file/database_writer.h"
#include "jet/store/container.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jet {
namespace {

constexpr const char* kEnding = ".writing";
constexpr int kRenameAttempts = 20;

ports::FileSystem* Files() {
  return ports::CurrentPorts().files;
}

// What a process that died has left; one that lives holds the lock.
void RemoveLeftover(const std::string& path) {
  const auto facts = Files()->Examine(path);
  if (!facts || facts.value.kind == ports::FileKind::kNone) return;
  const auto lock = LockFile(path, true);
  static_cast<void>(Files()->RemoveFile(path));
}

}  // namespace

NewFile::NewFile(const std::string& target, ports::PageFileMode mode)
    : target_(target), path_(target + kEnding) {
  RemoveLeftover(path_);
  auto opened = ports::CurrentPorts().page_files->Open(path_, mode);
  if (!opened) Fail(kNoPermission, path_);
  pages_ = std::move(opened.value);
  try {
    lock_ = LockFile(path_, true);
    file::RemoveScratch(path_);
  } catch (const ports::DatabaseError&) {
    static_cast<void>(Files()->RemoveFile(path_));
    throw;
  }
}

NewFile::~NewFile() {
  if (has_name_) return;
  static_cast<void>(Close());
  static_cast<void>(Files()->RemoveFile(path_));
}

ports::Status NewFile::Close() {
  if (is_closed_) return ports::Status::Success();
  is_closed_ = true;
  return pages_->Close();
}

void NewFile::TakeRightsOf(const std::string& path) {
  if (!Files()->CopyRights(path, path_)) Fail(kDiskError);
}

ports::Status NewFile::Replace(bool patiently) {
  if (const ports::Status closed = Close(); !closed) return closed;
  const ports::Status renamed = tmw::TryPatiently(
      patiently ? kRenameAttempts : 1, [this] { return Files()->Rename(path_, target_); });
  has_name_ = renamed.ok;
  return renamed;
}

void NewFile::Appear() {
  if (!Close()) Fail(kDiskError);
  const ports::Status renamed = Files()->RenameToFree(path_, target_);
  has_name_ = renamed.ok;
  if (renamed) return;
  const auto facts = Files()->Examine(target_);
  if (facts && facts.value.kind != ports::FileKind::kNone) Fail(kDatabaseExists, target_);
  Fail(kDiskError);
}

ports::Status NewFile::FlushName() {
  const std::string folder = tmw::SplitFileName(target_).Folder;
  return Files()->FlushFolder(folder.empty() ? "." : folder);
}

}  // namespace jet
