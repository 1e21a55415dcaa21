#include "platform/factories.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

#include "foundation/encodings.h"
#include "platform/linux/curl_transfer.h"
#include "platform/linux/curl_urls.h"
#include "platform/linux/internet_codes.h"
#include "ports/internet.h"

namespace platform {
namespace {

constexpr int kMaxRedirects = 10;
constexpr std::int32_t kStatusOk = 200;
constexpr std::int32_t kStatusPartialContent = 206;
constexpr std::int32_t kStatusFirstError = 400;
constexpr std::int32_t kStatusRangeNotSatisfiable = 416;

// Server texts are UTF-8 or, from old servers, code page 1251.
std::string DecodeServerText(std::string_view bytes) {
  if (tmw::TryUtf8ToUtf16(bytes)) return std::string(bytes);
  return tmw::CodePageToUtf8(tmw::CodePage::k1251, bytes);
}

// "bytes 10-99/100" or "bytes */100"; a missing number is -1.
struct ContentRange {
  std::int64_t first = -1;
  std::int64_t last = -1;
  std::int64_t total = -1;
};

ContentRange ParseContentRange(const std::string& text) {
  ContentRange range;
  long long first = -1;
  long long last = -1;
  long long total = -1;
  // NOLINTBEGIN(cert-err34-c): numbers that are missing or too large match no position
  if (std::sscanf(text.c_str(), "bytes %lld-%lld/%lld", &first, &last, &total) >= 2) {
    range = {first, last, total};
  } else if (std::sscanf(text.c_str(), "bytes */%lld", &total) == 1) {
    range.total = total;
  }
  // NOLINTEND(cert-err34-c)
  return range;
}

class CurlRequest final : public ports::InternetRequest {
 public:
  explicit CurlRequest(std::shared_ptr<CurlCore> core) : transfer_(std::move(core)) {}

  ports::Status Open(const std::string& url, const ports::WaitHandler& on_wait) {
    const auto accepted = AcceptUrl(url);
    if (!accepted) return accepted.ToStatus();
    url_ = accepted.value;
    if (const ports::Status status = Request(0, on_wait); !status) return status;
    if (transfer_.IsHttp()) {
      // A part that was not requested would pass for the whole body.
      if (transfer_.StatusCode() == kStatusPartialContent)
        return ports::Status::Failure(internet_codes::kInvalidServerResponse);
      // An FTP file from an HTTP proxy: callers do not check the HTTP status of an FTP URL.
      if (HasScheme(url_, "ftp") && transfer_.StatusCode() >= kStatusFirstError)
        return ports::Status::Failure(internet_codes::kExtendedError);
    }
    whole_length_ = transfer_.AnnouncedLength();
    return ports::Status::Success();
  }

  ports::Outcome<ports::InternetChunk> Read(void* buffer, std::uint32_t length) override {
    using Result = ports::Outcome<ports::InternetChunk>;
    if (is_spoiled_) return Result::Failure(ports::kInternetWrongState);
    if (!transfer_.HasBytes() && !transfer_.IsDone()) transfer_.Pump();
    if (transfer_.HasBytes()) {
      const std::uint32_t count = transfer_.Take(buffer, length);
      position_ += count;
      return Result::Success({count, false});
    }
    if (!transfer_.IsDone()) return Result::Success({});
    if (transfer_.EndCode() != 0) return Result::Failure(transfer_.EndCode());
    return Result::Success({0, true});
  }

  ports::Status Seek(std::int32_t position, const ports::WaitHandler& on_wait) override {
    if (is_spoiled_) return ports::Status::Failure(ports::kInternetWrongState);
    if (position < 0) return ports::Status::Failure(EINVAL);
    if (position == position_) return ports::Status::Success();
    is_spoiled_ = true;
    if (const ports::Status status = Request(position, on_wait); !status) return status;
    if (transfer_.IsHttp() && !AnswersFrom(position))
      return ports::Status::Failure(internet_codes::kInvalidOperation);
    position_ = position;
    is_spoiled_ = false;
    return ports::Status::Success();
  }

  std::int64_t WholeLength() override { return whole_length_; }

  ports::Outcome<std::int32_t> HttpStatusCode() override {
    using Result = ports::Outcome<std::int32_t>;
    if (!transfer_.IsHttp()) return Result::Failure(internet_codes::kWrongRequestType);
    return Result::Success(transfer_.StatusCode());
  }

  ports::Outcome<std::string> HttpStatusText() override {
    using Result = ports::Outcome<std::string>;
    if (!transfer_.IsHttp()) return Result::Failure(internet_codes::kWrongRequestType);
    return Result::Success(DecodeServerText(transfer_.StatusText()));
  }

  ports::Status Close() override {
    if (is_closed_) return ports::Status::Failure(ports::kInternetWrongState);
    transfer_.Stop();
    is_closed_ = is_spoiled_ = true;
    return ports::Status::Success();
  }

 private:
  // Requests the body from that position on and waits for the answer, following redirects.
  ports::Status Request(std::int64_t position, const ports::WaitHandler& on_wait) {
    for (int redirects = 0;; ++redirects) {
      if (const ports::Status status = transfer_.Start(url_, position); !status) return status;
      if (const ports::Status status = transfer_.AwaitAnswer(on_wait); !status) return status;
      const std::string target = RedirectTarget();
      if (target.empty()) return ports::Status::Success();
      if (redirects == kMaxRedirects)
        return ports::Status::Failure(internet_codes::kRedirectFailed);
      if (const ports::Status status = MoveTo(target); !status) return status;
    }
  }

  std::string RedirectTarget() const {
    constexpr std::array<std::int32_t, 5> kRedirects = {301, 302, 303, 307, 308};
    const bool is_redirect =
        std::find(kRedirects.begin(), kRedirects.end(), transfer_.StatusCode()) != kRedirects.end();
    return is_redirect ? transfer_.Header("Location") : "";
  }

  ports::Status MoveTo(const std::string& target) {
    const std::string next = ResolveUrl(url_, target);
    if (next.empty()) return ports::Status::Failure(internet_codes::kInvalidUrl);
    if (!HasScheme(next, "https")) {
      if (HasScheme(url_, "https"))
        return ports::Status::Failure(internet_codes::kHttpsToHttpRedirect);
      if (!HasScheme(next, "http"))
        return ports::Status::Failure(internet_codes::kUnrecognizedScheme);
    }
    url_ = next;
    return ports::Status::Success();
  }

  // Whether the answer is the rest of the body from that position to its very end.
  bool AnswersFrom(std::int64_t position) {
    const std::int32_t status = transfer_.StatusCode();
    if (position == 0) return status == kStatusOk;
    const ContentRange range = ParseContentRange(transfer_.Header("Content-Range"));
    if (status == kStatusPartialContent) {
      if (range.first != position) return false;
      if (range.total < 0) return true;
      if (whole_length_ >= 0 && range.total != whole_length_) return false;
      return range.last + 1 == range.total;
    }
    if (status != kStatusRangeNotSatisfiable) return false;
    const std::int64_t total = range.total >= 0 ? range.total : whole_length_;
    if (total != position) return false;
    transfer_.Stop();  // everything has arrived already; the body of this answer is an error page
    return true;
  }

  CurlTransfer transfer_;
  std::string url_;            // the one that answered, after all redirects
  std::int64_t position_ = 0;  // of the next byte to be read
  std::int64_t whole_length_ = -1;
  bool is_spoiled_ = false;  // by a failed seek; the URL has to be opened anew
  bool is_closed_ = false;
};

class CurlSession final : public ports::InternetSession {
 public:
  explicit CurlSession(std::shared_ptr<CurlCore> core) : core_(std::move(core)) {}

  ports::Outcome<std::unique_ptr<ports::InternetRequest>> OpenUrl(
      const std::string& url, std::uint32_t /*flags*/, std::uintptr_t /*context*/,
      const ports::WaitHandler& on_wait) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetRequest>>;
    if (core_ == nullptr) return Result::Failure(ports::kInternetWrongState);
    auto request = std::make_unique<CurlRequest>(core_);
    if (const ports::Status status = request->Open(url, on_wait); !status)
      return Result::Failure(status.code);
    return Result::Success(std::move(request));
  }

  ports::Status Close() override {
    core_.reset();
    return ports::Status::Success();
  }

 private:
  std::shared_ptr<CurlCore> core_;
};

class CurlInternet final : public ports::Internet {
 public:
  ports::Outcome<std::unique_ptr<ports::InternetSession>> OpenSession(
      const ports::InternetSessionOptions& options) override {
    using Result = ports::Outcome<std::unique_ptr<ports::InternetSession>>;
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK)
      return Result::Failure(internet_codes::kInternalError);
    auto core = std::make_shared<CurlCore>();
    core->options = options;
    core->multi.Reset(curl_multi_init());
    if (!core->multi) return Result::Failure(ENOMEM);
    return Result::Success(std::make_unique<CurlSession>(std::move(core)));
  }
};

}  // namespace

// Nothing blocks here, so callers measure.
std::unique_ptr<ports::Internet> MakeInternet(std::int32_t /*stall_limit*/) {
  return std::make_unique<CurlInternet>();
}

}  // namespace platform
