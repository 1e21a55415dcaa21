#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace publish {

// The files below a folder as paths relative to it, "/" between the parts, in byte order. A device
// or a link that leads nowhere is an error.
std::vector<std::string> ListTree(const std::string& folder);

// A missing folder counts as removed.
void RemoveTree(const std::string& folder);

// Puts the bytes into a file, whole and on the disk, or raises. The folder is there.
void WriteWholeFile(const std::string& path, std::string_view bytes);

// The same for a file that others may be reading: at any moment there is the old content or the
// new.
void ReplaceFile(const std::string& path, std::string_view bytes);

// SHA-256 as text, read piece by piece.
std::string HashOfFile(const std::string& path);
std::string HashOfBytes(std::string_view bytes);

// Of the text's UTF-16 code units, as the updater judges table texts.
std::string HashOfText(std::string_view utf8);

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
