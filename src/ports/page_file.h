#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

// Which file a name or a handle stands for. Two names of one file have equal identities.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t file = 0;
  bool operator==(const FileIdentity&) const = default;
};

// An open file that is read and written at given positions. Destroying it closes it, errors are
// not reported then.
class PageFile {
 public:
  virtual ~PageFile() = default;

  virtual Outcome<std::uint64_t> Size() = 0;
  virtual Outcome<FileIdentity> Identity() = 0;

  // The number of bytes read; fewer than asked only at the end of the file.
  virtual Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data, std::size_t length) = 0;

  // Writes everything or fails.
  virtual Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) = 0;

  // Brings everything written to the disk itself.
  virtual Status Flush() = 0;

  virtual Status Close() = 0;

  // Whether that failure says that the disk is full.
  virtual bool MeansFull(SystemCode code) const = 0;
};

enum class PageFileMode {
  kRead,            // an existing file; others may read, write, rename and delete it meanwhile
  kCreateNew,       // a new file for this user only, to write and read; fails where one exists
  kCreateOrdinary,  // likewise, with the rights that new files have
};

class PageFiles {
 public:
  virtual ~PageFiles() = default;

  virtual Outcome<std::unique_ptr<PageFile>> Open(const std::string& path, PageFileMode mode) = 0;

  // Of the file that the name stands for at this moment.
  virtual Outcome<FileIdentity> IdentityOf(const std::string& path) = 0;
};

}  // namespace ports
