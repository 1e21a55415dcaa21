#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ports/file_lock.h"
#include "ports/page_file.h"

namespace jet {

// A file on its way to its name. It is written beside its target, under a name of its own and
// locked, and goes away unless it is given the target's name.
class NewFile {
 public:
  // 3045 when somebody else is writing to the same target, 3051 when nothing can be made there.
  explicit NewFile(const std::string& target,
                   ports::PageFileMode mode = ports::PageFileMode::kCreateNew);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  const std::shared_ptr<ports::PageFile>& Pages() const { return pages_; }
  const std::string& Path() const { return path_; }

  // Gives the finished file the owner and rights of another one.
  void TakeRightsOf(const std::string& path);

  // Gives the finished file its name, in place of the file that bears it; a failure leaves both as
  // they are. With patience, for another program may hold either for a moment.
  ports::Status Replace(bool patiently);
  // Likewise where nothing bears the name; 3204 when something does.
  void Appear();

  // Brings the new name to the disk.
  ports::Status FlushName();

  // The lock on the file, whatever its name.
  std::unique_ptr<ports::FileLock> TakeLock() { return std::move(lock_); }

 private:
  ports::Status Close();

  std::string target_;
  std::string path_;
  std::shared_ptr<ports::PageFile> pages_;
  std::unique_ptr<ports::FileLock> lock_;
  bool is_closed_ = false;
  bool has_name_ = false;
};

}  // namespace jet
