#include "jet/file/packed_text.h"

#include <algorithm>
#include <cstddef>

#include "foundation/encodings.h"
#include "jet/errors.h"

namespace jet::file {
namespace {

constexpr std::string_view kMark{"\xFF\xFE", 2};
constexpr std::size_t kShortestCompressed = 3;  // characters; below, nothing would be gained

char16_t Wide(char byte) {
  return static_cast<unsigned char>(byte);
}

std::u16string Decompress(std::string_view bytes) {
  std::u16string units;
  units.reserve(bytes.size());
  bool is_compressed = true;
  std::size_t i = 0;
  while (i < bytes.size()) {
    if (bytes[i] == 0) {
      is_compressed = !is_compressed;
      ++i;
    } else if (is_compressed) {
      units.push_back(Wide(bytes[i++]));
    } else if (i + 1 < bytes.size()) {
      units.push_back(static_cast<char16_t>(Wide(bytes[i]) | (Wide(bytes[i + 1]) << 8U)));
      i += 2;
    } else {
      break;
    }
  }
  return units;
}

}  // namespace

std::u16string UnpackUnits(std::string_view stored) {
  if (!stored.starts_with(kMark)) return tmw::BytesToUtf16(stored);
  return Decompress(stored.substr(kMark.size()));
}

std::string UnpackText(std::string_view stored) {
  return tmw::Utf16ToUtf8(UnpackUnits(stored));
}

std::size_t CountUnits(std::string_view stored) {
  if (!stored.starts_with(kMark)) return stored.size() / sizeof(char16_t);
  stored.remove_prefix(kMark.size());
  if (stored.find('\0') == std::string_view::npos) return stored.size();
  return Decompress(stored).size();
}

bool CanPackText(std::string_view text) {
  constexpr std::string_view kMarkInText = "\xEF\xBB\xBF";
  if (!text.starts_with(kMarkInText)) return true;
  const std::u16string units = tmw::Utf8ToUtf16(text);
  return std::none_of(units.begin(), units.end(),
                      [](char16_t unit) { return (unit & 0xFFU) == 0; });
}

std::string PackText(std::string_view text, bool may_compress) {
  const std::u16string units = tmw::Utf8ToUtf16(text);
  const bool fits = std::all_of(units.begin(), units.end(),
                                [](char16_t unit) { return unit > 0 && unit < 0x100; });
  // A text whose first character is U+FEFF would be taken for a compressed one.
  const bool looks_compressed = !units.empty() && units.front() == 0xFEFF;
  if (looks_compressed) {
    if (!CanPackText(text)) Fail(kConversion, ": U+FEFF");
    std::string stored(kMark);
    stored.push_back('\0');
    return stored + tmw::Utf16ToBytes(units);
  }
  if (!may_compress || !fits || units.size() < kShortestCompressed) return tmw::Utf16ToBytes(units);
  std::string stored(kMark);
  for (const char16_t unit : units)
    stored.push_back(static_cast<char>(unit));
  return stored;
}

}  // namespace jet::file
