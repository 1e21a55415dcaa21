#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/file_lock.h"
#include "ports/file_system.h"

namespace publish {

struct TreeEntry {
  std::string path;   // relative to the listed folder, "/" between the parts
  std::string fault;  // a complete sentence; empty for a regular file
};

// Everything below a folder except folders, in byte order. Links are followed, except to a folder
// that contains the link.
std::vector<TreeEntry> ListTree(const std::string& folder);

// Returns whether a path is the folder or below it. Both are absolute; only the texts are compared.
bool IsWithin(const std::string& path, const std::string& folder);

// Removes a folder with everything in it; a missing one counts as removed.
void RemoveTree(const std::string& folder);

// Writes a file and flushes it to the disk. The folder must exist.
void WriteWholeFile(const std::string& path, std::string_view bytes);

// The same for a file that others may be reading: it always has the old content or the new one.
void ReplaceFile(const std::string& path, std::string_view bytes);

// All that follows raises if the user has asked for a stop.

// Files piece by piece; the path is for error messages. 0 bytes read mean the end. A written file
// has to be closed, so that no failure is missed.
std::unique_ptr<ports::File> OpenToRead(const std::string& path);
std::size_t ReadPiece(ports::File& file, char* buffer, std::size_t length, const std::string& path);
std::unique_ptr<ports::File> OpenToWrite(const std::string& path);
void WritePiece(ports::File& file, std::string_view bytes, const std::string& path);
void CloseWritten(ports::File& file, const std::string& path);

// SHA-256 as text.
std::string HashOfFile(const std::string& path);

// Locks a file, which is made if it is not there. Raises `held` with the folder's name if another
// process has locked it.
std::unique_ptr<ports::FileLock> LockFile(const std::string& path, const char* held,
                                          const std::string& folder);

// Passes everything in front of a file's integrity data to take, and returns whether it fits the
// data.
bool ReadWithTrailer(const std::string& path, const std::function<void(std::string_view)>& take);

// Copies the bytes alone, and gives the copy the rights of a new file.
void CopyContent(const std::string& source, const std::string& target);

// A folder for temporary files; the destructor removes it.
class ScratchFolder {
 public:
  // Created in the given folder, or in the user's folder for temporary files.
  explicit ScratchFolder(const std::string& parent = {});
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace publish
