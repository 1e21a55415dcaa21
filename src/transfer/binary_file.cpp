#include "transfer/binary_file.h"

#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "ports/ports.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "BinaryFile";

}  // namespace

// Destroying the port's file closes it; a failure to close no longer matters.
BinaryFile::~BinaryFile() = default;

void BinaryFile::OpenFile(const std::string& file_name, std::uint32_t access,
                          std::uint32_t share_mode, std::uint32_t disposition,
                          std::uint32_t flags) try {
  CloseHandle();
  auto opened =
      ports::CurrentPorts().binary_files->Open(file_name, access, share_mode, disposition, flags);
  if (!opened) RaiseApiErrorWithMessage(transfer_texts::OpeningFailed(file_name), opened.code);
  handle_ = std::move(opened.value);
  file_name_ = file_name;
} catch (...) {
  ReRaiseError(kModule, "OpenFile");
}

std::int32_t BinaryFile::GetSize() try {
  return handle_ == nullptr ? 0 : static_cast<std::int32_t>(handle_->Size());
} catch (...) {
  ReRaiseError(kModule, "GetSize");
}

void BinaryFile::SetFilePos(std::int32_t position, std::uint32_t move_method) try {
  if (handle_ == nullptr) return;
  if (const ports::Status moved = handle_->Seek(position, move_method); !moved) {
    RaiseApiErrorWithMessage(transfer_texts::SeekingFileFailed(file_name_, position, move_method),
                             moved.code);
  }
} catch (...) {
  ReRaiseError(kModule, "SetFilePos");
}

std::uint32_t BinaryFile::WriteBuffer(const void* data, std::uint32_t length,
                                      bool must_write_all) try {
  if (handle_ == nullptr) return 0;
  const std::string message = transfer_texts::WritingFailed(file_name_);
  const auto written = handle_->Write(data, length);
  if (!written) RaiseApiErrorWithMessage(message, written.code);
  if (must_write_all && written.value < length) {
    RaiseProgramError(message + std::string(kCrLf) +
                      transfer_texts::WrittenInPart(written.value, length));
  }
  return written.value;
} catch (...) {
  ReRaiseError(kModule, "WriteBuffer");
}

void BinaryFile::Flush() try {
  if (handle_ == nullptr) return;
  if (const ports::Status flushed = handle_->Flush(); !flushed)
    RaiseApiErrorWithMessage(transfer_texts::WritingFailed(file_name_), flushed.code);
} catch (...) {
  ReRaiseError(kModule, "Flush");
}

void BinaryFile::CloseHandle() try {
  if (handle_ == nullptr) return;
  if (const ports::Status closed = handle_->Close(); !closed) RaiseApiError(closed.code);
  handle_.reset();
} catch (...) {
  ReRaiseError(kModule, "CloseHandle");
}

}  // namespace tmw
