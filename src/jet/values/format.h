#pragma once

#include <string>
#include <string_view>

#include "jet/values/calendar.h"
#include "ports/database_types.h"

namespace jet {

// The function Format under Russian regional settings. The pattern is a named one ("Fixed", "Short
// Date") or is made of placeholders for numbers (0 # . , % E+), dates (d m y h n s c w q ttttt
// AM/PM) or texts (@ & < > !), with up to four sections separated by ";": for positive, negative
// and zero numbers and for Null. An empty pattern gives the value's own text; a text that is not a
// number or date is returned unchanged by a pattern for those.
std::string FormatValue(const ports::DatabaseValue& value, std::string_view pattern,
                        WeekRules rules);

}  // namespace jet
