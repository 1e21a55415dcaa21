#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "ports/internet.h"
#include "transfer/inet_connection.h"
#include "transfer/stall_watch.h"

namespace tmw {

enum class InetProtocol : std::int32_t { kUnknown = 0, kHttp = 1, kFtp = 2, kHttps = 3 };

// By the URL's first characters, whatever their case; "www." is HTTP.
InetProtocol ClassifyUrl(std::string_view url);

// An opened URL, read from its beginning or from a given position. Pending window events are
// processed while an opening or a seek waits for the server; between reads the reader processes
// them through MayWait. A server that stalls is a failure of any of these.
class InetOpenedUrl {
 public:
  InetOpenedUrl() = default;
  // may_wait is called about every tenth of a second while an opening or a seek waits and processes
  // pending events itself; if it returns false, the operation fails. May be empty.
  explicit InetOpenedUrl(ports::WaitHandler may_wait);
  InetOpenedUrl(const InetOpenedUrl&) = delete;
  InetOpenedUrl& operator=(const InetOpenedUrl&) = delete;
  ~InetOpenedUrl();

  // HTTP statuses from 400 to 599 are failures, raised with the status and its phrase.
  void OpenUrl(std::shared_ptr<InetConnection> connection, const std::string& url,
               std::uint32_t flags);
  [[nodiscard]] bool TryOpenUrl(std::shared_ptr<InetConnection> connection, const std::string& url,
                                std::uint32_t flags, std::string& error_text);

  // Opens the last URL on the last connection again, from the beginning, past any cache.
  void Reopen();

  // Does nothing while closed.
  void SetFilePos(std::int32_t position);
  // After a failed seek the request is unusable until Reopen.
  [[nodiscard]] bool SetFilePosSafe(std::int32_t position, std::string& error_text);

  // Returns false at the end of the body and while closed; loaded is unchanged while closed. True
  // with loaded 0 means that no bytes have arrived yet.
  bool ReadChunk(void* buffer, std::uint32_t length, std::int32_t& loaded);

  std::int32_t GetHttpStatusCode();  // 0 while closed
  std::string GetHttpStatusText();   // "" while closed
  void CheckForHttpSuccess(const std::string& message);
  [[nodiscard]] bool TryCheckForHttpSuccess(const std::string& message, std::string& error_text);

  void CloseHandle();

  // To be called between reads: processes pending events, returns false if the reader should give
  // up. The time that this takes does not count as the server's silence.
  bool MayWait();

  // In bytes, as announced; -1 if it was not, and while closed.
  std::int64_t WholeLength() const { return request_ == nullptr ? -1 : request_->WholeLength(); }

  // Whether the last failure was a connection that could not be made or that broke off.
  bool HasBrokenOff() const;
  const std::string& Url() const { return url_; }  // of the last successful opening

  // nullptr while closed.
  ports::InternetRequest* Handle() const { return request_.get(); }

 private:
  ports::Outcome<std::unique_ptr<ports::InternetRequest>> Send(
      const std::shared_ptr<InetConnection>& connection, const std::string& url,
      std::uint32_t flags);
  bool IsHttp() const;
  ports::Status Seek(std::int32_t position);
  ports::SystemCode NoteFailure(ports::SystemCode code);
  ports::WaitHandler BeginWaiting();
  void Keep(std::shared_ptr<InetConnection> connection, const std::string& url);

  ports::WaitHandler may_wait_;
  std::string url_;
  std::uint32_t open_flags_ = 0;
  StallWatch watch_;
  ports::SystemCode failure_ = 0;  // of the last operation that failed
  InetProtocol protocol_ = InetProtocol::kUnknown;
  std::int32_t context_ = 0;  // its address is the request's context value
  // Declared before the request: a request is closed before its session.
  std::shared_ptr<InetConnection> connection_;
  std::unique_ptr<ports::InternetRequest> request_;
};

}  // namespace tmw
