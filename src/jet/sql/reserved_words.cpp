#include "jet/sql/reserved_words.h"

#include <algorithm>
#include <array>

#include "foundation/encodings.h"

namespace jet::sql {
namespace {

// Sorted.
constexpr std::array<std::string_view, 45> kReserved = {
    "all",    "alter",  "and",     "as",        "asc",         "between", "by",     "constraint",
    "create", "delete", "desc",    "distinct",  "distinctrow", "drop",    "eqv",    "exists",
    "from",   "group",  "having",  "imp",       "in",          "inner",   "insert", "into",
    "is",     "join",   "left",    "like",      "mod",         "not",     "null",   "on",
    "or",     "order",  "percent", "procedure", "right",       "select",  "set",    "table",
    "union",  "update", "values",  "where",     "xor"};

}  // namespace

bool IsReservedWord(std::string_view word) {
  return std::binary_search(kReserved.begin(), kReserved.end(), tmw::LowerCase(word));
}

}  // namespace jet::sql
