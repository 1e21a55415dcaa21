#include "engine/second_try.h"

#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "transfer/inet.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

constexpr std::int64_t kRest = 1000;  // milliseconds; events without a question take less

// The error of a connection that breaks off does not say which file was being loaded.
ProgramError WithUrl(ProgramError error, const std::string& url) {
  if (error.Description.find(url) == std::string::npos) {
    error.Description = transfer_texts::LoadingFailed(url) + std::string(kCrLf) + error.Description;
  }
  return error;
}

}  // namespace

bool SecondTry::Run(const std::string& url, const std::function<bool()>& transfer) {
  for (bool is_second = false;; is_second = true) {
    has_rested_ = false;
    try {
      return transfer();
    } catch (...) {
      if (events_.CancelPressed()) return false;
      if (is_second || !has_rested_) throw WithUrl(CurrentError(), url);
    }
  }
}

bool SecondTry::MayGoOn() {
  const std::int64_t begin = clock_.TickCount();
  const bool is_cancelled = events_.CancelPressed();
  if (clock_.TickCount() - begin >= kRest) has_rested_ = true;
  return !is_cancelled;
}

bool SecondTry::Fetch(const std::string& url, const std::string& local, std::int64_t max_bytes) {
  return Run(url, [&] {
    DownloadFile(url, local, max_bytes, [this] { return MayGoOn(); });
    return true;
  });
}

}  // namespace tmw
