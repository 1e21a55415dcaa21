#include "engine/run_messages.h"

#include <cmath>
#include <cstdint>

#include "engine/engine_texts.h"
#include "foundation/error_handling.h"
#include "ports/ports.h"
#include "ports/system_info.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "services/run_outcome.h"
#include "services/updater_settings.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miUpdaterUtils";

constexpr double kKilo = 1024;
constexpr double kMega = kKilo * 1024;
constexpr double kGiga = kMega * 1024;
constexpr double kSwitch = 800;  // of the smaller unit
constexpr double kLastPlainByte = 2047;

// "0.0" with the user's decimal separator, half away from zero.
std::string OneDecimal(double value) {
  const auto tenths = static_cast<std::int64_t>(std::floor(value * 10 + 0.5));
  return std::to_string(tenths / 10) + ports::CurrentPorts().system_info->DecimalSeparator() +
         std::to_string(tenths % 10);
}

}  // namespace

bool AskYesNo(const std::string& question, const std::string& title) try {
  if (GetUpdaterSettings().NoFinalMessage) {
    LogEvent("answer", {{"title", title}, {"yes", true}, {"unattended", true}});
    return true;
  }
  return AskQuestion(title.c_str(), question);
} catch (...) {
  ReRaiseError(kModule, "AskYesNo");
}

bool AskForDownload(std::int32_t volume) {
  const bool is_wanted =
      AskYesNo(engine_texts::VolumeQuestion(GetFriendlySizeString(volume, false)),
               box_titles::kProductUpdate);
  if (!is_wanted) SetRunOutcome(RunOutcome::kRefused);
  return is_wanted;
}

bool AskForRepair(const std::string& version) {
  const bool is_wanted =
      AskQuestion(box_titles::kUpdateNotNeeded, engine_texts::SameVersionQuestion(version));
  if (!is_wanted) SetRunOutcome(RunOutcome::kDone);
  return is_wanted;
}

bool HasWork(const UpdateNeed& need, bool is_client) {
  if (need.Files || (need.Tables && !is_client)) return true;
  SetRunOutcome(need.Tables ? RunOutcome::kRefused : RunOutcome::kDone);
  ShowInformation(box_titles::kUpdaterProgram,
                  need.Tables ? engine_texts::kServerComputerOnly : engine_texts::kNothingToDo);
  return false;
}

std::string GetFriendlySizeString(double bytes, bool is_short) try {
  if (bytes > kSwitch * kMega)
    return OneDecimal(bytes / kGiga) +
           (is_short ? engine_texts::kShortGiga : engine_texts::kGigabytes);
  if (bytes > kSwitch * kKilo)
    return OneDecimal(bytes / kMega) +
           (is_short ? engine_texts::kShortMega : engine_texts::kMegabytes);
  if (bytes > kLastPlainByte)
    return OneDecimal(bytes / kKilo) +
           (is_short ? engine_texts::kShortKilo : engine_texts::kKilobytes);
  return std::to_string(static_cast<std::int64_t>(bytes)) + (is_short ? "" : engine_texts::kBytes);
} catch (...) {
  ReRaiseError(kModule, "GetFriendlySizeString");
}

}  // namespace tmw
