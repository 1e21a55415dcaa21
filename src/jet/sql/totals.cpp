#include "jet/sql/totals.h"

#include <string>

#include "foundation/encodings.h"

namespace jet::sql {
namespace {

constexpr Total kTotals[] = {
    {"avg", "avg"}, {"count", "count"}, {"first", "jet_first"}, {"last", "jet_last"},
    {"max", "max"}, {"min", "min"},     {"stdev", "jet_stdev"}, {"stdevp", "jet_stdevp"},
    {"sum", "sum"}, {"var", "jet_var"}, {"varp", "jet_varp"},
};

}  // namespace

const Total* FindTotal(std::string_view name) {
  const std::string lower = tmw::LowerCase(name);
  for (const Total& total : kTotals) {
    if (total.name == lower) return &total;
  }
  return nullptr;
}

}  // namespace jet::sql
