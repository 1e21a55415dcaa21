#include "platform/linux/curl_transfer.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "platform/linux/curl_urls.h"
#include "platform/linux/internet_codes.h"
#include "platform/linux/proxy_choice.h"

namespace platform {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSlice{100};
constexpr std::size_t kMaxHeaderBytes = std::size_t{256} * 1024;
constexpr std::int32_t kFirstFinalStatus = 200;

// Received bytes that have not been read yet. Past the limit the transfer pauses, so that a fast
// server fills the network's buffers and not our memory.
constexpr std::size_t kBufferLimit = std::size_t{256} * 1024;
constexpr long kReceiveBufferSize = 128L * 1024;

// Empty counts as unset: users clear a variable that way.
const char* Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr || *value == '\0' ? nullptr : value;
}

}  // namespace

CurlTransfer::CurlTransfer(std::shared_ptr<CurlCore> core) : core_(std::move(core)) {
  buffer_.reserve(kBufferLimit + CURL_MAX_WRITE_SIZE);
}

CurlTransfer::~CurlTransfer() {
  Stop();
}

ports::Status CurlTransfer::Start(const std::string& url, std::int64_t position) {
  Stop();
  easy_.Reset(curl_easy_init());
  if (!easy_) return ports::Status::Failure(ENOMEM);
  header_bytes_ = 0;
  is_http_ = is_answered_ = is_done_ = is_paused_ = false;
  status_code_ = 0;
  status_text_.clear();
  end_code_ = abort_code_ = 0;
  SetOptions(url, position);
  if (curl_multi_add_handle(core_->multi.Get(), easy_.Get()) != CURLM_OK)
    return ports::Status::Failure(internet_codes::kInternalError);
  is_added_ = true;
  return ports::Status::Success();
}

void CurlTransfer::Stop() {
  if (is_added_) curl_multi_remove_handle(core_->multi.Get(), easy_.Get());
  is_added_ = false;
  easy_.Reset();
  buffer_.clear();
  taken_ = 0;
  is_done_ = true;
}

// libcurl ignores SIGPIPE while it works, but only as long as CURLOPT_NOSIGNAL is not set.
void CurlTransfer::SetOptions(const std::string& url, std::int64_t position) {
  Set(CURLOPT_URL, url.c_str());
  Set(CURLOPT_PROTOCOLS_STR, "http,https,ftp");
  Set(CURLOPT_USERAGENT, core_->options.agent.c_str());
  Set(CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});  // later ones have no reason phrase
  Set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
  Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  Set(CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
  Set(CURLOPT_BUFFERSIZE, kReceiveBufferSize);
#if LIBCURL_VERSION_NUM >= 0x075700
  Set(CURLOPT_QUICK_EXIT, 1L);  // giving up does not wait for the resolver's thread
#endif
  Set(CURLOPT_PRIVATE, static_cast<void*>(this));
  Set(CURLOPT_WRITEFUNCTION, &CurlTransfer::OnBody);
  Set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  Set(CURLOPT_HEADERFUNCTION, &CurlTransfer::OnHeader);
  Set(CURLOPT_HEADERDATA, static_cast<void*>(this));
  SetCertificates();
  SetProxy(url);
  if (position == 0) return;
  if (HasScheme(url, "ftp")) {
    Set(CURLOPT_RESUME_FROM_LARGE, static_cast<curl_off_t>(position));
  } else {
    Set(CURLOPT_RANGE, (std::to_string(position) + "-").c_str());
  }
}

// The variables that the curl program knows; without them the system's store.
void CurlTransfer::SetCertificates() {
  const char* bundle = Variable("CURL_CA_BUNDLE");
  if (bundle == nullptr) bundle = Variable("SSL_CERT_FILE");
  if (bundle != nullptr) Set(CURLOPT_CAINFO, bundle);
  const char* const folder = Variable("SSL_CERT_DIR");
  if (folder != nullptr) Set(CURLOPT_CAPATH, folder);
}

// Without CURLOPT_PROXY libcurl looks into the proxy environment variables.
void CurlTransfer::SetProxy(const std::string& url) {
  const ports::InternetSessionOptions& options = core_->options;
  if (options.access_type == ports::kAccessDirect) Set(CURLOPT_PROXY, "");
  if (options.access_type != ports::kAccessProxy) return;
  const UrlParts parts = SplitUrl(url);
  const std::string proxy =
      ChooseProxy(options.proxy, options.proxy_bypass, parts.scheme, parts.host);
  Set(CURLOPT_PROXY, proxy.c_str());
  Set(CURLOPT_NOPROXY, "");  // the bypass list has been consulted
}

ports::Status CurlTransfer::AwaitAnswer(const ports::WaitHandler& on_wait) {
  for (;;) {
    Pump();
    if (is_answered_) return ports::Status::Success();
    if (is_done_)
      return end_code_ == 0 ? ports::Status::Success() : ports::Status::Failure(end_code_);
    if (on_wait && !on_wait()) return ports::Status::Failure(ports::kInternetCancelled);
  }
}

void CurlTransfer::Pump() {
  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const bool was_answered = is_answered_;
  Resume();
  for (;;) {
    int running = 0;
    curl_multi_perform(core_->multi.Get(), &running);
    CollectEnded();
    if (HasBytes() || is_done_ || is_answered_ != was_answered) return;
    const auto passed = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    if (passed >= kSlice) return;
    const auto rest = static_cast<int>((kSlice - passed).count());
    curl_multi_poll(core_->multi.Get(), nullptr, 0, rest, nullptr);
  }
}

void CurlTransfer::Resume() {
  if (!is_paused_) return;
  is_paused_ = false;
  curl_easy_pause(easy_.Get(), CURLPAUSE_CONT);
}

// The multi handle reports the end of every transfer; each one records its own.
void CurlTransfer::CollectEnded() {
  int left = 0;
  while (const CURLMsg* const message = curl_multi_info_read(core_->multi.Get(), &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    void* owner = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &owner);
    static_cast<CurlTransfer*>(owner)->NoteEnd(message->data.result);
  }
}

void CurlTransfer::NoteEnd(CURLcode result) {
  is_done_ = true;
  if (result == CURLE_OK) return;
  end_code_ = abort_code_ != 0 ? abort_code_ : internet_codes::FromCurl(result, easy_.Get());
}

std::size_t CurlTransfer::OnBody(char* data, std::size_t size, std::size_t count, void* owner) {
  auto& self = *static_cast<CurlTransfer*>(owner);
  const std::size_t length = size * count;
  self.is_answered_ = true;
  if (self.HasBytes() && self.buffer_.size() + length > kBufferLimit) {
    self.is_paused_ = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  self.buffer_.insert(self.buffer_.end(), data, data + length);
  return length;
}

std::size_t CurlTransfer::OnHeader(char* data, std::size_t size, std::size_t count, void* owner) {
  auto& self = *static_cast<CurlTransfer*>(owner);
  const std::string_view line(data, size * count);
  self.header_bytes_ += line.size();
  if (self.header_bytes_ > kMaxHeaderBytes) {
    self.abort_code_ = internet_codes::kInvalidServerResponse;
    return 0;
  }
  if (line.starts_with("HTTP/")) self.NoteStatusLine(line);
  // The blank line that ends a final answer's headers; interim answers (1xx) are waited out.
  if ((line == "\r\n" || line == "\n") && self.status_code_ >= kFirstFinalStatus)
    self.is_answered_ = true;
  return line.size();
}

// "HTTP/1.1 404 Not Found"; the phrase may be missing.
void CurlTransfer::NoteStatusLine(std::string_view line) {
  while (line.ends_with('\n') || line.ends_with('\r'))
    line.remove_suffix(1);
  long code = 0;
  curl_easy_getinfo(easy_.Get(), CURLINFO_RESPONSE_CODE, &code);
  is_http_ = true;
  status_code_ = static_cast<std::int32_t>(code);
  status_text_.clear();
  const std::size_t after_version = line.find(' ');
  if (after_version == std::string_view::npos) return;
  const std::size_t after_code = line.find(' ', after_version + 1);
  if (after_code != std::string_view::npos) status_text_ = line.substr(after_code + 1);
}

std::string CurlTransfer::Header(const char* name) const {
  curl_header* header = nullptr;
  if (!is_http_ || !easy_) return {};
  if (curl_easy_header(easy_.Get(), name, 0, CURLH_HEADER, -1, &header) != CURLHE_OK) return {};
  return header->value;
}

std::int64_t CurlTransfer::AnnouncedLength() const {
  curl_off_t length = -1;
  curl_easy_getinfo(easy_.Get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
  return length;
}

std::uint32_t CurlTransfer::Take(void* buffer, std::uint32_t length) {
  const std::size_t count = std::min<std::size_t>(length, buffer_.size() - taken_);
  std::memcpy(buffer, buffer_.data() + taken_, count);
  taken_ += count;
  if (taken_ == buffer_.size()) {
    buffer_.clear();
    taken_ = 0;
  }
  return static_cast<std::uint32_t>(count);
}

}  // namespace platform
