#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/unique_handle.h"
#include "ports/internet.h"

namespace platform {

struct MultiTraits {
  using Type = CURLM*;
  static Type Invalid() { return nullptr; }
  static void Close(Type multi) { curl_multi_cleanup(multi); }
};
struct EasyTraits {
  using Type = CURL*;
  static Type Invalid() { return nullptr; }
  static void Close(Type easy) { curl_easy_cleanup(easy); }
};

// What a session and its transfers share. The multi handle keeps the connections, so that one
// request follows another on the same connection.
struct CurlCore {
  ports::InternetSessionOptions options;
  tmw::UniqueHandle<MultiTraits> multi;
};

// One request to one URL and its answer, without redirects, read by pulling: nothing runs between
// calls, and a call drives the transfer only until something new has arrived. Can be restarted any
// number of times. Failures are codes of the internet layer.
class CurlTransfer {
 public:
  explicit CurlTransfer(std::shared_ptr<CurlCore> core);
  CurlTransfer(const CurlTransfer&) = delete;
  CurlTransfer& operator=(const CurlTransfer&) = delete;
  ~CurlTransfer();

  // Requests the body from that position on (HTTP: Range, FTP: REST). A running transfer is stopped
  // and its bytes are dropped.
  ports::Status Start(const std::string& url, std::int64_t position);
  void Stop();

  // Waits until the answer's headers are complete or, without headers, for its first byte.
  ports::Status AwaitAnswer(const ports::WaitHandler& on_wait);

  // Runs the transfer until its answer, bytes or its end have arrived, or until a time slice has
  // passed.
  void Pump();

  // The answer. An FTP file that came through an HTTP proxy has an HTTP answer too.
  bool IsHttp() const { return is_http_; }
  std::int32_t StatusCode() const { return status_code_; }
  const std::string& StatusText() const { return status_text_; }  // the server's bytes
  std::string Header(const char* name) const;                     // "" when there is none
  std::int64_t AnnouncedLength() const;  // -1 if the server does not announce it

  // The body.
  bool HasBytes() const { return taken_ < buffer_.size(); }
  std::uint32_t Take(void* buffer, std::uint32_t length);
  bool IsDone() const { return is_done_; }
  ports::SystemCode EndCode() const { return end_code_; }  // 0: the whole body has arrived

 private:
  template <typename T>
  void Set(CURLoption option, T value) {
    curl_easy_setopt(easy_.Get(), option, value);
  }
  void SetOptions(const std::string& url, std::int64_t position);
  void SetCertificates();
  void SetProxy(const std::string& url);
  void Resume();
  void CollectEnded();
  void NoteEnd(CURLcode result);
  void NoteStatusLine(std::string_view line);
  static std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* owner);
  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* owner);

  std::shared_ptr<CurlCore> core_;
  tmw::UniqueHandle<EasyTraits> easy_;
  bool is_added_ = false;
  std::vector<char> buffer_;  // received, the first taken_ bytes already given out
  std::size_t taken_ = 0;
  std::size_t header_bytes_ = 0;
  bool is_http_ = false;
  bool is_answered_ = false;
  bool is_done_ = false;
  bool is_paused_ = false;
  std::int32_t status_code_ = 0;
  std::string status_text_;
  ports::SystemCode end_code_ = 0;
  ports::SystemCode abort_code_ = 0;  // why a callback of ours ended the transfer
};

}  // namespace platform
