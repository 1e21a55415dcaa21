#include "database/set_field_prop.h"

#include "foundation/error_handling.h"
#include "foundation/text.h"

namespace tmw {

void SetFieldProp(ports::Database& database, const std::string& table, const std::string& field,
                  const std::string& property, ports::DataType type,
                  const ports::DatabaseValue& value) try {
  database.SetFieldProperty(table, field, property, type, value);
} catch (...) {
  ReRaiseError("WuDbUpdNode", "SetFieldProp", table + "." + field + ": " + property);
}

}  // namespace tmw
