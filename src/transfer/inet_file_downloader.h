#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "transfer/binary_file.h"
#include "transfer/inet_opened_url.h"

namespace tmw {

// Called by a download, on its thread. The listener keeps the window responsive.
class DownloaderEvents {
 public:
  virtual ~DownloaderEvents() = default;

  // Called after each chunk that was written, and with is_skipped when a download resumes after
  // that many bytes; when a connection that has broken off is made again, also if it is none.
  virtual void OnChunkLoaded(bool is_skipped, std::int32_t byte_count) = 0;

  // The flag is passed in as false; setting it cancels the download.
  virtual void OnCheckCancel(bool& is_cancelled) = 0;
};

// Fetches one URL into one file. The bytes go into a side file, the target's name + ".part", which
// is renamed to the target when all have arrived. A download that breaks off or is cancelled leaves
// the side file for the next one to continue. Connections that break off are made again, see
// Attempts.
//
// A server that cannot continue must send the whole file: the side file is given up only for a body
// that is announced as at least as long, or that has proved to be. A login page is neither.
//
// The side file is closed every 2 seconds or 1 MiB, and flushed to the disk before it is renamed.
class InetFileDownloader {
 public:
  explicit InetFileDownloader(DownloaderEvents& events) : events_(events) {}
  InetFileDownloader(const InetFileDownloader&) = delete;
  InetFileDownloader& operator=(const InetFileDownloader&) = delete;

  // Returns true if the target now holds the whole body, false if the download was cancelled.
  // Without check_for_continue an earlier side file is emptied.
  bool DownloadFile(const std::string& url, const std::string& local_name, bool check_for_continue);

  // Bytes of the body that are in the side file, those of an earlier download included.
  std::int32_t Pos() const { return pos_; }
  bool Cancelled() const { return cancelled_; }

 private:
  static constexpr std::int32_t kChunkSize = 16384;
  static constexpr std::int32_t kSyncPeriod = 2000;  // milliseconds
  static constexpr std::int32_t kSyncVolume = 0x100000;
  static constexpr std::int32_t kIdleWait = 50;  // milliseconds

  void Release();
  bool TryOnce(const std::string& url, const std::string& target, bool check_for_continue);
  template <typename Action>
  void IgnoreWhenCancelled(Action action);
  void DetectOrCreatePartFile(const std::string& name, bool check_for_continue);
  void MakeRoomForWhole(std::int32_t part_size);
  void PerformDownloading();
  void AppendDataToFile(const void* data, std::int32_t count);
  void OpenPartFileIfNeed();
  void SyncPartFileIfNeed(bool is_forced);
  void CommitPartFile(const std::string& part_name, const std::string& target_name);
  bool IsCancelPressed();

  DownloaderEvents& events_;
  std::int32_t pos_ = 0;
  bool cancelled_ = false;
  bool is_another_attempt_ = false;
  bool has_own_part_ = false;  // the side file has been continued or begun by this download
  std::int32_t kept_ = 0;      // length of an older side file that the new one has to reach
  std::unique_ptr<InetOpenedUrl> url_;
  std::string part_file_name_;
  std::unique_ptr<BinaryFile> part_file_;  // open between two syncs only
  std::int64_t last_open_tick_ = 0;
  std::int32_t bytes_since_open_ = 0;
  std::array<char, kChunkSize> buffer_{};
};

}  // namespace tmw
