#include "jet/sql/functions.h"

#include <string>

#include "foundation/encodings.h"

namespace jet::sql {
namespace {

constexpr FunctionSpec kFunctions[] = {
    {"avg", 1, 1, "avg", ValueType::kNumber, true},
    {"count", 1, 1, "count", ValueType::kInteger, true},
    {"date", 0, 0, "jet_date", ValueType::kDate, false},
    {"max", 1, 1, "max", ValueType::kUnknown, true},
    {"min", 1, 1, "min", ValueType::kUnknown, true},
    {"now", 0, 0, "jet_now", ValueType::kDate, false},
    {"sum", 1, 1, "sum", ValueType::kUnknown, true},
    {"time", 0, 0, "jet_time", ValueType::kDate, false},
};

}  // namespace

const FunctionSpec* FindFunction(std::string_view name) {
  const std::string lower = tmw::LowerCase(name);
  for (const FunctionSpec& function : kFunctions) {
    if (function.name == lower) return &function;
  }
  return nullptr;
}

}  // namespace jet::sql
