#include "publish/statement_check.h"

#include <algorithm>
#include <cstdint>

#include "foundation/file_names.h"
#include "ports/ports.h"

namespace publish {
namespace {

// The engine's numbers for a statement that is not well-formed: in an expression, brackets, DELETE,
// the statement as a whole, FROM, INSERT, JOIN, ORDER BY, SELECT, text behind the end, UPDATE,
// CREATE TABLE, CREATE INDEX, a field's definition, ALTER TABLE, DROP, the number of values.
constexpr std::int32_t kMalformed[] = {3075, 3126, 3128, 3129, 3131, 3134, 3135, 3138, 3141,
                                       3142, 3144, 3290, 3291, 3292, 3293, 3295, 3346};

}  // namespace

StatementCheck::StatementCheck()
    : database_(ports::CurrentPorts().database->CreateDatabase(
          tmw::JoinPath(scratch_.Path(), "empty.mdb"))) {}

std::optional<std::string> StatementCheck::Judge(const std::string& statement) {
  try {
    database_->Execute(statement, true);
  } catch (const ports::DatabaseError& error) {
    if (std::find(std::begin(kMalformed), std::end(kMalformed), error.Number) !=
        std::end(kMalformed))
      return error.Description;
  }
  return std::nullopt;
}

}  // namespace publish
