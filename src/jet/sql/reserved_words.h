#pragma once

#include <string_view>

namespace jet::sql {

// True for a word that can be a name only in brackets.
bool IsReservedWord(std::string_view word);

}  // namespace jet::sql
