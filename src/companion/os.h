#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// What the companion library asks of the system. Paths are UTF-8. A failing call hands back the
// system's own error code.
namespace companion::os {

using ErrorCode = std::int32_t;

// What the program reads after a failed call.
void SetLastErrorCode(ErrorCode code);
ErrorCode LastErrorCode();

// Codes for causes that are ours, not the system's.
ErrorCode DamagedDataCode();
ErrorCode OutOfMemoryCode();

// A regular file, for reading at any place. Devices, pipes and folders are not opened.
class ReadableFile {
 public:
  virtual ~ReadableFile() = default;
  virtual std::uint64_t Size() const = 0;
  // The number of bytes read, less than asked at the end only; nothing on failure.
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
  // What the system cannot take is left out. The last call before Close.
  virtual void Apply(const Attributes& attributes) = 0;
  // Brings everything to the disk itself.
  [[nodiscard]] virtual bool Flush() = 0;
  [[nodiscard]] virtual bool Close() = 0;
};

// Creates root / parts..., with the folders between. The root is the caller's and may be reached
// through links; beneath it no link is followed, an existing file (or link) is replaced by a new
// file, never written through. Nothing on failure.
std::unique_ptr<WritableFile> CreateBeneath(const std::string& root,
                                            std::span<const std::string> parts);

// Makes the folder root / parts... likewise; an existing one is fine.
[[nodiscard]] bool MakeFolderBeneath(const std::string& root, std::span<const std::string> parts,
                                     const Attributes& attributes);

// A new file with a name of its own beside the given path: "<path>.<random>.tmp".
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

// Names in a folder, sorted, without "." and ".."; links to folders are left out, so that a walk
// ends.
std::vector<std::string> List(const std::string& folder);

[[nodiscard]] bool Rename(const std::string& from, const std::string& to);
bool Remove(const std::string& path);
bool RemoveFolder(const std::string& path);
void FlushFolderOf(const std::string& path);
bool SetModified(const std::string& path, std::int64_t modified);

// The part in front of the last separator, "." when there is none.
std::string FolderOf(const std::string& path);
char Separator();
bool IsSeparator(char c);
bool IsAbsolute(const std::string& path);

std::tm LocalTime(std::int64_t seconds);

// Loads the library and calls its entry point (no parameters, result 0 for success); 0 or a code.
ErrorCode CallLibrary(const std::string& path, const char* entry_point);

}  // namespace companion::os
