#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "foundation/encodings.h"

// What the companion library asks of the system. Paths are UTF-8. A failing call returns the
// system's own error code.
namespace companion::os {

using ErrorCode = std::int32_t;

// The error that the program queries after a failed call.
void SetLastErrorCode(ErrorCode code);
ErrorCode LastErrorCode();

// Codes for causes that are ours, not the system's.
ErrorCode DamagedDataCode();
ErrorCode OutOfMemoryCode();

// The interface's 8-bit paths and names to UTF-8 and back: in the code page on Windows, UTF-8 on
// Linux whatever the page.
std::string FromNarrow(tmw::CodePage page, const char* text);
std::string ToNarrow(tmw::CodePage page, const std::string& text);

// A regular file for random reading. Devices, pipes and folders are not opened.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t Size() const = 0;
  // Returns the number of bytes read, less than asked only at the end; nothing on failure.
  virtual std::optional<std::size_t> ReadAt(std::uint64_t offset, void* buffer,
                                            std::size_t length) = 0;
};

std::unique_ptr<ReadableFile> OpenForReading(const std::string& path, ErrorCode& error);

struct Attributes {
  std::optional<std::uint32_t> unix_mode;       // the nine permission bits
  std::optional<std::uint32_t> dos_attributes;  // read-only 1, hidden 2, system 4, archive 0x20
  std::optional<std::int64_t> modified;         // seconds since 1970, UTC
};

// A file being written; closed when destroyed.
class WritableFile {
 public:
  virtual ~WritableFile() = default;
  [[nodiscard]] virtual bool Write(const void* data, std::size_t length) = 0;
  [[nodiscard]] virtual bool WriteAt(std::uint64_t offset, const void* data,
                                     std::size_t length) = 0;
  // Sets what the system supports. To be called last before Close. Returns false if the owner could
  // not use the file as the attributes say.
  [[nodiscard]] virtual bool Apply(const Attributes& attributes) = 0;
  // Flushes everything to the disk itself.
  [[nodiscard]] virtual bool Flush() = 0;
  [[nodiscard]] virtual bool Close() = 0;
};

// Creates the file root / parts... and the folders between. The root is trusted and may contain
// links; below it no link is followed, and an existing file or link is replaced by a new file,
// never written through. Returns null on failure.
std::unique_ptr<WritableFile> CreateBeneath(const std::string& root,
                                            std::span<const std::string> parts);

// Creates the folder root / parts... in the same way; an existing one is fine.
[[nodiscard]] bool MakeFolderBeneath(const std::string& root, std::span<const std::string> parts,
                                     const Attributes& attributes);

// Creates a file with a new name beside the given path: "<path>.<random>.tmp". Linux: only its
// owner may read it until CopyRights.
std::unique_ptr<WritableFile> CreateTemporaryBeside(const std::string& path, std::string& name);

enum class Kind { kNone, kFile, kFolder, kOther };

struct Facts {
  Kind kind = Kind::kNone;
  std::uint64_t size = 0;
  std::int64_t modified = 0;
  std::uint32_t unix_mode = 0;  // with the file type; 0 where the system has none
  std::uint32_t dos_attributes = 0;
};

// Follows links.
Facts Examine(const std::string& path);

// The names in a folder, sorted, without "." and "..". Links to folders are left out, so that
// walking a tree ends.
std::vector<std::string> List(const std::string& folder);

// Fails if something of the new name exists.
[[nodiscard]] bool Rename(const std::string& from, const std::string& to);
// Gives target the owner, the group and the permissions of source, as far as this user may.
// Windows: nothing to do, a file inherits its folder's rights.
void CopyRights(const std::string& source, const std::string& target);
bool Remove(const std::string& path);
bool RemoveFolder(const std::string& path);
void FlushFolderOf(const std::string& path);
bool SetModified(const std::string& path, std::int64_t modified);

char Separator();
bool IsSeparator(char c);
// The part before the last separator, "." if there is none, and the part behind it.
std::string FolderOf(const std::string& path);
inline std::string NameOf(std::string path) {
  const auto separator = std::find_if(path.rbegin(), path.rend(), IsSeparator);
  path.erase(path.begin(), separator.base());
  return path;
}
bool IsAbsolute(const std::string& path);

std::tm LocalTime(std::int64_t seconds);

// Loads the library and calls its entry point (no parameters, 0 for success). Returns 0 or a code.
ErrorCode CallLibrary(const std::string& path, const char* entry_point);

}  // namespace companion::os
