#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/binary_file.h"

namespace tmw {

// One file for writing, opened with Win32's modes (ports::win32). Sizes and positions have 32
// bits: files of 2 GiB and more are not supported. While no file is open GetSize, SetFilePos and
// WriteBuffer do nothing.
class BinaryFile {
 public:
  BinaryFile() = default;
  BinaryFile(const BinaryFile&) = delete;
  BinaryFile& operator=(const BinaryFile&) = delete;
  ~BinaryFile();

  // Closes an open file first; after a failure no file is open.
  void OpenFile(const std::string& file_name, std::uint32_t access, std::uint32_t share_mode,
                std::uint32_t disposition, std::uint32_t flags);

  // The low 32 bits of the size; 0 while closed.
  std::int32_t GetSize();

  void SetFilePos(std::int32_t position, std::uint32_t move_method);

  // Returns the number of bytes written. Fewer than requested are an error if all must be written.
  std::uint32_t WriteBuffer(const void* data, std::uint32_t length, bool must_write_all);

  // Flushes everything written to the disk.
  void Flush();

  void CloseHandle();

  // nullptr while closed.
  ports::BinaryFileHandle* Handle() const { return handle_.get(); }

 private:
  std::string file_name_;
  std::unique_ptr<ports::BinaryFileHandle> handle_;
};

}  // namespace tmw
