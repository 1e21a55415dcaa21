#include "database/structure_sql.h"

#include <cstdint>

#include "database/db_string.h"
#include "foundation/text.h"

namespace tmw {
namespace {

using ports::DataType;

struct TypeEntry {
  DataType type;
  const char* word;
};

constexpr TypeEntry kTypes[] = {
    {DataType::kBoolean, "BIT"},       {DataType::kByte, "BYTE"},
    {DataType::kInteger, "SHORT"},     {DataType::kLong, "LONG"},
    {DataType::kCurrency, "CURRENCY"}, {DataType::kSingle, "SINGLE"},
    {DataType::kDouble, "DOUBLE"},     {DataType::kDate, "DATETIME"},
    {DataType::kBinary, "BINARY"},     {DataType::kText, "TEXT"},
    {DataType::kMemo, "MEMO"},         {DataType::kLongBinary, "LONGBINARY"},
    {DataType::kGuid, "GUID"},         {DataType::kDecimal, "DECIMAL"},
};

// Empty if statements of the database cannot say it.
std::string ConstraintActions(std::int32_t attributes) {
  std::string actions = " ";
  const auto take = [&](std::int32_t bit, const char* words) {
    if ((attributes & bit) == 0) return;
    actions += words;
    attributes &= ~bit;
  };
  take(ports::kRelationUpdateCascade, "ON UPDATE CASCADE ");
  take(ports::kRelationUpdateNull, "ON UPDATE SET NULL ");
  take(ports::kRelationDeleteCascade, "ON DELETE CASCADE ");
  take(ports::kRelationDeleteNull, "ON DELETE SET NULL ");
  return attributes == 0 ? actions : "";
}

}  // namespace

std::string SqlName(const std::string& name) {
  return "[" + name + "]";
}

std::string TypeWord(const ports::FieldDefinition& field) {
  if ((field.attributes & ports::kAutoIncrementField) != 0) return "COUNTER";
  for (const TypeEntry& entry : kTypes) {
    if (entry.type != field.type) continue;
    std::string word = entry.word;
    if (field.type == DataType::kText || field.type == DataType::kBinary)
      word += "(" + std::to_string(field.size) + ")";
    if (field.type == DataType::kDecimal && field.precision > 0)
      word += "(" + std::to_string(field.precision) + ", " + std::to_string(field.scale) + ")";
    return word;
  }
  return {};
}

std::string FieldSql(const ports::FieldDefinition& field) {
  const std::string word = TypeWord(field);
  return (word.empty() ? FieldTypeToStr(field.type) : word) + (field.required ? " NOT NULL" : "") +
         (field.default_value.empty() ? "" : " DEFAULT " + field.default_value);
}

std::vector<std::string> IndexSql(const ports::TableDefinition& table) {
  std::vector<std::string> statements;
  for (const ports::IndexDefinition& index : table.indexes) {
    if (index.foreign) continue;
    std::vector<std::string> fields;
    for (const ports::IndexFieldDefinition& field : index.fields)
      fields.push_back(SqlName(field.name) + (field.descending ? " DESC" : ""));
    std::string flags;
    if (index.primary) {
      flags = " PRIMARY";
    } else if (index.required) {
      flags = " DISALLOW NULL";
    }
    if (index.ignore_nulls) flags += " IGNORE NULL";
    statements.push_back((index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
                         SqlName(index.name) + " ON " + SqlName(table.name) + " (" +
                         Joined(fields, ", ") + ")" + (flags.empty() ? "" : " WITH" + flags));
  }
  return statements;
}

std::string NamesSql(const std::vector<std::string>& names) {
  std::vector<std::string> quoted;
  for (const std::string& name : names)
    quoted.push_back(SqlName(name));
  return "(" + Joined(quoted, ", ") + ")";
}

std::string RelationSql(const ports::RelationDefinition& relation) {
  std::vector<std::string> own;
  std::vector<std::string> other;
  for (const ports::RelationFieldPair& pair : relation.fields) {
    own.push_back(pair.foreign_name);
    other.push_back(pair.name);
  }
  const std::string target = " REFERENCES " + SqlName(relation.table) + " " + NamesSql(other);
  const std::string actions = ConstraintActions(relation.attributes);
  if (!actions.empty())
    return Trim("ALTER TABLE " + SqlName(relation.foreign_table) + " ADD CONSTRAINT " +
                SqlName(relation.name) + " FOREIGN KEY " + NamesSql(own) + target + actions);
  return "RELATION " + SqlName(relation.name) + " " + SqlName(relation.foreign_table) + " " +
         NamesSql(own) + target + " " + std::to_string(relation.attributes);
}

}  // namespace tmw
