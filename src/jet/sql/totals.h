#pragma once

#include <string_view>

namespace jet::sql {

// A total over the rows of a group (Count, Sum …), by its name in lower case.
struct Total {
  std::string_view name;
  std::string_view sql_name;
};

// Null when there is none of that name (any letter case). Each takes one argument.
const Total* FindTotal(std::string_view name);

}  // namespace jet::sql
