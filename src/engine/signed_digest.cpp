#include "engine/signed_digest.h"

#include <optional>

#include "engine/engine_texts.h"
#include "engine/limits.h"
#include "engine/serial_file.h"
#include "engine/trust_lines.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "foundation/utc_day.h"
#include "packages/signature_name.h"
#include "ports/clock.h"
#include "ports/ports.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "signature/verification.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

std::string JudgementOf(const signature::Verification& result, const std::string& url) {
  switch (result.verdict) {
    case signature::Verdict::kGood:
      break;
    case signature::Verdict::kMalformed:
      return engine_texts::SignatureMalformed(url);
    case signature::Verdict::kOtherKind:
      return engine_texts::SignatureOfOtherKind(url);
    case signature::Verdict::kUnknownKey:
      return engine_texts::SignedByUnknownKey(url, signature::KeyIdText(result.key_id));
    case signature::Verdict::kDiffers:
      return engine_texts::SignatureDiffers(url);
  }
  return {};
}

// A network that wants a login answers every request with a page of its own.
bool IsWebPage(const std::string& bytes) {
  const std::size_t start = bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n");
  return start != std::string::npos && bytes[start] == '<';
}

// Tries one server after the other.
class PairLoader {
 public:
  PairLoader(UpdaterEvents& events, const std::vector<signature::PublicKey>& keys,
             const std::string& local)
      : events_(events), keys_(keys), local_(local) {}

  // The bytes of a digest with a good signature. Nothing if this server has none.
  std::optional<std::string> Load(const std::string& server) {
    const std::string url = server + std::string(names::kDigestFile);
    std::string reason;
    if (!Fetch(url, local_, kMaxSmallFile, reason)) return Note(reason);
    is_loaded_ = true;
    const std::string bytes = ReadFileBytes(local_);
    if (IsWebPage(bytes)) {
      web_page_ = url;
      return std::nullopt;
    }
    const std::string signature_url = server + SignatureName(bytes);
    const std::string signature_file = local_ + std::string(names::kSignatureEnding);
    if (!Fetch(signature_url, signature_file, signature::kMaxSignatureFile, reason))
      return Note(engine_texts::SignatureNotLoaded(reason));
    const signature::Verification result =
        signature::Verify(bytes, ReadFileBytes(signature_file), keys_);
    static_cast<void>(DeleteFile(signature_file, true));
    const bool is_good = result.verdict == signature::Verdict::kGood;
    LogEvent("signature", {{"address", signature_url},
                           {"key", signature::KeyIdText(result.key_id)},
                           {"good", is_good},
                           {"comment", result.trusted_comment}});
    if (!is_good) return Note(JudgementOf(result, url));
    return bytes;
  }

  // Reports why no server had a good pair.
  void ReportFailure() const {
    if (!web_page_.empty()) {
      DownloadError(engine_texts::WebPageInstead(web_page_), FailureKind::kLoginPage);
    } else if (is_loaded_) {
      DownloadError(engine_texts::DigestNotTrusted(reasons_), FailureKind::kSignature);
    } else {
      DownloadError(engine_texts::DigestNotLoaded(reasons_));  // the transfer has noted the kind
    }
  }

 private:
  bool Fetch(const std::string& url, const std::string& file, std::int64_t max_bytes,
             std::string& reason) {
    return TryDownloadFileFromTwoUrls(url, "", file, reason, max_bytes,
                                      [this] { return !events_.CancelPressed(); });
  }

  std::nullopt_t Note(const std::string& reason) {
    if (!reasons_.empty()) reasons_ += kCrLf;
    reasons_ += reason;
    return std::nullopt;
  }

  UpdaterEvents& events_;
  const std::vector<signature::PublicKey>& keys_;
  const std::string& local_;
  bool is_loaded_ = false;  // a digest, from any server
  std::string web_page_;    // the address that gave one
  std::string reasons_;     // one a line
};

}  // namespace

bool FetchSignedDigest(UpdaterEvents& events, const UpdateServers& servers,
                       const std::string& product_code,
                       const std::vector<signature::PublicKey>& keys, const std::string& local,
                       std::string& text) {
  PairLoader loader(events, keys, local);
  std::optional<std::string> bytes = loader.Load(servers.Url);
  if (!bytes && !servers.FallbackUrl.empty() && !events.CancelPressed())
    bytes = loader.Load(servers.FallbackUrl);
  if (!bytes) {
    if (!events.CancelPressed()) loader.ReportFailure();
    return false;
  }
  text = FileTextOf(*bytes);
  std::int64_t serial = 0;
  std::string reason;
  if (!TryJudgeDigest(text, product_code, HighestSerial(),
                      ports::CurrentPorts().clock->UtcSeconds(), serial, reason)) {
    DownloadError(reason, FailureKind::kSignature);
    return false;
  }
  RememberSerial(serial);
  return true;
}

bool TryJudgeDigest(const std::string& text, const std::string& product_code,
                    std::int64_t highest_serial, std::int64_t now, std::int64_t& serial,
                    std::string& reason) {
  TrustLines trust;
  if (!TryReadTrustLines(Split(text, kCrLf), trust, reason)) return false;
  serial = trust.Serial;
  const std::int64_t today = UtcDayOf(now);
  if (trust.Product != product_code) {
    reason = engine_texts::SignedForOtherProduct(trust.Product);
  } else if (serial < highest_serial) {
    reason = engine_texts::SerialTooLow(serial, highest_serial);
  } else if (today > trust.LastDay) {
    reason = engine_texts::DigestExpired(UtcDayText(trust.LastDay), UtcDayText(today));
  }
  return reason.empty();
}

}  // namespace tmw
