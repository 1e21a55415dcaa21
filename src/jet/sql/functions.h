#pragma once

#include <cstddef>
#include <string_view>

#include "jet/sql/value_type.h"

namespace jet::sql {

// A function of the dialect that becomes one call of the storage's engine. Arguments go as they
// are, the result has the type given; what needs more than that (IIf) is translated by hand.
struct FunctionSpec {
  std::string_view name;  // lower case
  std::size_t least_arguments;
  std::size_t most_arguments;
  std::string_view sql_name;
  ValueType type;  // kUnknown: the argument's
  bool is_aggregate;
};

// Null when there is none of that name (any letter case).
const FunctionSpec* FindFunction(std::string_view name);

}  // namespace jet::sql
