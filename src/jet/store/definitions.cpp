#include "jet/store/definitions.h"

#include <algorithm>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/file/layout_limits.h"
#include "jet/file/limits.h"
#include "jet/sql/expression_translator.h"
#include "jet/sql/parser.h"
#include "jet/sql/scope.h"
#include "jet/storage_sql.h"
#include "jet/store/field_properties.h"
#include "jet/store/file_definitions.h"
#include "jet/store/relations.h"
#include "jet/store/row_limit.h"

namespace jet {
namespace {

using ports::DatabaseValue;

constexpr std::size_t kMostNameUnits = 64;
constexpr std::size_t kMostFields = 255;
constexpr const char* kAttributesProperty = "Attributes";

bool IsCounter(const ports::FieldDefinition& field) {
  return (field.attributes & ports::kAutoIncrementField) != 0;
}

// A table has only one autonumber field.
void RefuseSecondCounter(const TableInfo& table, const ports::FieldDefinition& wanted,
                         const FieldInfo* replaced) {
  if (!IsCounter(wanted)) return;
  for (const FieldInfo& field : table.fields) {
    if (field.IsAutonumber() && &field != replaced) Fail(kInvalidFieldType, wanted.name);
  }
}

void CheckFields(const std::vector<ports::FieldDefinition>& fields, const std::string& table) {
  if (fields.empty()) Fail(kNoFieldsDefined, table);
  if (fields.size() > kMostFields) Fail(kTooManyFields);
  const auto first = std::find_if(fields.begin(), fields.end(), IsCounter);
  const auto second =
      first == fields.end() ? first : std::find_if(first + 1, fields.end(), IsCounter);
  if (second != fields.end()) Fail(kInvalidFieldType, second->name);
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (const ports::FieldDefinition& field : fields)
    names.push_back(tmw::LowerCase(field.name));
  std::sort(names.begin(), names.end());
  const auto twice = std::adjacent_find(names.begin(), names.end());
  if (twice != names.end()) Fail(kFieldDefinedTwice, *twice);
}

}  // namespace

void CheckName(const std::string& name) {
  const bool is_bad = name.empty() || name.front() == ' ' || name.starts_with("\xEF\xBB\xBF") ||
                      tmw::Utf8ToUtf16(name).size() > kMostNameUnits ||
                      name.find_first_of(".!`[]") != std::string::npos ||
                      std::any_of(name.begin(), name.end(),
                                  [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  if (is_bad) Fail(kInvalidName, name);
}

std::string ColumnSql(const std::string& column, ports::DataType type) {
  return column + CollationOfField(type);
}

TablePtr RequireTable(Session& session, const std::string& name, std::int32_t error_number) {
  TablePtr table = session.Tables().FindTable(name);
  if (!table) Fail(error_number, name);
  return table;
}

std::string CreateIndexSql(const TableInfo& table, const IndexInfo& index) {
  std::string sql = index.definition.unique ? "CREATE UNIQUE INDEX i" : "CREATE INDEX i";
  sql += std::to_string(index.id) + " ON " + table.StorageName() + "(" + IndexOrder(table, index) +
         ")";
  return index.definition.ignore_nulls ? sql + " WHERE " + IndexedRows(table, index) : sql;
}

void Definitions::JudgeTable(const std::string& name) {
  const TablePtr table = session_.Tables().FindTable(name);
  file::JudgeLayout(name, LayoutOf(*table, nullptr, {}, 0));
  // The other ends of relations stand among the table's indexes too.
  const std::vector<Relation> relations = LoadRelations(session_.SharedStorage());
  const auto incoming =
      std::count_if(relations.begin(), relations.end(), [&table](const Relation& relation) {
        return relation.referenced_id == table->id && relation.IsEnforced();
      });
  if (table->indexes.size() + static_cast<std::size_t>(incoming) > file::limits::kIndexesWritten)
    Fail(kTooManyIndexes, name);
}

std::int64_t Definitions::InsertField(std::int64_t table, std::int64_t ordinal,
                                      const ports::FieldDefinition& field) {
  CheckName(field.name);
  // DAO cannot say a decimal's digits, so that only statements make such fields.
  if (field.type == ports::DataType::kDecimal && field.precision == 0)
    Fail(kInvalidFieldType, field.name);
  ports::FieldDefinition sized = field;
  sized.size = FieldSize(field.type, field.size, field.name);
  const std::int32_t size = StoredSize(sized);
  if (IsCounter(field) && field.type != ports::DataType::kLong) Fail(kInvalidFieldType, field.name);
  // An invalid default fails here rather than at the first new row.
  if (!field.default_value.empty()) sql::ParseExpression(field.default_value);
  Statement insert = Prepare(
      "INSERT INTO _jet_field"
      "(table_id, ordinal, name, type, size, attributes, required, allow_zero_length, default_text)"
      " VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9)");
  insert.Bind(1, table).Bind(2, ordinal).Bind(3, std::string_view(field.name));
  insert.Bind(4, std::int64_t{static_cast<std::int32_t>(field.type)});
  insert.Bind(5, std::int64_t{size}).Bind(6, std::int64_t{field.attributes});
  insert.Bind(7, std::int64_t{field.required ? 1 : 0});
  insert.Bind(8, std::int64_t{field.allow_zero_length ? 1 : 0});
  insert.Bind(9, std::string_view(field.default_value));
  insert.Run();
  return session_.Storage().LastRow();
}

void Definitions::CreateTable(const ports::TableDefinition& table) {
  CheckName(table.name);
  CheckFields(table.fields, table.name);
  if (session_.Tables().FindSummary(table.name) != nullptr) Fail(kTableExists, table.name);
  Statement insert =
      Prepare("INSERT INTO _jet_table(name, attributes, next_number, state) VALUES(?1, ?2, 1, ?3)");
  insert.Bind(1, std::string_view(table.name)).Bind(2, std::int64_t{table.attributes});
  insert.Bind(3, static_cast<std::int64_t>(TableState::kChanged));
  insert.Run();
  const std::int64_t id = session_.Storage().LastRow();
  std::string columns;
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    const std::int64_t field = InsertField(id, static_cast<std::int64_t>(i), table.fields[i]);
    columns += (i == 0 ? "" : ", ") + ColumnSql("c" + std::to_string(field), table.fields[i].type);
  }
  session_.Storage().Run("CREATE TABLE t" + std::to_string(id) + "(" + columns + ")");
  session_.Tables().Forget();
  JudgeTable(table.name);
  for (const ports::IndexDefinition& index : table.indexes)
    CreateIndex(*session_.Tables().FindTable(table.name), index);
}

void Definitions::DropTable(const TableInfo& table) {
  Connection& storage = session_.Storage();
  const std::string id = std::to_string(table.id);
  const std::string of_it = " WHERE table_id = " + id;
  Relations(session_).Release(table);
  storage.Run("DROP TABLE IF EXISTS " + table.StorageName());
  storage.Run("DELETE FROM _jet_index_field WHERE index_id IN (SELECT id FROM _jet_index" + of_it +
              "); DELETE FROM _jet_index" + of_it + "; DELETE FROM _jet_field" + of_it +
              "; DELETE FROM _jet_property" + of_it + "; DELETE FROM _jet_table WHERE id = " + id);
  session_.Tables().Forget();
}

void Definitions::AddField(const TableInfo& table, const ports::FieldDefinition& field) {
  session_.MarkChanged(table);
  if (table.FindField(field.name) != nullptr) Fail(kFieldExists, field.name, table.name);
  if (table.fields.size() >= kMostFields) Fail(kTooManyFields);
  RefuseSecondCounter(table, field, nullptr);
  Connection& storage = session_.Storage();
  const std::int64_t ordinal = storage.ReadInteger(
      "SELECT max(ordinal) + 1 FROM _jet_field WHERE table_id = " + std::to_string(table.id));
  const std::int64_t id = InsertField(table.id, ordinal, field);
  const std::string column = "c" + std::to_string(id);
  storage.Run("ALTER TABLE " + table.StorageName() + " ADD COLUMN " +
              ColumnSql(column, field.type));
  // Existing rows get autonumbers or False; defaults are for new rows only.
  if (IsCounter(field)) {
    storage.Run("UPDATE _jet_table SET next_number = 1 WHERE id = " + std::to_string(table.id));
    storage.Run("UPDATE " + table.StorageName() + " SET " + column + " = " +
                CallSql(fn::kNextNumber, {std::to_string(table.id)}));
  } else if (field.type == ports::DataType::kBoolean) {
    storage.Run("UPDATE " + table.StorageName() + " SET " + column + " = 0");
  }
  session_.Tables().Forget();
  JudgeTable(table.name);
}

void Definitions::ConvertColumn(const TableInfo& table, const FieldInfo& old_field,
                                const FieldInfo& field) {
  sql::Scope scope;
  const std::string alias = scope.Add(std::make_shared<TableInfo>(table), {}).sql_alias;
  sql::Expression name;
  name.kind = sql::ExpressionKind::kName;
  name.text = old_field.definition.name;
  session_.Storage().Run("UPDATE " + table.StorageName() + " AS " + alias + " SET " + field.column +
                         " = " + sql::ExpressionTranslator(scope, {}).Assigned(name, field));
}

// Moves the values to a new column, which replaces the old one in the catalogue.
void Definitions::AlterField(const TableInfo& table, const FieldInfo& field,
                             ports::FieldDefinition wanted) {
  session_.MarkChanged(table);
  Relations(session_).RefuseField(field);
  RefuseSecondCounter(table, wanted, &field);
  Connection& storage = session_.Storage();
  // Values that are there were given, not counted.
  if (IsCounter(wanted) && !field.IsAutonumber() &&
      storage.ReadInteger("SELECT EXISTS (SELECT 1 FROM " + table.StorageName() + ")") != 0)
    Fail(kInvalidFieldType, field.definition.name);
  const std::string old_id = std::to_string(field.id);
  wanted.name = field.definition.name;
  wanted.required = wanted.required || field.definition.required;
  wanted.default_value = field.definition.default_value;
  if (IsTextType(field.definition.type) && IsTextType(wanted.type))
    wanted.allow_zero_length = field.definition.allow_zero_length;
  const std::int64_t ordinal =
      storage.ReadInteger("SELECT ordinal FROM _jet_field WHERE id = " + old_id);
  FieldInfo made;
  made.id = InsertField(table.id, ordinal, wanted);
  made.column = "c" + std::to_string(made.id);
  wanted.size = FieldSize(wanted.type, wanted.size, wanted.name);
  made.target = TargetOf(wanted, field.target.in_primary_key);
  storage.Run("ALTER TABLE " + table.StorageName() + " ADD COLUMN " +
              ColumnSql(made.column, wanted.type));
  ConvertColumn(table, field, made);

  std::vector<std::string> indexes;
  for (const IndexInfo& index : table.indexes) {
    for (const std::size_t position : index.positions) {
      if (&table.fields[position] == &field) indexes.push_back(index.definition.name);
    }
  }
  for (const std::string& index : indexes)
    storage.Run("DROP INDEX IF EXISTS i" + std::to_string(table.FindIndex(index)->id));
  const std::string new_id = std::to_string(made.id);
  storage.Run("ALTER TABLE " + table.StorageName() + " DROP COLUMN " + field.column +
              "; DELETE FROM _jet_field WHERE id = " + old_id +
              "; UPDATE _jet_index_field SET field_id = " + new_id + " WHERE field_id = " + old_id +
              "; UPDATE _jet_property SET field_id = " + new_id + " WHERE field_id = " + old_id);
  session_.Tables().Forget();
  JudgeTable(table.name);
  const TablePtr altered = session_.Tables().FindTable(table.name);
  for (const std::string& index : indexes)
    storage.Run(CreateIndexSql(*altered, *altered->FindIndex(index)));
  if (IsCounter(wanted)) {
    storage.Run("UPDATE _jet_table SET next_number = (SELECT coalesce(max(" + made.column +
                "), 0) + 1 FROM " + table.StorageName() +
                ") WHERE id = " + std::to_string(table.id));
  }
}

void Definitions::RequireValues(const TableInfo& table, const FieldInfo& field) {
  session_.MarkChanged(table);
  RefuseNull(table, field, kRequiredField);
  session_.Storage().Run("UPDATE _jet_field SET required = 1 WHERE id = " +
                         std::to_string(field.id));
  session_.Tables().Forget();
}

void Definitions::DropField(const TableInfo& table, const FieldInfo& field) {
  session_.MarkChanged(table);
  Relations(session_).RefuseField(field);
  for (const IndexInfo& index : table.indexes) {
    for (const std::size_t position : index.positions) {
      if (&table.fields[position] == &field) Fail(kFieldNeededByIndex, field.definition.name);
    }
  }
  if (table.fields.size() == 1) Fail(kNoFieldsDefined, table.name);
  const std::string id = std::to_string(field.id);
  session_.Storage().Run("ALTER TABLE " + table.StorageName() + " DROP COLUMN " + field.column +
                         "; DELETE FROM _jet_field WHERE id = " + id +
                         "; DELETE FROM _jet_property WHERE field_id = " + id);
  session_.Tables().Forget();
}

void Definitions::RefuseNull(const TableInfo& table, const FieldInfo& field,
                             std::int32_t error_number) {
  const std::int64_t found = session_.Storage().ReadInteger(
      "SELECT count(*) FROM " + table.StorageName() + " WHERE " + field.column + " IS NULL");
  if (found != 0) Fail(error_number, field.definition.name);
}

void Definitions::RefuseLongKeys(const TableInfo& table, const IndexInfo& index) {
  const std::string condition = KeyTooLongSql(table, index, "");
  if (condition.empty()) return;
  const std::int64_t has_one = session_.Storage().ReadInteger(
      "SELECT EXISTS (SELECT 1 FROM " + table.StorageName() + " WHERE " + condition + ")");
  if (has_one != 0) Fail(kRecordTooLong, table.name);
}

void Definitions::CreateIndex(const TableInfo& table, const ports::IndexDefinition& wanted) {
  session_.MarkChanged(table);
  CheckName(wanted.name);
  if (table.FindIndex(wanted.name) != nullptr) Fail(kIndexExists, wanted.name);
  if (wanted.primary && table.PrimaryIndex() != nullptr) Fail(kPrimaryKeyExists);
  if (wanted.fields.empty()) Fail(kNoFieldsDefined, wanted.name);
  IndexInfo index;
  index.definition = wanted;
  index.definition.unique = wanted.unique || wanted.primary;
  index.definition.required = wanted.required || wanted.primary;
  for (const ports::IndexFieldDefinition& part : wanted.fields) {
    const FieldInfo* const field = table.FindField(part.name);
    if (field == nullptr || field->definition.type == ports::DataType::kLongBinary)
      Fail(kInvalidIndexField, part.name);
    index.positions.push_back(static_cast<std::size_t>(field - table.fields.data()));
  }
  for (const std::size_t position : index.positions) {
    if (index.definition.required) RefuseNull(table, table.fields[position], kNullInIndex);
  }
  RefuseLongKeys(table, index);

  Statement insert = Prepare("INSERT INTO _jet_index(table_id, name, flags) VALUES(?1, ?2, ?3)");
  insert.Bind(1, table.id).Bind(2, std::string_view(wanted.name));
  insert.Bind(3, IndexFlags(index.definition)).Run();
  index.id = session_.Storage().LastRow();
  Statement part = Prepare("INSERT INTO _jet_index_field VALUES(?1, ?2, ?3, ?4)");
  for (std::size_t i = 0; i < index.positions.size(); ++i) {
    part.Bind(1, index.id).Bind(2, static_cast<std::int64_t>(i));
    part.Bind(3, table.fields[index.positions[i]].id);
    part.Bind(4, std::int64_t{wanted.fields[i].descending ? 1 : 0}).Run();
  }
  // Others are built when a statement first needs the table.
  if (index.definition.unique) {
    session_.Storage().Run(CreateIndexSql(table, index));
  } else {
    session_.LackIndex(table);
  }
  session_.Tables().Forget();
  JudgeTable(table.name);
}

void Definitions::DropIndex(const TableInfo& table, const IndexInfo& index) {
  session_.MarkChanged(table);
  Relations(session_).RefuseIndex(table, index);
  const std::string id = std::to_string(index.id);
  session_.Storage().Run("DROP INDEX IF EXISTS i" + id + "; DELETE FROM _jet_index WHERE id = " +
                         id + "; DELETE FROM _jet_index_field WHERE index_id = " + id);
  session_.Tables().Forget();
}

// Properties that are kept with the field.
bool Definitions::TrySetDefinition(const FieldInfo& field, const std::string& name,
                                   const DatabaseValue& value) {
  const auto set = [&](const char* column, ports::DataType type) {
    Statement update = Prepare(std::string("UPDATE _jet_field SET ") + column +
                               " = ?1 WHERE id = " + std::to_string(field.id));
    const DatabaseValue converted = ConvertTo(value, type, 0, kConversion);
    if (const auto* const text = std::get_if<std::string>(&converted)) {
      if (!text->empty()) sql::ParseExpression(*text);
      update.Bind(1, std::string_view(*text)).Run();
    } else if (const auto* const number = std::get_if<std::int32_t>(&converted)) {
      update.Bind(1, std::int64_t{*number}).Run();
    } else {
      const auto* const flag = std::get_if<bool>(&converted);
      update.Bind(1, std::int64_t{flag != nullptr && *flag ? 1 : 0}).Run();
    }
  };
  const auto is = [&name](const char* wanted) { return tmw::EqualIgnoringCase(name, wanted); };
  if (is(field_property::kAllowZeroLength)) {
    set("allow_zero_length", ports::DataType::kBoolean);
  } else if (is(field_property::kRequired)) {
    set("required", ports::DataType::kBoolean);
  } else if (is(field_property::kDefaultValue)) {
    set("default_text", ports::DataType::kMemo);
  } else if (is(kAttributesProperty)) {
    set("attributes", ports::DataType::kLong);
  } else {
    return false;
  }
  return true;
}

void Definitions::SetProperty(const TableInfo& table, const FieldInfo& field,
                              const std::string& name, ports::DataType type,
                              const DatabaseValue& value) {
  session_.MarkChanged(table);
  CheckName(name);
  if (TrySetDefinition(field, name, value)) {
    session_.Tables().Forget();
    JudgeTable(table.name);
    return;
  }
  const DatabaseValue converted = ConvertTo(value, type, 0, kConversion);
  Statement insert =
      Prepare("INSERT OR REPLACE INTO _jet_property VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7)");
  BindProperty(insert, table.id, field.id, StoredPropertyOf(name, type, converted)).Run();
}

std::optional<DatabaseValue> Definitions::Property(const FieldInfo& field,
                                                   const std::string& name) {
  const std::string lower = tmw::LowerCase(name);
  Statement row = Prepare(
      "SELECT name, type, flag, value FROM _jet_property WHERE field_id = ?1"
      " AND lower_name = ?2");
  row.Bind(1, field.id).Bind(2, std::string_view(lower));
  if (!row.Step()) return std::nullopt;
  return PropertyValue(ReadProperty(row, 0));
}

}  // namespace jet
