#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/records.h"

// The version digest, "TMW_version.dat". Lines separated by CR LF:
//   1      version of the update, exactly four numbers
//   2      oldest updater that may process it; major and minor number count
//   later  "updater:name|size|hash", one for each file of the updater itself, with further fields
//          ignored; the lines of trust_lines.h; other lines are ignored
namespace tmw {

// Reads a digest for an updater of that version. Of an updater that is too old nothing else is
// read. Returns false with the reason if the text is faulty; a component's name that the path guard
// refuses is raised.
[[nodiscard]] bool TryParseDigest(const std::string& text, std::int32_t own_major,
                                  std::int32_t own_minor, Digest& digest, std::string& reason);

// Minor numbers are compared whenever the own major one is not smaller, even when it is greater.
UpdaterVersionCheck CheckForUpdaterVersion(std::string_view required, std::int32_t own_major,
                                           std::int32_t own_minor);

// Returns false unless the line is a version of exactly four numbers.
[[nodiscard]] bool TryParseUpdateVersion(std::string_view line,
                                         std::array<std::int32_t, 4>& numbers);

// Appends the components of the lines from the third on; stops at the first faulty line.
[[nodiscard]] bool TryParseUpdaterDigestPart(const std::vector<std::string>& lines,
                                             std::vector<WuUpdaterComponent>& components,
                                             std::string& reason);

}  // namespace tmw
