#pragma once

#include <string>
#include <vector>

#include "database/structure_sql.h"
#include "ports/database.h"

// The structure of a database as statements that jetsql runs. What the database's own statements
// cannot say is said by two of jetsql's:
//   PROPERTY [table].[field].[property] TYPE 'DB string'
//   RELATION [name] [foreign table] ([field], …) REFERENCES [table] ([field], …) ATTRIBUTES
namespace jetsql {

using tmw::IndexSql;
using tmw::NamesSql;
using tmw::RelationSql;
using tmw::SqlName;

// A property that a field has beside its definition.
struct NamedProperty {
  std::string field;
  std::string name;
  ports::DataType type = ports::DataType::kText;
  ports::DatabaseValue value;
};

// TypeWord; raises an error for a type that no table here can have.
std::string TypeSql(const ports::FieldDefinition& field);

// The table without its indexes, then its properties; without ";". What its rows must keep to comes
// behind them, in ConstraintSql: rows that were there before the rule may break it.
std::vector<std::string> TableSql(const ports::TableDefinition& table,
                                  const std::vector<NamedProperty>& properties, bool rows_follow);
std::vector<std::string> ConstraintSql(const ports::TableDefinition& table, bool had_rows);

}  // namespace jetsql
