#pragma once

#include <memory>
#include <string>

#include "jet/file/database_reader.h"
#include "ports/file_lock.h"
#include "ports/page_file.h"

namespace jet {

// What an opened file is wanted for.
enum class Purpose {
  kReading,
  kRewriting,  // refuses, by name, a file with objects that a rewritten one would lack
};

// The file of an open database behind the lock that its openers respect. The file is never changed
// in place; whoever changes the database exchanges it for another one of the same name, so the lock
// counts only while the name stands for the file that was locked.
class Container {
 public:
  // Fails as DatabaseEngine::OpenDatabase says.
  Container(const std::string& path, bool exclusive, Purpose purpose);

  file::DatabaseReader& Reader() { return *reader_; }
  const std::string& Path() const { return path_; }  // of the file itself, links followed

  // A file that was just made, with the lock that its maker has on it.
  Container(std::string path, std::unique_ptr<ports::FileLock> lock);

  // Keeps others out from now on. 3027 when the file may not be written, 3045 when somebody shares
  // it, 3218 when somebody exchanged it meanwhile: what was read of it is out of date.
  void LockForChange();

  // 3218 when the name does not stand for this file any more.
  void RequireName();

  // Lets the file and its lock go, and opens it again. 3218 when it is not the same file any more.
  void Release();
  void Reopen();

 private:
  void OpenPages();
  bool IsStillNamed();

  std::string path_;
  bool is_exclusive_;
  bool may_change_ = false;
  std::unique_ptr<ports::FileLock> lock_;
  std::shared_ptr<ports::PageFile> file_;
  ports::FileIdentity identity_;
  std::unique_ptr<file::DatabaseReader> reader_;
};

// A new file with an empty database in it. 3204 when something of that name exists.
std::unique_ptr<Container> CreateContainer(const std::string& path);

// 3204 when anything bears the name.
void RefuseTaken(const std::string& path);

// Locks an existing file or fails with 3024, 3045, 3051 or 3356.
std::unique_ptr<ports::FileLock> LockFile(const std::string& path, bool exclusive);

}  // namespace jet
