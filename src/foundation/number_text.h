#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// Numbers as texts with "." as the separator, whatever the user's settings are.
namespace tmw {

// Digits as the product's CStr has them: 7 significant ones for a single, 15 for a double, without
// trailing zeros; "1E+15" and "1E-05" beyond what fits. A negative zero is "0".
std::string SingleToText(float value);
std::string DoubleToText(double value);

// Exact, without trailing zeros behind the separator.
std::string CurrencyToText(std::int64_t ten_thousandths);

// The reverse: digits with at most four behind the separator. Nothing for any other text and for an
// amount that does not fit.
std::optional<std::int64_t> ReadCurrency(std::string_view text);

// A decimal number without sign, blanks or needless zeros, of at most 18 digits. Nothing for any
// other text.
std::optional<std::int64_t> ReadWholeNumber(std::string_view text);

// Reads the number that a text begins with, up to the first character that is not part of it; a
// text that begins with none gives 0. The length read goes to length when it is given.
double ReadNumberPrefix(std::string_view text, std::size_t* length = nullptr);

}  // namespace tmw
