#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ports/database_types.h"

// Values as texts and back, as the product's users have them under Russian regional settings:
// "0,5", "01.02.2003 4:05:06".
namespace jet {

// Without its time when that is midnight, without its day when that is 1899-12-30.
std::string DateText(double days);

// DD.MM.YYYY, D/M/YYYY or YYYY-MM-DD, with H:MM[:SS] behind or alone.
std::optional<double> ParseDateText(std::string_view text);

// A whole text that is a number; "." and "," both separate.
std::optional<double> ParseNumberText(std::string_view text);

// The text of a number, a date or a Boolean ("-1", "0"); a text as it is. Nothing for Null, Empty
// and what has no text.
std::optional<std::string> ValueText(const ports::DatabaseValue& value);

// "{guid {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}}" of 16 bytes, and the bytes of that form or of
// one with single or without braces.
std::string GuidText(std::string_view bytes);
std::optional<std::string> ParseGuidText(std::string_view text);

}  // namespace jet
