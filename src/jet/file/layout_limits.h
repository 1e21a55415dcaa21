#pragma once

#include <string_view>

#include "jet/file/table_layout.h"

namespace jet::file {

// Refuses a table that the format's own engine would not open, by its number and with the name of
// what is too much: 3125, 3047, 3163, 3190, 3277 or 3626.
void JudgeLayout(std::string_view table_name, const TableLayout& table);

// 3125 for a name that is empty or too long.
void JudgeName(std::string_view name);

}  // namespace jet::file
