#include "jet/sql/functions.h"

#include <string>

#include "foundation/encodings.h"

namespace jet::sql {
namespace {

constexpr FunctionSpec kFunctions[] = {
    {"avg", 1, 1, "avg", ValueType::kNumber, true},
    {"count", 1, 1, "count", ValueType::kInteger, true},
    {"first", 1, 1, "jet_first", ValueType::kUnknown, true},
    {"last", 1, 1, "jet_last", ValueType::kUnknown, true},
    {"max", 1, 1, "max", ValueType::kUnknown, true},
    {"min", 1, 1, "min", ValueType::kUnknown, true},
    {"stdev", 1, 1, "jet_stdev", ValueType::kNumber, true},
    {"stdevp", 1, 1, "jet_stdevp", ValueType::kNumber, true},
    {"sum", 1, 1, "sum", ValueType::kUnknown, true},
    {"var", 1, 1, "jet_var", ValueType::kNumber, true},
    {"varp", 1, 1, "jet_varp", ValueType::kNumber, true},
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
