#include "jet/values/text_case.h"

#include <vector>

#include "foundation/encodings.h"

namespace jet {
namespace {

constexpr char32_t kPlaneSize = 0x10000;
// Its small letter "ß" has no capital of one character and is left unchanged.
constexpr char32_t kCapitalSharpS = 0x1E9E;

// If several capitals share a small letter, the one with the lowest code point is the usual one.
std::vector<char16_t> MakeCapitals() {
  std::vector<char16_t> capitals(kPlaneSize, 0);
  for (char32_t capital = 0; capital < kPlaneSize; ++capital) {
    const char32_t small = tmw::LowerCaseCodePoint(capital);
    if (small != capital && small < kPlaneSize && capitals[small] == 0 && capital != kCapitalSharpS)
      capitals[small] = static_cast<char16_t>(capital);
  }
  return capitals;
}

}  // namespace

std::string UpperCase(std::string_view text) {
  static const std::vector<char16_t> kCapitals = MakeCapitals();
  std::u16string units = tmw::Utf8ToUtf16(text);
  for (char16_t& unit : units) {
    if (kCapitals[unit] != 0) unit = kCapitals[unit];
  }
  return tmw::Utf16ToUtf8(units);
}

}  // namespace jet
