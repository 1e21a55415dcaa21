#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ports/page_file.h"

namespace jet::file {

// A private file for what does not fit into memory. It is made when something is first written and
// goes with the object.
class ScratchFile {
 public:
  // Nothing of that name may exist.
  explicit ScratchFile(std::string path) : path_(std::move(path)) {}
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile();

  // Where the bytes stand. 3026 when the disk is full, 3043 when the file cannot be written.
  std::uint64_t Append(std::string_view bytes);

  // 3043 when they cannot be read.
  void Read(std::uint64_t offset, char* to, std::size_t length);

  // What was written before is not needed any more.
  void Clear() { length_ = 0; }

 private:
  std::string path_;
  std::unique_ptr<ports::PageFile> file_;
  std::uint64_t length_ = 0;
};

}  // namespace jet::file
