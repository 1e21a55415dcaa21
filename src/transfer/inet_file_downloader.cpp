#include "transfer/inet_file_downloader.h"

#include <limits>
#include <utility>

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/ports.h"
#include "services/advice.h"
#include "services/run_log.h"
#include "transfer/attempts.h"
#include "transfer/inet.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "InetFileDownloader";

// Positions have 32 bits, signed.
std::int32_t ToPosition(std::int64_t value) {
  if (value > std::numeric_limits<std::int32_t>::max())
    throw ProgramError(kOverflowErrorNumber, transfer_texts::kOverflow);
  return static_cast<std::int32_t>(value);
}

// Hardly ever a file that has shrunk: a network that wants a login answers with a page of its own.
[[noreturn]] void RaiseShorterThanPart(const std::string& url) {
  NoteFailure(FailureKind::kLoginPage);
  RaiseProgramError(transfer_texts::ShorterThanPart(url));
}

void OpenForAppending(BinaryFile& file, const std::string& name) {
  file.OpenFile(name, ports::win32::kGenericWrite, ports::win32::kShareRead,
                ports::win32::kOpenExisting, 0);
}

}  // namespace

bool InetFileDownloader::DownloadFile(const std::string& url, const std::string& local_name,
                                      bool check_for_continue) try {
  cancelled_ = is_another_attempt_ = has_own_part_ = false;
  const std::string target = GetAbsoluteFileName(local_name);
  Attempts attempts([this] { return !IsCancelPressed(); });
  for (;; is_another_attempt_ = true) {
    try {
      const bool is_done = TryOnce(url, target, check_for_continue || has_own_part_);
      Release();
      return is_done;
    } catch (...) {
      if (attempts.MayTryAgain(url_ != nullptr && url_->HasBrokenOff())) continue;
      if (!cancelled_) throw;
      Release();
      return false;
    }
  }
} catch (...) {
  Release();
  ReRaiseError(kModule, "DownloadFile");
}

// A new side file beside an older one cannot be continued: its server has no ranges.
void InetFileDownloader::Release() {
  url_.reset();
  part_file_.reset();
  if (kept_ > 0) DeleteFile(part_file_name_, true);
  kept_ = 0;
}

bool InetFileDownloader::TryOnce(const std::string& url, const std::string& target,
                                 bool check_for_continue) {
  Release();
  url_ = std::make_unique<InetOpenedUrl>([this] { return !IsCancelPressed(); });
  IgnoreWhenCancelled([&] { url_->OpenUrl(GetInetConnection(), url, 0); });
  if (IsCancelPressed()) return false;
  pos_ = 0;
  DetectOrCreatePartFile(target + std::string(names::kPartEnding), check_for_continue);
  if (IsCancelPressed()) return false;
  PerformDownloading();
  if (IsCancelPressed()) return false;
  if (pos_ < kept_) RaiseShorterThanPart(url);
  CommitPartFile(part_file_name_, target);
  LogEvent("loaded", {{"address", url}, {"bytes", pos_}, {"file", target}});
  if (kept_ > 0) DeleteFile(target + std::string(names::kPartEnding));
  return true;
}

// A wait that the user has cancelled is no failure; IsCancelPressed reports it next.
template <typename Action>
void InetFileDownloader::IgnoreWhenCancelled(Action action) {
  try {
    action();
  } catch (...) {
    if (!cancelled_) throw;
  }
}

void InetFileDownloader::DetectOrCreatePartFile(const std::string& name,
                                                bool check_for_continue) try {
  part_file_name_ = name;
  if (check_for_continue && IsFileExists(name)) {
    const std::int32_t size = ToPosition(GetFileLength(name));
    std::string error_text;
    if (url_->SetFilePosSafe(size, error_text)) {
      url_->SetFilePos(size);
      pos_ = size;
      LogEvent("continued", {{"bytes", size}});
      has_own_part_ = true;
      events_.OnChunkLoaded(true, size);
      return;
    }
    // Neither a cancelled seek nor a broken one says that the server cannot continue.
    if (cancelled_) return;
    if (url_->HasBrokenOff()) RaiseProgramError(error_text);
    IgnoreWhenCancelled([this] { url_->Reopen(); });
    if (cancelled_) return;
    MakeRoomForWhole(size);
  }
  CreateEmptyFile(part_file_name_);
  pos_ = 0;
  has_own_part_ = true;
  if (is_another_attempt_) events_.OnChunkLoaded(true, 0);
} catch (...) {
  ReRaiseError(kModule, "DetectOrCreatePartFile");
}

// The server sends the whole file again, or something else under its name.
void InetFileDownloader::MakeRoomForWhole(std::int32_t part_size) {
  const std::int64_t announced = url_->WholeLength();
  if (announced >= part_size) {
    DeleteFile(part_file_name_);
  } else if (announced >= 0) {
    RaiseShorterThanPart(url_->Url());
  } else {
    kept_ = part_size;
    part_file_name_ += std::string(names::kNewPartEnding);
  }
}

void InetFileDownloader::PerformDownloading() try {
  for (;;) {
    if (!url_->MayWait()) break;
    std::int32_t count = 0;
    if (!url_->ReadChunk(buffer_.data(), kChunkSize, count)) break;
    if (count <= 0) {
      ports::CurrentPorts().clock->Sleep(kIdleWait);
      continue;
    }
    AppendDataToFile(buffer_.data(), count);
    pos_ = ToPosition(std::int64_t{pos_} + count);
    events_.OnChunkLoaded(false, count);
  }
  SyncPartFileIfNeed(true);
} catch (...) {
  ReRaiseError(kModule, "PerformDownloading");
}

void InetFileDownloader::AppendDataToFile(const void* data, std::int32_t count) try {
  if (count <= 0) return;
  OpenPartFileIfNeed();
  part_file_->WriteBuffer(data, static_cast<std::uint32_t>(count), true);
  bytes_since_open_ += count;
  SyncPartFileIfNeed(false);
} catch (...) {
  ReRaiseError(kModule, "AppendDataToFile");
}

void InetFileDownloader::OpenPartFileIfNeed() try {
  if (part_file_ != nullptr) return;
  auto part_file = std::make_unique<BinaryFile>();
  OpenForAppending(*part_file, part_file_name_);
  const std::int32_t size = part_file->GetSize();
  if (size > 0) part_file->SetFilePos(size, ports::win32::kMoveFromBegin);
  part_file_ = std::move(part_file);
  bytes_since_open_ = 0;
  last_open_tick_ = ports::CurrentPorts().clock->TickCount();
} catch (...) {
  ReRaiseError(kModule, "OpenPartFileIfNeed");
}

void InetFileDownloader::SyncPartFileIfNeed(bool is_forced) try {
  if (part_file_ == nullptr) return;
  const std::int64_t open_for = ports::CurrentPorts().clock->TickCount() - last_open_tick_;
  if (!is_forced && open_for < kSyncPeriod && bytes_since_open_ < kSyncVolume) return;
  part_file_->CloseHandle();
  part_file_.reset();
} catch (...) {
  ReRaiseError(kModule, "SyncPartFileIfNeed");
}

void InetFileDownloader::CommitPartFile(const std::string& part_name,
                                        const std::string& target_name) try {
  // The old target is replaced only once the new bytes are on the disk.
  BinaryFile part_file;
  OpenForAppending(part_file, part_name);
  part_file.Flush();
  part_file.CloseHandle();
  MoveFile(part_name, target_name);
} catch (...) {
  ReRaiseError(kModule, "CommitPartFile");
}

bool InetFileDownloader::IsCancelPressed() try {
  if (cancelled_) return true;
  bool is_cancelled = false;
  events_.OnCheckCancel(is_cancelled);
  if (is_cancelled) cancelled_ = true;
  return cancelled_;
} catch (...) {
  ReRaiseError(kModule, "IsCancelPressed");
}

}  // namespace tmw
