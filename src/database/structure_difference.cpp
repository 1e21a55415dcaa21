#include "database/structure_difference.h"

#include <map>

#include "database/structure_sql.h"
#include "database/table_lookup.h"
#include "foundation/encodings.h"

namespace tmw {
namespace {

// Of one kind of part, by name in lower case.
struct Definition {
  std::string table;
  std::string name;
  std::string sql;
};
using Definitions = std::map<std::string, Definition>;

Definitions FieldsOf(const ports::TableDefinition& table) {
  Definitions fields;
  for (const ports::FieldDefinition& field : table.fields) {
    fields[LowerCase(field.name)] = {
        table.name, field.name,
        FieldSql(field) + (field.allow_zero_length ? " ALLOW ZERO LENGTH" : "")};
  }
  return fields;
}

// One index at a time, because the statement alone does not give its name back.
Definitions IndexesOf(const ports::TableDefinition& table) {
  Definitions indexes;
  for (const ports::IndexDefinition& index : table.indexes) {
    ports::TableDefinition only;
    only.name = table.name;
    only.indexes = {index};
    for (const std::string& sql : IndexSql(only))
      indexes[LowerCase(index.name)] = {table.name, index.name, sql};
  }
  return indexes;
}

Definitions RelationsOf(ports::Database& database) {
  Definitions relations;
  for (const ports::RelationDefinition& relation : UserRelations(database)) {
    relations[LowerCase(relation.name)] = {relation.foreign_table, relation.name,
                                           RelationSql(relation)};
  }
  return relations;
}

Definitions TablesOf(ports::Database& database) {
  Definitions tables;
  for (const std::string& name : UserTables(database))
    tables[LowerCase(name)] = {name, "", SqlName(name)};
  return tables;
}

void Compare(StructurePart part, const Definitions& left, const Definitions& right,
             StructureDifferences& differences) {
  for (const auto& [key, definition] : left) {
    const auto other = right.find(key);
    const std::string sql = other == right.end() ? "" : other->second.sql;
    // Letter case counts in a field's default, and not in the names that the others consist of.
    const bool is_equal = part == StructurePart::kField
                              ? definition.sql == sql
                              : LowerCase(definition.sql) == LowerCase(sql);
    if (!is_equal)
      differences.push_back({part, definition.table, definition.name, definition.sql, sql});
  }
  for (const auto& [key, definition] : right) {
    if (!left.contains(key))
      differences.push_back({part, definition.table, definition.name, "", definition.sql});
  }
}

// The order in which the table has those fields.
std::string OrderOf(const ports::TableDefinition& table, const Definitions& fields) {
  std::vector<std::string> names;
  for (const ports::FieldDefinition& field : table.fields) {
    const auto found = fields.find(LowerCase(field.name));
    if (found != fields.end()) names.push_back(found->second.name);
  }
  return NamesSql(names);
}

}  // namespace

StructureDifferences CompareTables(const ports::TableDefinition& left,
                                   const ports::TableDefinition& right) {
  StructureDifferences differences;
  const Definitions fields = FieldsOf(left);
  const Definitions other_fields = FieldsOf(right);
  Compare(StructurePart::kField, fields, other_fields, differences);
  Definitions common = fields;
  std::erase_if(common, [&](const auto& field) { return !other_fields.contains(field.first); });
  const std::string order = OrderOf(left, common);
  const std::string other_order = OrderOf(right, common);
  if (order != other_order)
    differences.push_back({StructurePart::kFieldOrder, left.name, "", order, other_order});
  Compare(StructurePart::kIndex, IndexesOf(left), IndexesOf(right), differences);
  return differences;
}

StructureDifferences CompareRelations(ports::Database& left, ports::Database& right) {
  StructureDifferences differences;
  Compare(StructurePart::kRelation, RelationsOf(left), RelationsOf(right), differences);
  return differences;
}

StructureDifferences CompareStructures(ports::Database& left, ports::Database& right) {
  StructureDifferences differences;
  const Definitions tables = TablesOf(left);
  const Definitions other_tables = TablesOf(right);
  Compare(StructurePart::kTable, tables, other_tables, differences);
  for (const auto& [key, table] : tables) {
    const auto other = other_tables.find(key);
    if (other == other_tables.end()) continue;
    const auto found = CompareTables(left.Table(table.table), right.Table(other->second.table));
    differences.insert(differences.end(), found.begin(), found.end());
  }
  const auto relations = CompareRelations(left, right);
  differences.insert(differences.end(), relations.begin(), relations.end());
  return differences;
}

}  // namespace tmw
