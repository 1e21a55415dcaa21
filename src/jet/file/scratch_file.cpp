#include "jet/file/scratch_file.h"

#include "jet/errors.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jet::file {

ScratchFile::~ScratchFile() {
  if (file_ == nullptr) return;
  file_.reset();
  // What remains is removed before the next file is written beside it.
  static_cast<void>(ports::CurrentPorts().files->RemoveFile(path_));
}

std::uint64_t ScratchFile::Append(std::string_view bytes) {
  if (file_ == nullptr) {
    auto opened = ports::CurrentPorts().page_files->Open(path_, ports::PageFileMode::kCreateNew);
    if (!opened) Fail(kDiskError);
    file_ = std::move(opened.value);
  }
  const ports::Status written = file_->WriteAt(length_, bytes.data(), bytes.size());
  if (!written) Fail(file_->MeansFull(written.code) ? kDiskFull : kDiskError);
  const std::uint64_t offset = length_;
  length_ += bytes.size();
  return offset;
}

void ScratchFile::Read(std::uint64_t offset, char* to, std::size_t length) {
  const auto got = file_->ReadAt(offset, to, length);
  if (!got || got.value != length) Fail(kDiskError);
}

}  // namespace jet::file
