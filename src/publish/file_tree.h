#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ports/file_system.h"

namespace publish {

struct TreeEntry {
  std::string path;   // relative to the listed folder, "/" between the parts
  std::string fault;  // a whole sentence; empty: a file
};

// What lies below a folder apart from folders, in byte order. Links are followed, but not one to a
// folder that contains it.
std::vector<TreeEntry> ListTree(const std::string& folder);

// Whether a path is the folder or lies below it; both are absolute, and words alone are compared.
bool IsWithin(const std::string& path, const std::string& folder);

// A missing folder counts as removed.
void RemoveTree(const std::string& folder);

// Puts the bytes into a file, whole and on the disk, or raises. The folder is there.
void WriteWholeFile(const std::string& path, std::string_view bytes);

// The same for a file that others may be reading: at any moment there is the old content or the
// new.
void ReplaceFile(const std::string& path, std::string_view bytes);

// Files piece by piece; the path is for the error. 0 bytes are the end. A written file is closed,
// so that no failure goes unseen.
std::unique_ptr<ports::File> OpenToRead(const std::string& path);
std::size_t ReadPiece(ports::File& file, char* buffer, std::size_t length, const std::string& path);
std::unique_ptr<ports::File> OpenToWrite(const std::string& path);
void WritePiece(ports::File& file, std::string_view bytes, const std::string& path);
void CloseWritten(ports::File& file, const std::string& path);

// SHA-256 as text, read piece by piece.
std::string HashOfFile(const std::string& path);
std::string HashOfBytes(std::string_view bytes);

// A folder for files of one run; it goes with the object.
class ScratchFolder {
 public:
  // In the given folder, or in the user's folder for temporary files.
  explicit ScratchFolder(const std::string& parent = {});
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace publish
