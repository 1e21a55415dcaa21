#include "platform/factories.h"

#include <cstdlib>
#include <string_view>
#include <vector>

#include "foundation/encodings.h"
#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/internet.h"

#include <wininet.h>

namespace platform {
namespace {

struct InternetTraits {
  using Type = HINTERNET;
  static Type Invalid() { return nullptr; }
  static void Close(Type handle) { InternetCloseHandle(handle); }
};
using InternetHandle = tmw::UniqueHandle<InternetTraits>;

ports::Status CloseInternetHandle(InternetHandle& handle) {
  if (InternetCloseHandle(handle.Get()) == FALSE) return ports::Status::Failure(LastError());
  handle.Release();
  return ports::Status::Success();
}

// Servers name their files in UTF-8, whatever this system's code page is: the part of an HTTP URL
// after the host is percent-encoded. FTP has no such convention.
std::string ToSentUrl(const std::string& url) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  const std::size_t scheme_end = url.find("://");
  const std::size_t path = url.find('/', scheme_end == std::string::npos ? 0 : scheme_end + 3);
  if (path == std::string::npos || tmw::LowerCase(url.substr(0, 3)) == "ftp") return ToAnsi(url);
  std::string sent = ToAnsi(url.substr(0, path));
  for (const char c : url.substr(path)) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      sent += c;
    } else {
      sent += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
    }
  }
  return sent;
}

class WinInetRequest final : public ports::InternetRequest {
 public:
  explicit WinInetRequest(InternetHandle handle)
      : handle_(std::move(handle)), whole_length_(AnnouncedLength()) {}

  ports::Outcome<ports::InternetChunk> Read(void* buffer, std::uint32_t length) override {
    using Result = ports::Outcome<ports::InternetChunk>;
    DWORD read = 0;
    if (whole_length_ >= 0 && position_ >= whole_length_) return Result::Success({0, true});
    // Some versions return bytes beyond the announced end.
    if (whole_length_ >= 0 && whole_length_ - position_ < length)
      length = static_cast<std::uint32_t>(whole_length_ - position_);
    if (InternetReadFile(handle_.Get(), buffer, length, &read) == FALSE)
      return Result::Failure(LastError());
    position_ += read;
    if (read > 0) return Result::Success({read, false});
    // WinINet takes a lost connection for the end of the body.
    if (whole_length_ >= 0 && position_ < whole_length_)
      return Result::Failure(ERROR_INTERNET_CONNECTION_ABORTED);
    return Result::Success({0, true});
  }

  ports::Status Seek(std::int32_t position, const ports::WaitHandler& /*on_wait*/) override {
    if (position == position_) return ports::Status::Success();
    // WinINet would accept the position and request such bytes at the next read.
    if (position < 0 || whole_length_ < 0 || position > whole_length_)
      return ports::Status::Failure(ERROR_INTERNET_INVALID_OPERATION);
    const DWORD result = InternetSetFilePointer(handle_.Get(), position, nullptr, FILE_BEGIN, 0);
    if (result == INVALID_SET_FILE_POINTER) return ports::Status::Failure(LastError());
    position_ = position;
    return ports::Status::Success();
  }

  std::int64_t WholeLength() override { return whole_length_; }

  ports::Outcome<std::int32_t> HttpStatusCode() override {
    using Result = ports::Outcome<std::int32_t>;
    DWORD code = 0;
    DWORD size = sizeof(code);
    if (HttpQueryInfoA(handle_.Get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &code, &size,
                       nullptr) == FALSE)
      return Result::Failure(LastError());
    return Result::Success(static_cast<std::int32_t>(code));
  }

  ports::Outcome<std::string> HttpStatusText() override {
    using Result = ports::Outcome<std::string>;
    char nothing = 0;
    DWORD length = 0;
    if (HttpQueryInfoA(handle_.Get(), HTTP_QUERY_STATUS_TEXT, &nothing, &length, nullptr) ==
        FALSE) {
      const ports::SystemCode code = LastError();
      if (code != ERROR_INSUFFICIENT_BUFFER) return Result::Failure(code);
    }
    if (length == 0) return Result::Success({});
    std::vector<char> text(std::size_t{length} + 1);
    length = static_cast<DWORD>(text.size());
    if (HttpQueryInfoA(handle_.Get(), HTTP_QUERY_STATUS_TEXT, text.data(), &length, nullptr) ==
        FALSE)
      return Result::Failure(LastError());
    return Result::Success(FromAnsi({text.data(), length}));
  }

  ports::Status Close() override { return CloseInternetHandle(handle_); }

 private:
  // As text, since the numeric query is 32 bits wide. -1 if the server does not announce it.
  std::int64_t AnnouncedLength() const {
    char text[32] = {};
    DWORD size = sizeof(text) - 1;
    if (HttpQueryInfoA(handle_.Get(), HTTP_QUERY_CONTENT_LENGTH, text, &size, nullptr) == FALSE)
      return -1;
    char* end = nullptr;
    const long long length = std::strtoll(text, &end, 10);
    return end == text || length < 0 ? -1 : length;
  }

  InternetHandle handle_;
  std::int64_t position_ = 0;  // of the next byte to be read
  std::int64_t whole_length_ = -1;
};

class WinInetSession final : public ports::InternetSession {
 public:
  explicit WinInetSession(InternetHandle handle) : handle_(std::move(handle)) {}

  ports::Outcome<std::unique_ptr<ports::InternetRequest>> OpenUrl(
      const std::string& url, std::uint32_t flags, std::uintptr_t context,
      const ports::WaitHandler& /*on_wait*/) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetRequest>>;
    InternetHandle request(
        InternetOpenUrlA(handle_.Get(), ToSentUrl(url).c_str(), "", 0, flags, context));
    if (!request) return Result::Failure(LastError());
    return Result::Success(std::make_unique<WinInetRequest>(std::move(request)));
  }

  ports::Status Close() override { return CloseInternetHandle(handle_); }

 private:
  InternetHandle handle_;
};

class WinInet final : public ports::Internet {
 public:
  explicit WinInet(std::int32_t stall_limit) : stall_limit_(static_cast<DWORD>(stall_limit)) {}

  ports::Outcome<std::unique_ptr<ports::InternetSession>> OpenSession(
      const ports::InternetSessionOptions& options) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetSession>>;
    const bool is_proxied = options.access_type == ports::kAccessProxy;
    const std::string proxy = ToAnsi(options.proxy);
    const std::string bypass = ToAnsi(options.proxy_bypass);
    InternetHandle session(InternetOpenA(ToAnsi(options.agent).c_str(),
                                         static_cast<DWORD>(options.access_type),
                                         is_proxied ? proxy.c_str() : nullptr,
                                         is_proxied ? bypass.c_str() : nullptr, options.flags));
    if (!session) return Result::Failure(LastError());
    // Where an option is not known WinINet's own limits remain.
    DWORD limit = stall_limit_;
    for (const DWORD option : {INTERNET_OPTION_CONNECT_TIMEOUT, INTERNET_OPTION_SEND_TIMEOUT,
                               INTERNET_OPTION_RECEIVE_TIMEOUT})
      InternetSetOptionA(session.Get(), option, &limit, sizeof(limit));
    // One attempt at each of a host's addresses: WinINet's five take minutes to say that a server
    // is down, while another one stands ready.
    DWORD attempts = 1;
    InternetSetOptionA(session.Get(), INTERNET_OPTION_CONNECT_RETRIES, &attempts, sizeof(attempts));
    return Result::Success(std::make_unique<WinInetSession>(std::move(session)));
  }

 private:
  DWORD stall_limit_;
};

}  // namespace

std::unique_ptr<ports::Internet> MakeInternet(std::int32_t stall_limit) {
  return std::make_unique<WinInet>(stall_limit);
}

}  // namespace platform
