#include "platform/windows/internet.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/encodings.h"
#include "platform/factories.h"
#include "platform/windows/handles.h"
#include "platform/windows/helper_thread.h"
#include "platform/windows/wide.h"
#include "platform/windows/wininet_library.h"

namespace platform {
namespace {

constexpr std::int32_t kWaitSlice = 100;  // milliseconds

// What WinINet leaves out by itself: active FTP is stopped by firewalls, proxies that ask who the
// user is need one connection for several messages, and a server may send its visitors to https.
constexpr DWORD kAddedFlags =
    INTERNET_FLAG_PASSIVE | INTERNET_FLAG_KEEP_CONNECTION | INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTPS;
static_assert(INTERNET_FLAG_RELOAD == ports::kInternetReload);

ports::Status CloseInternetHandle(InternetHandle& owner) {
  const LibraryHandle owned = owner.Release();
  if (owned.handle == nullptr) return ports::Status::Failure(ERROR_INVALID_HANDLE);
  return StatusOf(owned.close(owned.handle));
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

// Waits until the call has returned; returns false if on_wait wants to wait no longer.
bool AwaitReturn(HelperThread& helper, const ports::WaitHandler& on_wait) {
  while (!helper.Wait(kWaitSlice)) {
    if (on_wait && !on_wait()) return false;
  }
  return true;
}

// What a call of the helper thread works on. Shared: the call may outlive the request.
struct Arrival {
  std::vector<char> bytes;
  DWORD count = 0;
  ports::Status status = ports::Status::Failure(0);

  void Read(const WinInetCalls& calls, HINTERNET request) {
    // A read returns when its buffer is full: it gets no more room than bytes have arrived.
    DWORD available = 0;
    auto room = static_cast<DWORD>(bytes.size());
    if (calls.query_available(request, &available, 0, 0) != FALSE && available > 0)
      room = std::min(room, available);
    status = StatusOf(calls.read(request, bytes.data(), room, &count));
  }
};

class WinInetRequest final : public ports::InternetRequest {
 public:
  WinInetRequest(const WinInetCalls& calls, InternetHandle handle, HelperThread helper)
      : calls_(calls),
        handle_(std::move(handle)),
        helper_(std::move(helper)),
        whole_length_(AnnouncedLength()) {}

  ports::Outcome<ports::InternetChunk> Read(void* buffer, std::uint32_t length) override {
    using Result = ports::Outcome<ports::InternetChunk>;
    if (failure_) return Result::Failure(*failure_);
    if (arrived_ == nullptr) {
      if (IsAtEnd()) return Result::Success({0, true});
      if (arriving_ == nullptr) StartReading(length);
      if (!helper_.Wait(kWaitSlice)) return Result::Success({});
      if (const ports::Status taken = TakeArrived(); !taken)
        return Result::Failure(Fail(taken.code));
      if (arrived_ == nullptr) return Result::Success({0, true});
    }
    return Result::Success({GiveArrived(buffer, length), false});
  }

  // WinINet only notes the position; the server is asked for it by the first read behind, which
  // therefore belongs to the seek.
  ports::Status Seek(std::int32_t position, const ports::WaitHandler& on_wait) override {
    if (failure_) return ports::Status::Failure(*failure_);
    if (position == position_) return ports::Status::Success();
    if (arriving_ != nullptr) return ports::Status::Failure(Fail(ports::kInternetWrongState));
    // WinINet would accept the position and request such bytes at the next read.
    if (position < 0 || whole_length_ < 0 || position > whole_length_)
      return ports::Status::Failure(Fail(ERROR_INTERNET_INVALID_OPERATION));
    arrived_ = nullptr;
    position_ = position;
    if (IsAtEnd()) return ports::Status::Success();
    arriving_ = std::make_shared<Arrival>();
    arriving_->bytes.resize(ReadLength(kReadBehindSeek));
    helper_.Start([calls = calls_, request = handle_.Get().handle, position, arriving = arriving_] {
      const DWORD reached = calls.seek(request, position, nullptr, FILE_BEGIN, 0);
      if (reached == static_cast<DWORD>(position)) arriving->Read(calls, request);
    });
    if (!AwaitReturn(helper_, on_wait))
      return ports::Status::Failure(Fail(ports::kInternetCancelled));
    // Not for want of a connection, whatever the code says: the opening has just succeeded.
    return TakeArrived() ? ports::Status::Success()
                         : ports::Status::Failure(Fail(ERROR_INTERNET_INVALID_OPERATION));
  }

  std::int64_t WholeLength() override { return whole_length_; }

  ports::Outcome<std::int32_t> HttpStatusCode() override {
    using Result = ports::Outcome<std::int32_t>;
    DWORD code = 0;
    DWORD size = sizeof(code);
    if (!Query(HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &code, size))
      return Result::Failure(LastError());
    return Result::Success(static_cast<std::int32_t>(code));
  }

  ports::Outcome<std::string> HttpStatusText() override {
    using Result = ports::Outcome<std::string>;
    char nothing = 0;
    DWORD length = 0;
    if (!Query(HTTP_QUERY_STATUS_TEXT, &nothing, length)) {
      const ports::SystemCode code = LastError();
      if (code != ERROR_INSUFFICIENT_BUFFER) return Result::Failure(code);
    }
    if (length == 0) return Result::Success({});
    std::vector<char> text(std::size_t{length} + 1);
    length = static_cast<DWORD>(text.size());
    if (!Query(HTTP_QUERY_STATUS_TEXT, text.data(), length)) return Result::Failure(LastError());
    return Result::Success(FromAnsi({text.data(), length}));
  }

  // Ends a read that is still under way.
  ports::Status Close() override { return CloseInternetHandle(handle_); }

 private:
  static constexpr std::uint32_t kReadBehindSeek = 1024;

  bool Query(DWORD what, void* buffer, DWORD& size) const {
    return calls_.query(handle_.Get().handle, what, buffer, &size, nullptr) != FALSE;
  }

  // As text, since the numeric query is 32 bits wide. -1 if the server does not announce it.
  std::int64_t AnnouncedLength() const {
    char text[32] = {};
    DWORD size = sizeof(text) - 1;
    if (!Query(HTTP_QUERY_CONTENT_LENGTH, text, size)) return -1;
    char* end = nullptr;
    const long long length = std::strtoll(text, &end, 10);
    return end == text || length < 0 ? -1 : length;
  }

  bool IsAtEnd() const { return is_ended_ || (whole_length_ >= 0 && position_ >= whole_length_); }

  // Some versions return bytes beyond the announced end.
  std::size_t ReadLength(std::uint32_t length) const {
    const std::int64_t rest = whole_length_ < 0 ? length : whole_length_ - position_;
    return static_cast<std::size_t>(std::min<std::int64_t>(length, rest));
  }

  void StartReading(std::uint32_t length) {
    arriving_ = std::make_shared<Arrival>();
    arriving_->bytes.resize(ReadLength(length));
    helper_.Start([calls = calls_, request = handle_.Get().handle, arriving = arriving_] {
      arriving->Read(calls, request);
    });
  }

  // What the helper thread has brought; nothing is the end of the body.
  ports::Status TakeArrived() {
    const std::shared_ptr<Arrival> arrival = std::exchange(arriving_, nullptr);
    if (!arrival->status) return arrival->status;
    if (arrival->count > 0) {
      arrived_ = arrival;
      given_ = 0;
      return arrival->status;
    }
    // WinINet takes a lost connection for the end of the body.
    if (whole_length_ >= 0) return ports::Status::Failure(ERROR_INTERNET_CONNECTION_ABORTED);
    is_ended_ = true;
    return arrival->status;
  }

  std::uint32_t GiveArrived(void* buffer, std::uint32_t length) {
    const std::uint32_t count = std::min<std::uint32_t>(length, arrived_->count - given_);
    std::memcpy(buffer, arrived_->bytes.data() + given_, count);
    given_ += count;
    position_ += count;
    if (given_ == arrived_->count) arrived_ = nullptr;
    return count;
  }

  // Closing the handle ends a call that is under way.
  ports::SystemCode Fail(ports::SystemCode code) {
    if (arriving_ != nullptr) handle_.Reset();
    failure_ = code;
    return code;
  }

  WinInetCalls calls_;
  InternetHandle handle_;
  HelperThread helper_;
  std::shared_ptr<Arrival> arriving_;  // while a call is under way
  std::shared_ptr<Arrival> arrived_;   // while there is something left in it
  DWORD given_ = 0;                    // bytes of it that the reader has had
  std::int64_t position_ = 0;          // of the next byte that the reader gets
  std::int64_t whole_length_ = -1;
  bool is_ended_ = false;
  std::optional<ports::SystemCode> failure_;
};

class WinInetSession final : public ports::InternetSession {
 public:
  WinInetSession(const WinInetCalls& calls, InternetHandle handle)
      : calls_(calls), handle_(std::move(handle)) {}

  ports::Outcome<std::unique_ptr<ports::InternetRequest>> OpenUrl(
      const std::string& url, std::uint32_t flags, std::uintptr_t context,
      const ports::WaitHandler& on_wait) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetRequest>>;
    struct Opening {
      InternetHandle request;
      ports::SystemCode code = 0;
    };
    const auto opening = std::make_shared<Opening>();
    HelperThread helper;
    helper.Start([opening, calls = calls_, session = handle_.Get().handle, sent = ToSentUrl(url),
                  all_flags = flags | kAddedFlags, context] {
      const HINTERNET request = calls.open_url(session, sent.c_str(), "", 0, all_flags, context);
      opening->code = LastError();
      if (request != nullptr) opening->request.Reset({calls.close, request});
    });
    // What is opened after that is closed by the helper thread.
    if (!AwaitReturn(helper, on_wait)) return Result::Failure(ports::kInternetCancelled);
    if (!opening->request) return Result::Failure(opening->code);
    return Result::Success(
        std::make_unique<WinInetRequest>(calls_, std::move(opening->request), std::move(helper)));
  }

  ports::Status Close() override { return CloseInternetHandle(handle_); }

 private:
  WinInetCalls calls_;
  InternetHandle handle_;
};

class WinInet final : public ports::Internet {
 public:
  WinInet(std::int32_t stall_limit, std::string library)
      : stall_limit_(stall_limit), library_(std::move(library)) {}

  ports::Outcome<std::unique_ptr<ports::InternetSession>> OpenSession(
      const ports::InternetSessionOptions& options) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetSession>>;
    const auto loaded = LoadWinInet(library_);
    if (!loaded) return Result::Failure(loaded.code);
    const WinInetCalls& calls = loaded.value;
    const bool is_proxied = options.access_type == ports::kAccessProxy;
    const std::string proxy = ToAnsi(options.proxy);
    const std::string bypass = ToAnsi(options.proxy_bypass);
    const HINTERNET opened = calls.open(
        ToAnsi(options.agent).c_str(), static_cast<DWORD>(options.access_type),
        is_proxied ? proxy.c_str() : nullptr, is_proxied ? bypass.c_str() : nullptr, options.flags);
    if (opened == nullptr) return Result::Failure(LastError());
    InternetHandle session({calls.close, opened});
    // Where an option is not known WinINet's own limits remain. A host may have several addresses,
    // which must have their turn within the limit that holds for the whole opening.
    const auto limit = static_cast<DWORD>(stall_limit_);
    Limit(calls, opened, INTERNET_OPTION_CONNECT_TIMEOUT, limit / 3);
    Limit(calls, opened, INTERNET_OPTION_SEND_TIMEOUT, limit);
    Limit(calls, opened, INTERNET_OPTION_RECEIVE_TIMEOUT, limit);
    return Result::Success(std::make_unique<WinInetSession>(calls, std::move(session)));
  }

 private:
  static void Limit(const WinInetCalls& calls, HINTERNET session, DWORD option, DWORD limit) {
    calls.set_option(session, option, &limit, sizeof(limit));
  }

  std::int32_t stall_limit_;
  std::string library_;
};

}  // namespace

std::unique_ptr<ports::Internet> MakeWinInet(std::int32_t stall_limit, const std::string& library) {
  return std::make_unique<WinInet>(stall_limit, library);
}

std::unique_ptr<ports::Internet> MakeInternet(std::int32_t stall_limit) {
  return MakeWinInet(stall_limit, {});
}

}  // namespace platform
