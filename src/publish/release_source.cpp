#include "publish/release_source.h"

#include <algorithm>
#include <iterator>

#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "publish/faults.h"
#include "publish/workers.h"
#include "services/advice.h"
#include "tools/stop.h"
#include "transfer/inet.h"

namespace publish {
namespace {

class FolderSource final : public ReleaseSource {
 public:
  explicit FolderSource(std::string folder) : folder_(std::move(folder)) {
    if (!tmw::IsFolderExists(folder_)) Raise(texts::kNoFolder, folder_);
  }

  std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                     std::string& reason) override {
    const std::string path = tmw::JoinPath(folder_, name);
    if (!tmw::IsFileExists(path)) {
      reason = texts::kNoSuchFile;
    } else if (tmw::GetFileLength(path) > max_bytes) {
      reason = tools::Fill(texts::kLongerThan, {std::to_string(max_bytes)});
    } else {
      return std::make_unique<FetchedFile>(path, false);
    }
    return nullptr;
  }

  std::size_t Workers() const override { return WorkerCount(); }

 private:
  std::string folder_;
};

bool IsOnTheWay(tmw::FailureKind kind) {
  using Kind = tmw::FailureKind;
  constexpr Kind kKinds[] = {Kind::kNoConnection, Kind::kNameNotResolved, Kind::kProxy,
                             Kind::kProxyLogin,   Kind::kInterrupted,     Kind::kCertificateDate,
                             Kind::kCertificate,  Kind::kNoSecureChannel, Kind::kUnknownAuthority};
  return std::find(std::begin(kKinds), std::end(kKinds), kind) != std::end(kKinds);
}

// Reads from a web server. The internet session may be used by one thread only.
class UrlSource final : public ReleaseSource {
 public:
  UrlSource(std::string url, std::string scratch)
      : url_(std::move(url)), scratch_(std::move(scratch)) {}

  std::unique_ptr<FetchedFile> Fetch(const std::string& name, std::int64_t max_bytes,
                                     std::string& reason) override {
    const std::string path = tmw::JoinPath(scratch_, "download" + std::to_string(++count_));
    auto fetched = std::make_unique<FetchedFile>(path, true);
    static_cast<void>(tmw::TakeNotedFailure());
    if (tmw::TryDownloadFile(tmw::JoinUrl(url_, name), path, reason, max_bytes, tools::GoesOn))
      return fetched;
    tools::ThrowIfStopped();
    is_reached_ = !IsOnTheWay(tmw::TakeNotedFailure());
    return nullptr;
  }

  bool IsReached() const override { return is_reached_; }

  std::size_t Workers() const override { return 1; }

 private:
  std::string url_;
  std::string scratch_;
  std::size_t count_ = 0;
  bool is_reached_ = true;
};

}  // namespace

FetchedFile::~FetchedFile() {
  // What cannot be deleted is removed with the scratch folder.
  if (is_copy_) static_cast<void>(tmw::DeleteFile(path_, true));
}

void RequireReached(const ReleaseSource& source, const std::string& reason) {
  if (!source.IsReached()) tmw::RaiseProgramError(tools::Fill(texts::kServerNotReached, {reason}));
}

std::unique_ptr<ReleaseSource> OpenReleaseSource(const std::string& place,
                                                 const std::string& scratch) {
  if (place.find("://") != std::string::npos) return std::make_unique<UrlSource>(place, scratch);
  return std::make_unique<FolderSource>(tmw::GetAbsoluteFileName(place));
}

}  // namespace publish
