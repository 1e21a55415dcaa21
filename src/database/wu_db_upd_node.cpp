#include "database/wu_db_upd_node.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "database/database_texts.h"
#include "database/engine_failures.h"
#include "database/migrations.h"
#include "database/statement_cutter.h"
#include "database/table_lookup.h"
#include "database/transaction.h"
#include "foundation/error_handling.h"

namespace tmw {
namespace {

using ports::DataType;
using update_actions::AddField;
using update_actions::CustomScript;
using update_actions::Sql;

constexpr const char* kModule = "WuDbUpdNode";
constexpr const char* kNoDefaultValue = "@@@";

struct TypeWord {
  std::string_view word;
  DataType type;
};

constexpr std::array<TypeWord, 11> kTypeWords = {{
    {"text", DataType::kText},
    {"date", DataType::kDate},
    {"integer", DataType::kInteger},
    {"boolean", DataType::kBoolean},
    {"byte", DataType::kByte},
    {"char", DataType::kChar},
    {"currency", DataType::kCurrency},
    {"double", DataType::kDouble},
    {"long", DataType::kLong},
    {"memo", DataType::kMemo},
    {"single", DataType::kSingle},
}};

DataType ReadType(const std::string& word) {
  for (const TypeWord& entry : kTypeWords) {
    if (entry.word == word) return entry.type;
  }
  RaiseProgramError(database_texts::BadCreatedFieldType(word));
}

bool HasAttribute(const XmlNode& node, std::string_view name) {
  return std::any_of(node.attributes.begin(), node.attributes.end(),
                     [&](const ports::XmlAttribute& attribute) { return attribute.name == name; });
}

bool ReadSuppressErrors(const XmlNode& node) {
  return XmlGetBooleanAttributeDef(node, "SuppressErrors", false);
}

// A script may allow a statement to fail (the field may exist already). What the machine lacks is
// never passed over: the rest of the script would run on half a change.
template <typename Step>
bool RunStep(bool suppress_errors, Step step) {
  try {
    step();
    return true;
  } catch (const ports::DatabaseError& error) {
    if (!suppress_errors || IsResourceFailure(error.Number)) throw;
    return false;
  }
}

Sql LoadSql(const XmlNode& node) {
  return {CutStatements(XmlGetText(node)), ReadSuppressErrors(node)};
}

AddField LoadAddField(const XmlNode& node) {
  AddField action;
  action.table = XmlGetStringAttribute(node, "Table");
  action.field.name = XmlGetStringAttribute(node, "FieldName");
  action.field.type = ReadType(XmlGetStringAttribute(node, "Type"));
  if (HasAttribute(node, "Size")) action.field.size = XmlGetLongAttribute(node, "Size");
  action.field.required = XmlGetBooleanAttributeDef(node, "NotNull", false);
  action.field.allow_zero_length = XmlGetBooleanAttributeDef(node, "AllowZeroString", false);
  if (XmlGetBooleanAttributeDef(node, "Counter", false))
    action.field.attributes = ports::kAutoIncrementField;
  const std::string default_value = XmlGetStringAttributeDef(node, "DefaultValue", kNoDefaultValue);
  if (default_value != kNoDefaultValue) action.field.default_value = default_value;

  for (const char* const name : {"Description", "Caption", "Format"}) {
    const std::string value = XmlGetStringAttributeDef(node, name, "");
    if (!value.empty()) action.properties.push_back({name, DataType::kText, value});
  }
  constexpr const char* kCompression = "UnicodeCompression";
  if (HasAttribute(node, kCompression)) {
    action.properties.push_back(
        {kCompression, DataType::kBoolean, XmlGetBooleanAttributeDef(node, kCompression, false)});
  }
  action.suppress_errors = ReadSuppressErrors(node);
  return action;
}

void SetFieldProp(ports::Database& database, const std::string& table, const std::string& field,
                  const update_actions::Property& property) try {
  database.SetFieldProperty(table, field, property.name, property.type, property.value);
} catch (...) {
  ReRaiseError(kModule, "SetFieldProp", table + "." + field + ": " + property.name);
}

void Run(const Sql& action, ports::Database& database, HeldRelations& relations) {
  for (const std::string& statement : action.statements) {
    if (relations.IsDroppedBy(statement)) continue;
    RunStep(action.suppress_errors, [&] {
      Transaction transaction;
      database.Execute(statement, true);
      transaction.Commit();
    });
  }
}

void Run(const AddField& action, ports::Database& database, HeldRelations& /*relations*/) {
  const std::string& field = action.field.name;
  if (!HasTable(database, action.table))
    RaiseProgramError(database_texts::NoTableForField(action.table, field));
  const bool is_created =
      RunStep(action.suppress_errors, [&] { database.CreateField(action.table, action.field); });
  if (!is_created) return;
  for (const update_actions::Property& property : action.properties)
    SetFieldProp(database, action.table, field, property);
}

void Run(const CustomScript& action, ports::Database& database, HeldRelations& /*relations*/) {
  RunMigration(action.name, database);
}

}  // namespace

void WuDbUpdNode::LoadFromNode(const XmlNode& node) try {
  const std::string type = XmlGetStringAttribute(node, "type");
  if (type == "sql") {
    action_ = LoadSql(node);
  } else if (type == "addfield") {
    action_ = LoadAddField(node);
  } else if (type == "customscript") {
    action_ = CustomScript{XmlGetStringAttribute(node, "Name")};
  } else {
    RaiseProgramError(database_texts::BadActionType(type));
  }
} catch (...) {
  ReRaiseError(kModule, "LoadFromNode");
}

void WuDbUpdNode::Execute(ports::Database& database, HeldRelations& relations) const try {
  std::visit([&](const auto& action) { Run(action, database, relations); }, action_);
} catch (...) {
  ReRaiseError(kModule, "Execute");
}

}  // namespace tmw
