#include "jet/store/storage_file.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "jet/errors.h"
#include "jet/store/catalogue.h"
#include "ports/ports.h"

namespace jet {
namespace {

std::unique_ptr<ports::FileLock> LockFile(const std::string& path, bool exclusive) {
  auto locked = ports::CurrentPorts().file_locks->TryLock(
      path, exclusive ? ports::FileLockMode::kExclusive : ports::FileLockMode::kShared);
  if (!locked) Fail(kNoPermission, path);
  switch (locked.value.verdict) {
    case ports::FileLockVerdict::kLocked:
      return std::move(locked.value.lock);
    case ports::FileLockVerdict::kHeldShared:
      Fail(kFileInUse, path);
    case ports::FileLockVerdict::kHeldExclusively:
      Fail(kOpenedExclusively, path);
    case ports::FileLockVerdict::kMissing:
      Fail(kFileNotFound, path);
    case ports::FileLockVerdict::kForbidden:
      break;
  }
  Fail(kNoPermission, path);
}

std::filesystem::path ToPath(const std::string& utf8) {
  return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

}  // namespace

StorageFile OpenStorage(const std::string& path, bool exclusive, bool read_only) {
  StorageFile file;
  file.lock = LockFile(path, exclusive);
  file.connection = std::make_shared<Connection>();
  try {
    file.connection->Open(path, Connection::Mode::kExisting, exclusive);
    if (!HasCatalogue(*file.connection)) Fail(kUnknownFormat, path);
    if (read_only) file.connection->Run("PRAGMA query_only = ON");
  } catch (...) {
    // The lock is freed last: freeing it while the storage is open could free SQLite's own locks.
    file.connection->Close();
    throw;
  }
  return file;
}

StorageFile CreateStorage(const std::string& path) {
  std::error_code failure;
  const auto status = std::filesystem::symlink_status(ToPath(path), failure);
  if (std::filesystem::exists(status)) Fail(kDatabaseExists, path);
  StorageFile file;
  file.connection = std::make_shared<Connection>();
  try {
    file.connection->Open(path, Connection::Mode::kCreate, true);
    file.lock = LockFile(path, true);
    CreateCatalogue(*file.connection);
  } catch (...) {
    file.connection->Close();
    RemoveStorage(path);
    throw;
  }
  return file;
}

void RemoveStorage(const std::string& path) noexcept {
  std::error_code ignored;
  std::filesystem::remove(ToPath(path), ignored);
  std::filesystem::remove(ToPath(path + "-journal"), ignored);
}

}  // namespace jet
