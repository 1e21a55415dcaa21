#pragma once

#include <string>
#include <string_view>

// Names and paths as texts; only GetAbsoluteFileName asks the system anything. "\" and "/" both
// separate, on both systems.
namespace tmw {

// The parts of a path. Folder has no separator at its end unless it is a root ("C:\", "/"); it is
// empty when the path is a bare name. Extension has no dot; a dot at the beginning of a name starts
// none. Name + "." + Extension gives the file's name again.
struct SplitName {
  std::string Folder;
  std::string Name;
  std::string Extension;

  // The file's name with its extension.
  std::string FileName() const;
};

SplitName SplitFileName(std::string_view path);

// Joins folder and name by one separator of this system; separators inside the name become this
// system's too. An empty folder gives the name, an empty name the folder.
std::string JoinPath(std::string_view folder, std::string_view name);

// With this system's separators throughout.
std::string NativePath(std::string_view path);

// Absolute against the current folder, "." and ".." taken out; the file need not exist.
std::string GetAbsoluteFileName(const std::string& path);

// Whether a file's name matches a mask of "*" and "?" without regard to letter case. "*.*" matches
// every name.
bool MatchesMask(std::string_view name, std::string_view mask);

}  // namespace tmw
