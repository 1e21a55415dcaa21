#include "engine/fetching.h"

#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "transfer/inet.h"
#include "transfer/transfer_texts.h"

namespace tmw {
namespace {

// The error of a connection that breaks off does not say which file was being loaded.
ProgramError WithUrl(ProgramError error, const std::string& url) {
  if (error.Description.find(url) == std::string::npos) {
    error.Description = transfer_texts::LoadingFailed(url) + std::string(kCrLf) + error.Description;
  }
  return error;
}

}  // namespace

bool RunTransfer(UpdaterEvents& events, const std::string& url,
                 const std::function<bool()>& transfer) {
  try {
    return transfer();
  } catch (...) {
    if (events.CancelPressed()) return false;
    throw WithUrl(CurrentError(), url);
  }
}

bool FetchFile(UpdaterEvents& events, const std::string& url, const std::string& local,
               std::int64_t max_bytes) {
  return RunTransfer(events, url, [&] {
    DownloadFile(url, local, max_bytes, [&events] { return !events.CancelPressed(); });
    return true;
  });
}

}  // namespace tmw
