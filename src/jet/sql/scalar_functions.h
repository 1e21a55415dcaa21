#pragma once

#include <cstddef>
#include <string_view>
#include <variant>

#include "jet/storage_sql.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A function of the dialect that is translated into one call.
struct ScalarFunction {
  std::string_view name;  // lower case
  // One character per argument: t text, n number, d date, V any value; N and v are a number and any
  // value followed by the value's type.
  std::string_view parameters;
  std::size_t least_arguments;
  Function function;  // unnamed: the argument itself is the result
  ValueType type;     // kUnknown: the type of the argument
  // A constant argument before the others: the type to convert to, or an interval.
  std::variant<std::monostate, ports::DataType, std::string_view> first = {};
};

// Ignores case and a trailing "$". Null if there is no such function; fails with 3087 if there is
// one, but not with that number of arguments.
const ScalarFunction* FindScalarFunction(std::string_view name, std::size_t argument_count);

}  // namespace jet::sql
