#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ports/outcome.h"

namespace ports {

enum class FileKind {
  kNone,    // nothing of that name is there
  kFile,    // a regular file (through a link, what the link leads to)
  kFolder,  // a folder (likewise)
  kOther,   // a device, a pipe, a link that leads nowhere
};

struct FileFacts {
  FileKind kind = FileKind::kNone;
  std::int64_t length = 0;  // bytes; files only
  bool read_only = false;   // Windows: the attribute; Linux: no write permission for the owner
};

struct FolderEntry {
  std::string name;  // without the folder
  FileKind kind = FileKind::kNone;
};

enum class FileMode {
  kRead,       // an existing file, for reading
  kWriteNew,   // for writing, created anew; an old content is dropped
  kCreateNew,  // the beginning of a copy: fails when something of that name exists; on Linux only
               // the owner may read it until CopyAttributes gives it its rights
};

// One open file. Closed when destroyed; a writer that cares calls Flush and Close first.
class File {
 public:
  virtual ~File() = default;

  // Reads up to length bytes; 0 is the end of the file.
  virtual Outcome<std::size_t> Read(void* buffer, std::size_t length) = 0;

  // Writes all bytes or fails.
  virtual Status Write(const void* buffer, std::size_t length) = 0;

  // Flushes everything written to the disk.
  virtual Status Flush() = 0;

  // Closes the file; a failure is reported once, the file is closed all the same.
  virtual Status Close() = 0;
};

// Files and folders. Paths are UTF-8; both systems take absolute and relative ones, Windows takes
// "/" and "\" alike and paths longer than 260 characters. An empty path, or one with a zero
// character in it, names nothing and is reported as missing.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  // '\\' on Windows, '/' on Linux.
  virtual char Separator() const = 0;

  // What is at that path. "Nothing there" is a success with kind kNone.
  virtual Outcome<FileFacts> Examine(const std::string& path) = 0;

  virtual Outcome<std::unique_ptr<File>> Open(const std::string& path, FileMode mode) = 0;

  // The entries of a folder without "." and "..", in no particular order.
  virtual Outcome<std::vector<FolderEntry>> List(const std::string& folder) = 0;

  // One level; an existing folder is a failure.
  virtual Status CreateFolder(const std::string& path) = 0;

  // An empty folder; Linux: a link to a folder is not followed and fails.
  virtual Status RemoveFolder(const std::string& path) = 0;

  // A read-only file is removed like any other. A missing file is a failure for whose code
  // MeansMissing is true.
  virtual Status RemoveFile(const std::string& path) = 0;

  // Renames within one file system, replacing an existing file, a read-only one too, atomically. A
  // move to another file system fails with a code for which MeansOtherDevice is true.
  virtual Status Rename(const std::string& from, const std::string& to) = 0;

  // The same within one folder where nothing has the new name; fails when something does.
  virtual Status RenameToFree(const std::string& from, const std::string& to) = 0;

  // Gives a file a second name in the same file system. Fails where something has that name, where
  // the file is a link and where the file system has no second names.
  virtual Status AddName(const std::string& file, const std::string& name) = 0;

  virtual Status SetReadOnly(const std::string& path, bool read_only) = 0;

  // Gives target the permission bits (Windows: the attributes) and the last-write time of source;
  // what the target's file system cannot hold is left out.
  virtual Status CopyAttributes(const std::string& source, const std::string& target) = 0;

  // Sets the last-write time, in seconds since 1970-01-01 00:00 UTC, and on Linux the permission
  // bits.
  virtual Status SetFacts(const std::string& path, std::int64_t modified,
                          std::uint32_t unix_mode) = 0;

  // Gives target the owner, the group and the permission bits of source; what this user may not
  // give is left out. Windows: nothing to do, a file inherits its folder's rights.
  virtual Status CopyRights(const std::string& source, const std::string& target) = 0;

  // The target of path if it is a link, else path itself; the target need not exist. Parent folders
  // may still be links. Windows: a dangling link is returned as it is.
  virtual Outcome<std::string> FollowLinks(const std::string& path) = 0;

  // Makes a path absolute against the current folder and takes "." and ".." out; nothing is read
  // from the disk.
  virtual Outcome<std::string> MakeAbsolute(const std::string& path) = 0;

  // The user's folder for temporary files, without a separator at its end; it need not exist yet.
  // Linux: $TMPDIR, else a folder of the user's cache, which outlives a restart of the machine, so
  // that an interrupted update can go on. Where a group or others may write it is a folder of the
  // user's own inside, closed to everybody else; one that is somebody else's is refused, and the
  // value of that failure names it.
  virtual Outcome<std::string> TemporaryFolder() = 0;

  // The same for a process with administrator rights: none of the user's folders on Windows, where
  // programs without these rights write as well. Linux: the same folder, which is root's own.
  virtual Outcome<std::string> TemporaryFolderOfSystem() = 0;

  // Where the system keeps, for this user alone, what programs without a manifest write in place of
  // that protected file; nothing need be there. Empty on Linux.
  virtual std::string VirtualCopyOf(const std::string& path) = 0;

  // One level, for administrators and the system alone (Linux: for this user); whatever has the
  // name already is a failure.
  virtual Status CreateProtectedFolder(const std::string& path) = 0;

  // Makes a rename or a creation in that folder durable. Windows: nothing to do.
  virtual Status FlushFolder(const std::string& folder) = 0;

  // Brings all files below the folder, and their names, to the disk. Cheaper than to flush each.
  virtual Status FlushTree(const std::string& folder) = 0;

  // Makes the file executable. Windows: nothing to do.
  virtual Status MakeExecutable(const std::string& path) = 0;

  virtual bool MeansMissing(SystemCode code) const = 0;
  virtual bool MeansOtherDevice(SystemCode code) const = 0;

  // Whether another program (a virus scanner, an indexer) may be holding the file for a moment.
  virtual bool MeansBusy(SystemCode code) const = 0;
};

}  // namespace ports
