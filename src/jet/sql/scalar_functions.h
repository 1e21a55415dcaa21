#pragma once

#include <cstddef>
#include <string_view>
#include <variant>

#include "jet/storage_sql.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A function over the values of one row that becomes one call of the storage's engine.
struct ScalarFunction {
  std::string_view name;  // lower case
  // One character for each argument at most: t text, n number, d moment, V any value; N and v hand
  // over the code of the value's type as well, N of a number, v of any value.
  std::string_view parameters;
  std::size_t least_arguments;
  Function function;  // without a name: the argument itself
  ValueType type;     // kUnknown: that of the argument
  // An argument that goes before the call's own: the type to convert to, or an interval.
  std::variant<std::monostate, ports::DataType, std::string_view> first = {};
};

// Null when there is none of that name (any letter case, "$" behind it allowed) and that many
// arguments. Fails with 3087 when there is one that takes another number of them.
const ScalarFunction* FindScalarFunction(std::string_view name, std::size_t argument_count);

}  // namespace jet::sql
