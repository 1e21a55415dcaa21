#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/records.h"

// The lines of the version digest that say what it announces and for how long:
//   manifest:SIZE|HASH     the package of the manifest, bytes and SHA-256
//   product:TMW
//   serial:NUMBER          grows with every digest that is signed
//   expires:YYYY-MM-DD     the last day, UTC
// Their names are recognised in any letter case, what follows them is strict. Every updater heeds
// the first one, if it is there; an updater that has keys demands all four.
namespace tmw {

// Reads the line "manifest:", if there is one. Returns false with the reason if it is malformed or
// comes twice.
[[nodiscard]] bool TryReadManifestLine(const std::vector<std::string>& lines,
                                       std::optional<BoundPackage>& manifest, std::string& reason);

// What a signature vouches for, besides the manifest.
struct TrustLines {
  std::string Product;
  std::int64_t Serial = 0;
  std::int64_t LastDay = 0;  // days since 1970-01-01
};

// Reads the other three lines. Returns false with the reason if one of the four is missing, is
// malformed or comes twice.
[[nodiscard]] bool TryReadTrustLines(const std::vector<std::string>& lines, TrustLines& trust,
                                     std::string& reason);

}  // namespace tmw
