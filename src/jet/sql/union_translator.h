#pragma once

#include <string_view>

#include "jet/sql/select_translator.h"

namespace jet::sql {

// SELECT statements joined by UNION. Columns are named by the first part; if their types differ,
// they get a type that fits all parts.
SelectSql TranslateUnion(const Select& first, const Scope& scope, std::string_view statement,
                         RowOrder order);

}  // namespace jet::sql
