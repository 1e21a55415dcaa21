#include "transfer/inet.h"

#include <array>

#include "foundation/error_handling.h"
#include "foundation/version.h"
#include "services/run_log.h"
#include "transfer/attempts.h"
#include "transfer/binary_file.h"
#include "transfer/inet_errors.h"
#include "transfer/inet_opened_url.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miInet";
constexpr std::uint32_t kReadSize = 16384;

void OpenLocalFile(BinaryFile& file, const std::string& name) {
  file.OpenFile(name, ports::win32::kGenericWrite, ports::win32::kShareRead,
                ports::win32::kCreateAlways, 0);
}

// Writes the whole body to the file, chunk by chunk.
void CopyBody(InetOpenedUrl& url, BinaryFile& file, std::int64_t max_bytes) {
  std::array<char, kReadSize> buffer{};
  std::int64_t total = 0;
  std::int32_t count = 0;
  while (url.ReadChunk(buffer.data(), kReadSize, count)) {
    if (!url.MayWait())
      RaiseInetError(ports::kInternetCancelled, transfer_texts::LoadingFailed(url.Url()));
    if (count < 1) continue;
    total += count;
    if (total > max_bytes) RaiseProgramError(transfer_texts::TooLong(url.Url(), max_bytes));
    file.WriteBuffer(buffer.data(), static_cast<std::uint32_t>(count), true);
  }
  LogEvent("loaded", {{"address", url.Url()}, {"bytes", total}});
}

// One attempt at one URL; see inet.h. A failure says whether the connection broke off.
void FetchOnce(const std::string& url, const std::string& local_name, std::int64_t max_bytes,
               const ports::WaitHandler& may_wait, bool& has_broken_off) {
  InetOpenedUrl opened_url(may_wait);
  try {
    opened_url.OpenUrl(GetInetConnection(), url, ports::kInternetReload);
    BinaryFile file;
    OpenLocalFile(file, local_name);
    CopyBody(opened_url, file, max_bytes);
    opened_url.CloseHandle();
    file.CloseHandle();
  } catch (...) {
    has_broken_off = opened_url.HasBrokenOff();
    throw;
  }
}

bool TryFetchOnce(const std::string& url, const std::string& local_name, std::string& error_text,
                  std::int64_t max_bytes, const ports::WaitHandler& may_wait,
                  bool& has_broken_off) {
  error_text.clear();
  InetOpenedUrl opened_url(may_wait);
  const bool is_open =
      opened_url.TryOpenUrl(GetInetConnection(), url, ports::kInternetReload, error_text);
  has_broken_off |= opened_url.HasBrokenOff();
  if (!is_open) return false;
  BinaryFile file;
  OpenLocalFile(file, local_name);
  try {
    CopyBody(opened_url, file, max_bytes);
  } catch (...) {
    has_broken_off |= opened_url.HasBrokenOff();
    std::string frames;
    SplitErrorText(CurrentError().Description, error_text, frames);
    return false;
  }
  opened_url.CloseHandle();
  file.CloseHandle();
  return true;
}

}  // namespace

std::shared_ptr<InetConnection> GetInetConnection() try {
  static std::shared_ptr<InetConnection> shared;
  if (shared == nullptr) shared = MakeInetConnection(GetUpdaterSettings());
  return shared;
} catch (...) {
  ReRaiseError(kModule, "GetInetConnection");
}

std::shared_ptr<InetConnection> MakeInetConnection(const UpdaterSettings& settings) {
  auto connection = std::make_shared<InetConnection>();
  connection->AccessType = settings.ProxyType;
  if (settings.ProxyType == ports::kAccessProxy) {
    if (settings.ProxyServer.empty()) {
      connection->AccessType = ports::kAccessDirect;
    } else {
      connection->Proxy = settings.ProxyServer;
    }
  }
  const AppVersion version = GetAppVersion();
  connection->Agent =
      "Tamrin Web Updater/" + std::to_string(version.Major) + "." + std::to_string(version.Minor);
  connection->OpenInternet();
  return connection;
}

std::string JoinUrl(std::string_view base, std::string_view tail) try {
  if (base.empty()) return std::string(tail);
  if (base.ends_with('/')) base.remove_suffix(1);
  if (tail.starts_with('/')) tail.remove_prefix(1);
  return std::string(base) + "/" + std::string(tail);
} catch (...) {
  ReRaiseError(kModule, "JoinUrl");
}

void DownloadFile(const std::string& url, const std::string& local_name, std::int64_t max_bytes,
                  const ports::WaitHandler& may_wait) try {
  for (Attempts attempts(may_wait);;) {
    bool has_broken_off = false;
    try {
      return FetchOnce(url, local_name, max_bytes, may_wait, has_broken_off);
    } catch (...) {
      if (!attempts.MayTryAgain(has_broken_off)) throw;
    }
  }
} catch (...) {
  ReRaiseError(kModule, "DownloadFile");
}

bool TryDownloadFile(const std::string& url, const std::string& local_name, std::string& error_text,
                     std::int64_t max_bytes, const ports::WaitHandler& may_wait) try {
  for (Attempts attempts(may_wait);;) {
    bool has_broken_off = false;
    if (TryFetchOnce(url, local_name, error_text, max_bytes, may_wait, has_broken_off)) return true;
    if (!attempts.MayTryAgain(has_broken_off)) return false;
  }
} catch (...) {
  ReRaiseError(kModule, "TryDownloadFile");
}

bool TryDownloadFileFromTwoUrls(const std::string& first_url, const std::string& second_url,
                                const std::string& local_name, std::string& error_text,
                                std::int64_t max_bytes, const ports::WaitHandler& may_wait) try {
  // Both are tried before either is tried again: the second one stands in for the first.
  for (Attempts attempts(may_wait);;) {
    bool has_broken_off = false;
    std::string first_text;
    std::string second_text;
    const auto fetch = [&](const std::string& url, std::string& text) {
      return TryFetchOnce(url, local_name, text, max_bytes, may_wait, has_broken_off);
    };
    error_text.clear();
    if (fetch(first_url, first_text)) return true;
    const bool has_second = !second_url.empty() && (!may_wait || may_wait());
    if (has_second && fetch(second_url, second_text)) return true;
    const bool has_both = !first_text.empty() && !second_text.empty();
    error_text = first_text + (has_both ? std::string(kCrLf) : "") + second_text;
    if (!attempts.MayTryAgain(has_broken_off)) return false;
  }
} catch (...) {
  ReRaiseError(kModule, "TryDownloadFileFromTwoUrls");
}

}  // namespace tmw
