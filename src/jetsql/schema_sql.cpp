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

}  // namespace

std::string TypeSql(const ports::FieldDefinition& field) {
  std::string type = tmw::TypeWord(field);
  if (type.empty()) tmw::RaiseProgramError(Say(texts::kNoTypeWord, {tmw::Quoted(field.name)}));
  return type;
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

}  // namespace jetsql
