#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Names that come from a server or a package are checked here before they touch the disk. A name is
// accepted only when it means the same plain file on both systems: what either of them reads as a
// device, a stream, a way out of the folder or another name is refused, and so is what would make a
// message show another name. Only texts are checked, not the disk.
namespace tmw {

// One part of a path: UTF-16 units (NTFS) and bytes of UTF-8 (Linux file systems).
inline constexpr std::size_t kLongestNameUnits = 255;
inline constexpr std::size_t kLongestNameBytes = 255;

// A whole name of several parts, or a whole folder: bytes.
inline constexpr std::size_t kLongestPathBytes = 1024;

struct [[nodiscard]] GuardVerdict {
  std::string message;  // which name and why, a whole Russian sentence; empty when it is accepted

  bool IsAccepted() const { return message.empty(); }
};

// The name of one file, without any folder.
GuardVerdict CheckFileName(std::string_view name);

// A name whose parts are separated by "/"; each part is a name by itself.
GuardVerdict CheckRelativeName(std::string_view name);

// A folder, constants expanded, that must be the root or lie under it. "\" and "/" both separate.
// Under a Windows root (one with a drive letter or a server's name) letter case does not count. The
// root is the program's own and absolute; what follows it in the folder is checked part by part.
GuardVerdict CheckFolderUnderRoot(std::string_view folder, std::string_view root);

// The same, but a refusal raises an error.
void RequireFileName(std::string_view name);
void RequireRelativeName(std::string_view name);
void RequireFolderUnderRoot(std::string_view folder, std::string_view root);

}  // namespace tmw
