#pragma once

#include <string>
#include <string_view>

#include "jet/values/calendar.h"

namespace jet {

// A moment by one pattern such as "dd/mm/yyyy h:nn".
std::string FormatMoment(double days, std::string_view pattern, WeekRules rules);

}  // namespace jet
