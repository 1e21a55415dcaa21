#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ports/outcome.h"

namespace ports {

// What keeps a file from being replaced.
enum class Hindrance {
  kNone,
  kFolder,     // a folder has the file's name
  kOther,      // a device, a pipe or the like has it
  kHeld,       // another program uses the file
  kProtected,  // marked as not to be changed, or on a disk that cannot be written to
  kForbidden,  // this user has no right to do it
  kFailed,     // anything else; the code says what
};

struct FileFinding {
  Hindrance hindrance = Hindrance::kNone;
  SystemCode code = 0;  // of the refused call; 0 with kFolder, kOther and locks
};

enum class Replacement {
  kRemoval,     // the file is deleted, later a new one gets its name
  kRenameOver,  // a new file is renamed over it
};

struct DiskSpace {
  std::string disk;       // the same for all folders of one file system
  std::int64_t free = 0;  // bytes that this user may still write
};

// Finds out whether files can be replaced, without changing anything. Paths as in FileSystem.
class FileProbe {
 public:
  virtual ~FileProbe() = default;

  // A missing file has no hindrance, and neither has a read-only file as such. Whether its folder
  // takes new files is not examined.
  // kHeld on Windows: the file cannot be opened for writing and deleting without sharing, as when
  // any program has it open or runs it. On Linux, where open files can be replaced: a program holds
  // a lock on it (flock, fcntl) or runs it. Running programs do not hinder a rename there, and
  // libraries in use are not noticed: their users keep the old content.
  virtual FileFinding Examine(const std::string& path, Replacement replacement) = 0;

  // What the code of a failed creation or deletion of a file says.
  virtual Hindrance MeaningOf(SystemCode code) const = 0;

  // The names of the programs that use the file, as users know them; empty if that cannot be found
  // out.
  virtual std::vector<std::string> Holders(const std::string& path) = 0;

  // The folder exists.
  virtual Outcome<DiskSpace> SpaceOf(const std::string& folder) = 0;

  // Whether components can be registered for all users. Linux: always.
  virtual Status MayRegister() = 0;
};

}  // namespace ports
