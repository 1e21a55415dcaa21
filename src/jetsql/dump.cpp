#include "jetsql/dump.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "database/table_lookup.h"
#include "foundation/text.h"
#include "jet/file/format.h"
#include "jet/file/system_tables.h"
#include "jetsql/database_access.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/output.h"
#include "jetsql/schema_sql.h"
#include "jetsql/value_text.h"
#include "tools/json.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace jetsql {
namespace {

namespace file = jet::file;

// What only the file knows of its tables.
class FileFacts {
 public:
  explicit FileFacts(const std::string& path)
      : shared_(OpenShared(path)), reader_(shared_.pages, path, false) {}

  // Of the fields of a table, beside their definitions.
  std::vector<NamedProperty> Properties(ports::Database& database, const std::string& table,
                                        tmw::StringAccumulator& text) {
    std::vector<NamedProperty> found;
    const file::CatalogueObject* const object = reader_.FindTable(table);
    if (object == nullptr) return found;
    std::vector<std::string> left_out;
    for (const file::PropertySet& set : reader_.Properties(*object)) {
      for (const file::StoredProperty& stored : set.properties) {
        const auto value = ValueOf(database, table, set, stored);
        if (value) {
          found.push_back(
              {set.owner, stored.name, static_cast<ports::DataType>(stored.type), *value});
        } else if (!IsDefinition(stored.name)) {
          left_out.push_back(set.owner.empty() ? stored.name : set.owner + "." + stored.name);
        }
      }
    }
    if (!left_out.empty())
      text.Add("-- " + Say(texts::kNotDumped, {table, tmw::Joined(left_out, ", ")}) + "\n");
    return found;
  }

  // The names of the saved queries.
  std::vector<std::string> Queries() const {
    std::vector<std::string> names;
    for (const file::CatalogueObject& object : reader_.Objects()) {
      if (object.type == file::object_type::kQuery) names.push_back(object.name);
    }
    return names;
  }

 private:
  static bool IsDefinition(const std::string& name) {
    for (const char* const known : {"Required", "AllowZeroLength", "DefaultValue"}) {
      if (tmw::EqualIgnoringCase(name, known)) return true;
    }
    return false;
  }

  // Nothing for what statements cannot set.
  static std::optional<ports::DatabaseValue> ValueOf(ports::Database& database,
                                                     const std::string& table,
                                                     const file::PropertySet& set,
                                                     const file::StoredProperty& stored) {
    if (set.kind != file::properties::kOfColumn || IsDefinition(stored.name)) return std::nullopt;
    auto value = database.FieldProperty(table, set.owner, stored.name);
    const bool is_sayable = value && !std::holds_alternative<ports::NullValue>(*value) &&
                            !std::holds_alternative<ports::BinaryValue>(*value);
    return is_sayable ? value : std::nullopt;
  }

  SharedFile shared_;
  file::DatabaseReader reader_;
};

void AddStatements(const std::vector<std::string>& statements, tmw::StringAccumulator& text) {
  for (const std::string& statement : statements)
    text.Add(statement + ";\n");
}

std::uint64_t AddRows(ports::Database& database, const std::string& table,
                      tmw::StringAccumulator& text) {
  const auto rows = database.OpenRecordset(table, ports::RecordsetType::kTable);
  const std::size_t fields = rows->FieldNames().size();
  const std::string begin = "INSERT INTO " + SqlName(table) + " VALUES (";
  std::uint64_t count = 0;
  std::string line;
  for (; !rows->AtEnd(); rows->MoveNext(), ++count) {
    line = begin;
    for (std::size_t i = 0; i < fields; ++i) {
      if (i != 0) line += ", ";
      line += SqlLiteral(rows->Value(i));
    }
    text.Add(line += ");\n");
  }
  return count;
}

// The tables that were named, or all.
std::vector<std::string> TablesFor(const tools::Arguments& arguments, ports::Database& database) {
  const auto& words = arguments.Words();
  if (words.size() > 1) return {words.begin() + 1, words.end()};
  return tmw::UserTables(database);
}

void AddSql(const tools::Arguments& arguments, bool has_rows, Output& output) {
  const std::string& path = arguments.Words()[0];
  const auto database = OpenToRead(path);
  FileFacts facts(path);
  tmw::StringAccumulator& text = output.Text();
  const bool is_whole = arguments.Words().size() == 1;
  if (is_whole) {
    for (const std::string& query : facts.Queries())
      text.Add("-- " + Say(texts::kQueryNotDumped, {query}) + "\n");
  }
  const std::vector<std::string> tables = TablesFor(arguments, *database);
  tools::Progress progress;
  progress.Begin(Say(texts::kDumping), tables.size());
  std::uint64_t rows = 0;
  for (const std::string& name : tables) {
    const ports::TableDefinition table = database->Table(name);
    AddStatements(TableSql(table, facts.Properties(*database, table.name, text), has_rows), text);
    if (has_rows) rows += AddRows(*database, table.name, text);
    AddStatements(ConstraintSql(table, has_rows), text);
    AddStatements(IndexSql(table), text);
    progress.Advance();
  }
  if (is_whole) {
    for (const ports::RelationDefinition& relation : tmw::UserRelations(*database))
      text.Add(RelationSql(relation) + ";\n");
  }
  output.Finish();
  if (has_rows) std::cerr << Count(texts::kRowsWritten, rows) << '\n';
}

tools::Json FieldJson(const ports::FieldDefinition& field) {
  return {{"name", field.name},
          {"type", TypeSql(field)},
          {"required", field.required},
          {"allow_zero_length", field.allow_zero_length},
          {"default", field.default_value}};
}

tools::Json IndexJson(const ports::IndexDefinition& index) {
  tools::Json fields = tools::Json::array();
  for (const ports::IndexFieldDefinition& field : index.fields)
    fields.push_back({{"name", field.name}, {"descending", field.descending}});
  return {{"name", index.name},
          {"primary", index.primary},
          {"unique", index.unique},
          {"required", index.required},
          {"ignore_nulls", index.ignore_nulls},
          {"foreign", index.foreign},
          {"fields", std::move(fields)}};
}

std::string RelationLine(const ports::RelationDefinition& relation) {
  std::vector<std::string> own;
  std::vector<std::string> other;
  for (const ports::RelationFieldPair& pair : relation.fields) {
    own.push_back(pair.foreign_name);
    other.push_back(pair.name);
  }
  return relation.name + ": " + relation.foreign_table + " (" + tmw::Joined(own, ", ") + ") -> " +
         relation.table + " (" + tmw::Joined(other, ", ") + ")";
}

void AddReadable(const ports::TableDefinition& table, tmw::StringAccumulator& text) {
  text.Add(table.name + "\n");
  for (const ports::FieldDefinition& field : table.fields)
    text.Add("  " + field.name + "  " + tmw::FieldSql(field) + "\n");
  for (const ports::IndexDefinition& index : table.indexes) {
    std::vector<std::string> fields;
    for (const ports::IndexFieldDefinition& field : index.fields)
      fields.push_back(field.name + (field.descending ? " DESC" : ""));
    text.Add("  " +
             Say(index.primary   ? texts::kPrimaryKey
                 : index.foreign ? texts::kForeignIndex
                 : index.unique  ? texts::kUniqueIndex
                                 : texts::kIndex,
                 {index.name, tmw::Joined(fields, ", ")}) +
             "\n");
  }
}

}  // namespace

int Schema(const tools::Arguments& arguments) {
  Output output;
  if (arguments.Has("--sql")) {
    AddSql(arguments, false, output);
    return tools::kDone;
  }
  const auto database = OpenToRead(arguments.Words()[0]);
  tools::Json tables = tools::Json::array();
  tools::Json relations = tools::Json::array();
  const bool is_json = arguments.Has(tools::kJsonOption);
  for (const std::string& name : TablesFor(arguments, *database)) {
    const ports::TableDefinition table = database->Table(name);
    if (!is_json) {
      AddReadable(table, output.Text());
      continue;
    }
    tools::Json fields = tools::Json::array();
    tools::Json indexes = tools::Json::array();
    for (const ports::FieldDefinition& field : table.fields)
      fields.push_back(FieldJson(field));
    for (const ports::IndexDefinition& index : table.indexes)
      indexes.push_back(IndexJson(index));
    tables.push_back({{"name", table.name}, {"fields", fields}, {"indexes", indexes}});
  }
  for (const ports::RelationDefinition& relation : tmw::UserRelations(*database)) {
    if (is_json) {
      relations.push_back(RelationLine(relation));
    } else if (arguments.Words().size() == 1) {
      output.Text().Add(RelationLine(relation) + "\n");
    }
  }
  if (is_json) output.Text().Add(tools::JsonLine({{"tables", tables}, {"relations", relations}}));
  output.Finish();
  return tools::kDone;
}

int Dump(const tools::Arguments& arguments) {
  const auto file = arguments.Value("--output");
  if (file) {
    Output output(*file, Output::FileForm::kUtf8);
    AddSql(arguments, true, output);
  } else {
    Output output;
    AddSql(arguments, true, output);
  }
  return tools::kDone;
}

}  // namespace jetsql
