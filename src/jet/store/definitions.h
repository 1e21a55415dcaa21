#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "jet/store/session.h"
#include "jet/table_info.h"

namespace jet {

// Changes tables, fields and indexes, in the storage and in the catalogue alike. Each call belongs
// inside of Session::Change.
class Definitions {
 public:
  explicit Definitions(Session& session) : session_(session) {}

  void CreateTable(const ports::TableDefinition& table);
  void DropTable(const TableInfo& table);
  void AddField(const TableInfo& table, const ports::FieldDefinition& field);
  // Another type or size; values that do not convert fail, the default and the indexes stay.
  void AlterField(const TableInfo& table, const FieldInfo& field, ports::FieldDefinition wanted);
  // The field refuses Null from now on; 3314 when there is one.
  void RequireValues(const TableInfo& table, const FieldInfo& field);
  void DropField(const TableInfo& table, const FieldInfo& field);
  void CreateIndex(const TableInfo& table, const ports::IndexDefinition& index);
  void DropIndex(const TableInfo& table, const IndexInfo& index);

  void SetProperty(const TableInfo& table, const FieldInfo& field, const std::string& name,
                   ports::DataType type, const ports::DatabaseValue& value);
  std::optional<ports::DatabaseValue> Property(const FieldInfo& field, const std::string& name);

 private:
  std::int64_t InsertField(std::int64_t table, std::int64_t ordinal,
                           const ports::FieldDefinition& field);
  void ConvertColumn(const TableInfo& table, const FieldInfo& old_field, const FieldInfo& field);
  void RefuseNull(const TableInfo& table, const FieldInfo& field, std::int32_t error_number);
  Statement Prepare(const std::string& sql) { return {session_.SharedStorage(), sql}; }

  Session& session_;
};

// "CREATE [UNIQUE] INDEX i5 ON t3(...)" for the storage.
std::string CreateIndexSql(const TableInfo& table, const IndexInfo& index);

// The table for a name, or the error of that number.
TablePtr RequireTable(Session& session, const std::string& name, std::int32_t error_number);

}  // namespace jet
