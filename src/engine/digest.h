#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/records.h"

// The version digest, "TMW_version.dat". Lines separated by CR LF:
//   1  version of the update, exactly four numbers
//   2  oldest updater that may process it; major and minor count
//   3… "updater:name|size|hash" (fields beyond are ignored), one for each file of the updater
//   itself;
//      other lines are ignored
namespace tmw {

// What the required version means for this updater.
enum class UpdaterVersionCheck {
  kUnreadable,    // the line is no version
  kTooOld,        // an older major number: nothing can be done automatically
  kUpdateNeeded,  // the updater must replace itself first
  kGood,
};

// Minor numbers are compared whenever the own major one is not smaller, even when it is greater.
UpdaterVersionCheck CheckUpdaterVersion(std::string_view required, std::int32_t own_major,
                                        std::int32_t own_minor);

// False unless the line is a version of exactly four numbers.
bool ParseUpdateVersion(std::string_view line, std::array<std::int32_t, 4>& numbers);

enum class ComponentLineError { kNone, kEmpty, kTooFewFields, kBadSize };

// The components of the lines from the third on; stops at the first faulty line.
ComponentLineError ParseComponentLines(const std::vector<std::string>& lines,
                                       std::vector<WuUpdaterComponent>& components);

}  // namespace tmw
