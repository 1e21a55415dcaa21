#include "engine/updater_utils.h"

#include <cmath>
#include <cstdint>

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miUpdaterUtils";

constexpr double kKilo = 1024;
constexpr double kMega = kKilo * 1024;
constexpr double kGiga = kMega * 1024;
constexpr double kSwitch = 800;  // of the smaller unit
constexpr double kLastPlainByte = 2047;

// "0.0" with the Russian decimal separator, half away from zero.
std::string OneDecimal(double value) {
  const auto tenths = static_cast<std::int64_t>(std::floor(value * 10 + 0.5));
  return std::to_string(tenths / 10) + "," + std::to_string(tenths % 10);
}

}  // namespace

std::string GetFriendlySizeString(double bytes, bool is_short) try {
  if (bytes > kSwitch * kMega) return OneDecimal(bytes / kGiga) + (is_short ? " ГБ" : " гигабайт");
  if (bytes > kSwitch * kKilo) return OneDecimal(bytes / kMega) + (is_short ? " М" : " мегабайт");
  if (bytes > kLastPlainByte) return OneDecimal(bytes / kKilo) + (is_short ? " К" : " килобайт");
  return std::to_string(static_cast<std::int64_t>(bytes)) + (is_short ? "" : "байт");
} catch (...) {
  ReRaiseError(kModule, "GetFriendlySizeString");
}

bool AskYesNo(const std::string& question, const std::string& title) try {
  if (GetUpdaterSettings().NoFinalMessage) return true;
  return ports::CurrentPorts().front_end->AskYesNo(title, question);
} catch (...) {
  ReRaiseError(kModule, "AskYesNo");
}

bool GetNoRegisteringParam() try {
  static const bool kValue = ReadRegistryBoolean(true, std::string(names::kDevelopmentKey),
                                                 std::string(names::kNoRegisteringSetting), false);
  return kValue;
} catch (...) {
  ReRaiseError(kModule, "GetNoRegisteringParam");
}

}  // namespace tmw
