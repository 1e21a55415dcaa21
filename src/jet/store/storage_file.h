#pragma once

#include <memory>
#include <string>

#include "jet/store/sqlite.h"
#include "ports/file_lock.h"

namespace jet {

// An open database file and the lock on it.
struct StorageFile {
  std::unique_ptr<ports::FileLock> lock;
  std::shared_ptr<Connection> connection;
};

// Errors are those of DatabaseEngine::OpenDatabase.
StorageFile OpenStorage(const std::string& path, bool exclusive, bool read_only);

// A new file with an empty catalogue, locked exclusively. Fails with 3204 if the file exists.
StorageFile CreateStorage(const std::string& path);

// Removes what exists of an abandoned file.
void RemoveStorage(const std::string& path) noexcept;

}  // namespace jet
