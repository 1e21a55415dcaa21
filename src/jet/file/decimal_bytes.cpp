#include "jet/file/decimal_bytes.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "jet/file/bytes.h"

namespace jet::file {
namespace {

constexpr char kNegative = '\x80';
constexpr std::size_t kWords = 4;
using Words = std::array<std::uint32_t, kWords>;  // the highest first

// Divides in place, giving the remainder.
std::uint32_t DivideByTen(Words& words) {
  std::uint64_t rest = 0;
  for (std::uint32_t& word : words) {
    rest = (rest << 32U) | word;
    word = static_cast<std::uint32_t>(rest / 10);
    rest %= 10;
  }
  return static_cast<std::uint32_t>(rest);
}

// False when the result does not fit.
bool MultiplyByTenAndAdd(Words& words, std::uint32_t digit) {
  std::uint64_t carry = digit;
  for (std::size_t i = words.size(); i-- > 0;) {
    carry += std::uint64_t{words[i]} * 10;
    words[i] = static_cast<std::uint32_t>(carry);
    carry >>= 32U;
  }
  return carry == 0;
}

bool IsZero(const Words& words) {
  return std::all_of(words.begin(), words.end(), [](std::uint32_t word) { return word == 0; });
}

}  // namespace

std::string DecimalText(std::string_view stored, std::uint8_t scale) {
  Words words{};
  for (std::size_t i = 0; i < kWords; ++i)
    words[i] = LoadLittle<std::uint32_t>(stored.data() + 1 + i * sizeof(std::uint32_t));
  const bool is_negative = stored[0] != 0 && !IsZero(words);
  std::string digits;
  while (!IsZero(words))
    digits.push_back(static_cast<char>('0' + DivideByTen(words)));
  if (digits.size() <= scale) digits.resize(std::size_t{scale} + 1, '0');
  std::reverse(digits.begin(), digits.end());
  std::string fraction = digits.substr(digits.size() - scale);
  digits.resize(digits.size() - scale);
  while (!fraction.empty() && fraction.back() == '0')
    fraction.pop_back();
  return (is_negative ? "-" : "") + digits + (fraction.empty() ? "" : "." + fraction);
}

std::optional<std::string> DecimalBytes(std::string_view text, std::uint8_t scale) {
  const bool is_negative = text.starts_with('-');
  if (is_negative) text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  std::string digits(text.substr(0, point));
  std::string fraction(point < text.size() ? text.substr(point + 1) : std::string_view{});
  while (!fraction.empty() && fraction.size() > scale && fraction.back() == '0')
    fraction.pop_back();
  if (digits.empty() || fraction.size() > scale) return std::nullopt;
  fraction.resize(scale, '0');
  Words words{};
  for (const char digit : digits + fraction) {
    if (digit < '0' || digit > '9') return std::nullopt;
    if (!MultiplyByTenAndAdd(words, static_cast<std::uint32_t>(digit - '0'))) return std::nullopt;
  }
  std::string stored(1, is_negative && !IsZero(words) ? kNegative : '\0');
  for (const std::uint32_t word : words)
    AppendLittle(stored, word);
  return stored;
}

}  // namespace jet::file
