#include "jet/sql/functions.h"

#include <string>

#include "foundation/encodings.h"

namespace jet::sql {
namespace {

constexpr FunctionSpec kFunctions[] = {
    {"avg", "avg"}, {"count", "count"}, {"first", "jet_first"}, {"last", "jet_last"},
    {"max", "max"}, {"min", "min"},     {"stdev", "jet_stdev"}, {"stdevp", "jet_stdevp"},
    {"sum", "sum"}, {"var", "jet_var"}, {"varp", "jet_varp"},
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
