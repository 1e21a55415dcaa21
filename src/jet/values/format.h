#pragma once

#include <string>
#include <string_view>

#include "jet/values/calendar.h"
#include "ports/database_types.h"

namespace jet {

// The value by a pattern of the function Format, under Russian regional settings: a named one
// ("Fixed", "Short Date"), or one made of the marks for numbers (0 # . , % E+), for moments (d m y
// h n s c w q ttttt AM/PM) or for texts (@ & < > !). Sections between ";" serve positive, negative
// and zero numbers and Null. An empty pattern: the value's own text. A text that is no number or
// date stays as it is under a pattern for those.
std::string FormatValue(const ports::DatabaseValue& value, std::string_view pattern,
                        WeekRules rules);

}  // namespace jet
