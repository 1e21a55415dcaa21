#pragma once

#include <string_view>

#include "jet/sql/select_translator.h"

namespace jet::sql {

// Several SELECT statements with UNION between them. The first gives the columns' names; columns
// of different types take one that fits all parts.
SelectSql TranslateUnion(const Select& first, const Scope& scope, std::string_view statement,
                         RowOrder order);

}  // namespace jet::sql
