#pragma once

#include <memory>
#include <string>

#include "jet/store/sqlite.h"
#include "ports/file_lock.h"

namespace jet {

// A database's file with the lock that its openers respect.
struct StorageFile {
  std::unique_ptr<ports::FileLock> lock;
  std::shared_ptr<Connection> connection;
};

// Fails as DatabaseEngine::OpenDatabase says.
StorageFile OpenStorage(const std::string& path, bool exclusive, bool read_only);

// A new file with an empty catalogue, locked exclusively. 3204 when the file exists.
StorageFile CreateStorage(const std::string& path);

// What may be left of a file that is given up; nothing there is fine.
void RemoveStorage(const std::string& path) noexcept;

}  // namespace jet
