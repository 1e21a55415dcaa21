#pragma once

#include <string_view>

namespace jet::sql {

// True for a word that is a name in brackets only.
bool IsReservedWord(std::string_view word);

}  // namespace jet::sql
