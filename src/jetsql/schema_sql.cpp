#include "jetsql/schema_sql.h"

#include <cstdint>

#include "database/db_string.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/value_text.h"

namespace jetsql {
namespace {

using ports::DataType;

struct TypeWord {
  DataType type;
  const char* word;
};

constexpr TypeWord kTypeWords[] = {
    {DataType::kBoolean, "BIT"},       {DataType::kByte, "BYTE"},
    {DataType::kInteger, "SHORT"},     {DataType::kLong, "LONG"},
    {DataType::kCurrency, "CURRENCY"}, {DataType::kSingle, "SINGLE"},
    {DataType::kDouble, "DOUBLE"},     {DataType::kDate, "DATETIME"},
    {DataType::kBinary, "BINARY"},     {DataType::kText, "TEXT"},
    {DataType::kMemo, "MEMO"},         {DataType::kLongBinary, "LONGBINARY"},
    {DataType::kGuid, "GUID"},         {DataType::kDecimal, "DECIMAL"},
};

// Of a fixed width, or a hyperlink: what a field made by a statement is not.
constexpr std::int32_t kSettableAttributes = 1 | 0x8000;

bool IsTextType(DataType type) {
  return type == DataType::kText || type == DataType::kMemo;
}

std::string PropertySql(const std::string& table, const NamedProperty& property) {
  return "PROPERTY " + SqlName(table) + "." + SqlName(property.field) + "." +
         SqlName(property.name) + " " + tmw::FieldTypeToStr(property.type) + " " +
         SqlLiteral(tmw::VariantToDBString(property.value));
}

// What CREATE TABLE does not say of a field.
void AddDefinitionProperties(const ports::FieldDefinition& field,
                             std::vector<NamedProperty>& properties) {
  const auto add = [&](const char* name, DataType type, ports::DatabaseValue value) {
    properties.push_back({field.name, name, type, std::move(value)});
  };
  const std::int32_t rest = field.attributes & ~ports::kAutoIncrementField & kSettableAttributes;
  if (rest != 0) add("Attributes", DataType::kLong, field.attributes);
  if (!field.default_value.empty()) add("DefaultValue", DataType::kMemo, field.default_value);
}

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

std::string TypeSql(const ports::FieldDefinition& field) {
  if ((field.attributes & ports::kAutoIncrementField) != 0) return "COUNTER";
  for (const TypeWord& entry : kTypeWords) {
    if (entry.type != field.type) continue;
    std::string word = entry.word;
    if (field.type == DataType::kText || field.type == DataType::kBinary)
      word += "(" + std::to_string(field.size) + ")";
    if (field.type == DataType::kDecimal && field.precision > 0)
      word += "(" + std::to_string(field.precision) + ", " + std::to_string(field.scale) + ")";
    return word;
  }
  tmw::RaiseProgramError(Say(texts::kNoTypeWord, {tmw::Quoted(field.name)}));
}

std::vector<std::string> TableSql(const ports::TableDefinition& table,
                                  const std::vector<NamedProperty>& properties, bool rows_follow) {
  std::vector<std::string> fields;
  std::vector<NamedProperty> all;
  for (const ports::FieldDefinition& field : table.fields) {
    fields.push_back("\n  " + SqlName(field.name) + " " + TypeSql(field) +
                     (field.required && !rows_follow ? " NOT NULL" : ""));
    AddDefinitionProperties(field, all);
  }
  all.insert(all.end(), properties.begin(), properties.end());
  std::vector<std::string> statements = {"CREATE TABLE " + SqlName(table.name) + " (" +
                                         tmw::Joined(fields, ",") + ")"};
  for (const NamedProperty& property : all)
    statements.push_back(PropertySql(table.name, property));
  return statements;
}

std::vector<std::string> ConstraintSql(const ports::TableDefinition& table, bool had_rows) {
  std::vector<std::string> statements;
  for (const ports::FieldDefinition& field : table.fields) {
    const auto add = [&](const char* name, bool value) {
      statements.push_back(PropertySql(table.name, {field.name, name, DataType::kBoolean, value}));
    };
    if (field.required && had_rows) add("Required", true);
    if (field.allow_zero_length != IsTextType(field.type))
      add("AllowZeroLength", field.allow_zero_length);
  }
  return statements;
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
                         tmw::Joined(fields, ", ") + ")" + (flags.empty() ? "" : " WITH" + flags));
  }
  return statements;
}

std::string NamesSql(const std::vector<std::string>& names) {
  std::vector<std::string> quoted;
  for (const std::string& name : names)
    quoted.push_back(SqlName(name));
  return "(" + tmw::Joined(quoted, ", ") + ")";
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
    return tmw::Trim("ALTER TABLE " + SqlName(relation.foreign_table) + " ADD CONSTRAINT " +
                     SqlName(relation.name) + " FOREIGN KEY " + NamesSql(own) + target + actions);
  return "RELATION " + SqlName(relation.name) + " " + SqlName(relation.foreign_table) + " " +
         NamesSql(own) + target + " " + std::to_string(relation.attributes);
}

}  // namespace jetsql
