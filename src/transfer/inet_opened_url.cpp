#include "transfer/inet_opened_url.h"

#include <utility>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "ports/clock.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/advice.h"
#include "services/run_log.h"
#include "transfer/attempts.h"
#include "transfer/inet_errors.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr const char* kModule = "InetOpenedUrl";
constexpr std::int32_t kFirstErrorStatus = 400;
constexpr std::int32_t kLastErrorStatus = 599;

// Of an answer; it goes into the log, and a refusal decides the advice.
bool IsErrorStatus(std::int32_t code) {
  LogEvent("answer", {{"status", code}});
  const bool is_error = code >= kFirstErrorStatus && code <= kLastErrorStatus;
  if (is_error) NoteFailure(KindOfStatus(code));
  return is_error;
}

std::string JoinMessage(const std::string& message, const std::string& text) {
  return message.empty() ? text : message + std::string(kCrLf) + text;
}

}  // namespace

InetProtocol ClassifyUrl(std::string_view url) {
  constexpr std::size_t kCheckedLength = 10;
  const std::string beginning = LowerCase(url.substr(0, kCheckedLength));
  if (beginning.starts_with("http://")) return InetProtocol::kHttp;
  if (beginning.starts_with("https://")) return InetProtocol::kHttps;
  if (beginning.starts_with("ftp://")) return InetProtocol::kFtp;
  if (beginning.starts_with("www.")) return InetProtocol::kHttp;
  return InetProtocol::kUnknown;
}

InetOpenedUrl::InetOpenedUrl(ports::WaitHandler may_wait) : may_wait_(std::move(may_wait)) {}

// Destroying the port's request closes it; a failure to close no longer matters.
InetOpenedUrl::~InetOpenedUrl() = default;

void InetOpenedUrl::OpenUrl(std::shared_ptr<InetConnection> connection, const std::string& url,
                            std::uint32_t flags) try {
  CloseHandle();
  protocol_ = ClassifyUrl(url);
  const std::string message = transfer_texts::LoadingFailed(url);
  auto sent = Send(connection, url, flags);
  if (!sent) RaiseInetError(sent.code, message);
  request_ = std::move(sent.value);
  if (IsHttp()) CheckForHttpSuccess(message);
  Keep(std::move(connection), url);
} catch (...) {
  ReRaiseError(kModule, "OpenUrl");
}

bool InetOpenedUrl::TryOpenUrl(std::shared_ptr<InetConnection> connection, const std::string& url,
                               std::uint32_t flags, std::string& error_text) try {
  error_text.clear();
  CloseHandle();
  protocol_ = ClassifyUrl(url);
  const std::string message = transfer_texts::LoadingFailed(url);
  auto sent = Send(connection, url, flags);
  if (!sent) {
    error_text = GetInetErrorText(sent.code, message);
    return false;
  }
  request_ = std::move(sent.value);
  if (IsHttp() && !TryCheckForHttpSuccess(message, error_text)) return false;
  Keep(std::move(connection), url);
  return true;
} catch (...) {
  ReRaiseError(kModule, "TryOpenUrl");
}

void InetOpenedUrl::Reopen() try {
  // Copies, because OpenUrl closes first and closing releases the connection.
  OpenUrl(std::shared_ptr<InetConnection>(connection_), std::string(url_),
          open_flags_ | ports::kInternetReload);
} catch (...) {
  ReRaiseError(kModule, "Reopen");
}

void InetOpenedUrl::SetFilePos(std::int32_t position) try {
  if (request_ == nullptr) return;
  if (const ports::Status moved = Seek(position); !moved)
    RaiseInetError(moved.code, transfer_texts::SeekingUrlFailed(url_));
} catch (...) {
  ReRaiseError(kModule, "SetFilePos");
}

bool InetOpenedUrl::SetFilePosSafe(std::int32_t position, std::string& error_text) try {
  if (request_ == nullptr) return true;
  const ports::Status moved = Seek(position);
  if (!moved) error_text = GetApiErrorText(moved.code, "");
  return moved.ok;
} catch (...) {
  ReRaiseError(kModule, "SetFilePosSafe");
}

bool InetOpenedUrl::ReadChunk(void* buffer, std::uint32_t length, std::int32_t& loaded) try {
  if (request_ == nullptr) return false;
  const auto chunk = request_->Read(buffer, length);
  if (!chunk) RaiseInetError(NoteFailure(chunk.code), "");
  watch_.NoteArrived(static_cast<std::int32_t>(chunk.value.length));
  if (!chunk.value.is_end && watch_.IsStalled())
    RaiseInetError(NoteFailure(ports::kInternetTimeout), "");
  loaded = static_cast<std::int32_t>(chunk.value.length);
  return !chunk.value.is_end;
} catch (...) {
  ReRaiseError(kModule, "ReadChunk");
}

std::int32_t InetOpenedUrl::GetHttpStatusCode() try {
  if (request_ == nullptr) return 0;
  const auto code = request_->HttpStatusCode();
  if (!code) RaiseApiError(code.code);
  return code.value;
} catch (...) {
  ReRaiseError(kModule, "GetHttpStatusCode");
}

std::string InetOpenedUrl::GetHttpStatusText() try {
  if (request_ == nullptr) return {};
  auto text = request_->HttpStatusText();
  if (!text) RaiseApiError(text.code);
  return std::move(text.value);
} catch (...) {
  ReRaiseError(kModule, "GetHttpStatusText");
}

void InetOpenedUrl::CheckForHttpSuccess(const std::string& message) try {
  const std::int32_t code = GetHttpStatusCode();
  if (!IsErrorStatus(code)) return;
  const std::string text = transfer_texts::HttpError(code, GetHttpStatusText());
  CloseHandle();
  RaiseProgramError(JoinMessage(message, text));
} catch (...) {
  ReRaiseError(kModule, "CheckForHttpSuccess");
}

bool InetOpenedUrl::TryCheckForHttpSuccess(const std::string& message,
                                           std::string& error_text) try {
  const std::int32_t code = GetHttpStatusCode();
  if (!IsErrorStatus(code)) return true;
  error_text = JoinMessage(message, transfer_texts::HttpError(code, GetHttpStatusText()));
  CloseHandle();
  return false;
} catch (...) {
  ReRaiseError(kModule, "TryCheckForHttpSuccess");
}

void InetOpenedUrl::CloseHandle() try {
  if (request_ == nullptr) return;
  if (const ports::Status closed = request_->Close(); !closed) RaiseInetError(closed.code, "");
  request_.reset();
  connection_.reset();
} catch (...) {
  ReRaiseError(kModule, "CloseHandle");
}

ports::Outcome<std::unique_ptr<ports::InternetRequest>> InetOpenedUrl::Send(
    const std::shared_ptr<InetConnection>& connection, const std::string& url,
    std::uint32_t flags) {
  using Result = ports::Outcome<std::unique_ptr<ports::InternetRequest>>;
  if (connection == nullptr || connection->Handle() == nullptr)
    return Result::Failure(ports::kInternetWrongState);
  LogEvent("open", {{"address", url}});
  tmw::NoteFailure(FailureKind::kOther);
  auto sent = connection->Handle()->OpenUrl(url, flags, reinterpret_cast<std::uintptr_t>(&context_),
                                            BeginWaiting());
  if (!sent) return Result::Failure(NoteFailure(sent.code));
  watch_.Start();
  return sent;
}

ports::Status InetOpenedUrl::Seek(std::int32_t position) {
  const ports::Status moved = request_->Seek(position, BeginWaiting());
  if (!moved) return ports::Status::Failure(NoteFailure(moved.code));
  watch_.Start();
  return moved;
}

// A wait that has been given up because the server stalls is no cancel.
ports::SystemCode InetOpenedUrl::NoteFailure(ports::SystemCode code) {
  const bool has_stalled = code == ports::kInternetCancelled && watch_.IsStalled();
  failure_ = has_stalled ? ports::kInternetTimeout : code;
  LogEvent("broken", {{"code", failure_}});
  tmw::NoteFailure(KindOfNumber(failure_));
  return failure_;
}

ports::WaitHandler InetOpenedUrl::BeginWaiting() {
  failure_ = 0;
  watch_.Start();
  return [this] { return MayWait() && !watch_.IsStalled(); };
}

bool InetOpenedUrl::HasBrokenOff() const {
  return MeansBrokenOff(failure_);
}

bool InetOpenedUrl::IsHttp() const {
  return protocol_ == InetProtocol::kHttp || protocol_ == InetProtocol::kHttps;
}

void InetOpenedUrl::Keep(std::shared_ptr<InetConnection> connection, const std::string& url) {
  connection_ = std::move(connection);
  url_ = url;
}

bool InetOpenedUrl::MayWait() {
  const std::int64_t begin = ports::CurrentPorts().clock->TickCount();
  bool may_wait = true;
  if (may_wait_) {
    may_wait = may_wait_();
  } else {
    ports::CurrentPorts().front_end->RunPendingEvents();
  }
  watch_.Excuse(ports::CurrentPorts().clock->TickCount() - begin);
  return may_wait;
}

}  // namespace tmw
