#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/outcome.h"

namespace ports {

// Win32's numbers for opening a file, valid on both systems.
namespace win32 {
inline constexpr std::uint32_t kGenericWrite = 0x40000000;
inline constexpr std::uint32_t kGenericRead = 0x80000000;
inline constexpr std::uint32_t kShareRead = 1;
inline constexpr std::uint32_t kShareWrite = 2;
inline constexpr std::uint32_t kCreateNew = 1;
inline constexpr std::uint32_t kCreateAlways = 2;
inline constexpr std::uint32_t kOpenExisting = 3;
inline constexpr std::uint32_t kOpenAlways = 4;
inline constexpr std::uint32_t kTruncateExisting = 5;
inline constexpr std::uint32_t kMoveFromBegin = 0;
inline constexpr std::uint32_t kMoveFromCurrent = 1;
inline constexpr std::uint32_t kMoveFromEnd = 2;
}  // namespace win32

// An open file with a pointer, for writing. Destroying it closes it.
class BinaryFileHandle {
 public:
  virtual ~BinaryFileHandle() = default;

  // The low 32 bits of the length; errors are not reported.
  virtual std::uint32_t Size() = 0;

  virtual Status Seek(std::int32_t position, std::uint32_t move_method) = 0;

  // Returns the number of bytes written, which may be less than requested.
  virtual Outcome<std::uint32_t> Write(const void* data, std::uint32_t length) = 0;

  // Flushes everything written to the disk.
  virtual Status Flush() = 0;

  // After a failure a further close fails again.
  virtual Status Close() = 0;
};

class BinaryFiles {
 public:
  virtual ~BinaryFiles() = default;

  // Takes CreateFileA's arguments. Linux: share modes are advisory locks, flags and attributes are
  // ignored, folders are refused, and so are links to a writer.
  virtual Outcome<std::unique_ptr<BinaryFileHandle>> Open(const std::string& path,
                                                          std::uint32_t access,
                                                          std::uint32_t share_mode,
                                                          std::uint32_t disposition,
                                                          std::uint32_t flags) = 0;
};

}  // namespace ports
