#include "publish/signing_arguments.h"

#include <cstdint>

#include "foundation/number_text.h"
#include "foundation/utc_day.h"
#include "publish/publish_texts.h"
#include "tools/fill.h"

namespace publish {

using tools::Fill;

std::unique_ptr<Signer> MakeSigner(const tools::Arguments& arguments) {
  constexpr std::int64_t kUsualDays = 180;
  const auto key = arguments.Value("--sign");
  if (!key) {
    for (const tools::Option& option : texts::kSigningOptions) {
      if (arguments.Has(option.name))
        throw tools::UsageError(Fill(texts::kNeedsSign, {option.name}));
    }
    return nullptr;
  }
  SigningOptions options;
  options.key_file = *key;
  options.password_file = arguments.Value("--password-file").value_or("");
  options.last_day = Today() + kUsualDays;
  if (const auto expires = arguments.Value("--expires")) {
    constexpr std::int64_t kMostDays = 36'500;
    const auto days = tmw::ReadWholeNumber(*expires);
    const auto day = days && *days <= kMostDays ? Today() + *days : tmw::ReadUtcDay(*expires);
    if (!day || *day < Today()) throw tools::UsageError(texts::kExpiresNeedsDay);
    options.last_day = *day;
  }
  if (const auto serial = arguments.Value("--serial")) {
    options.serial = tmw::ReadWholeNumber(*serial);
    if (options.serial.value_or(0) < 1) throw tools::UsageError(texts::kSerialNeedsNumber);
  }
  return std::make_unique<Signer>(options);
}

}  // namespace publish
