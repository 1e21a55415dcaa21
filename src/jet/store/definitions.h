#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "jet/store/session.h"
#include "jet/table_info.h"

namespace jet {

// Changes tables, fields and indexes, both in the storage and in the catalogue. All calls must be
// made within Session::Change.
class Definitions {
 public:
  explicit Definitions(Session& session) : session_(session) {}

  void CreateTable(const ports::TableDefinition& table);
  void DropTable(const TableInfo& table);
  void AddField(const TableInfo& table, const ports::FieldDefinition& field);
  // Changes the type or size; fails if a value does not convert. The default and indexes are kept.
  void AlterField(const TableInfo& table, const FieldInfo& field, ports::FieldDefinition wanted);
  // Makes the field required; fails with 3314 if it is Null in a row.
  void RequireValues(const TableInfo& table, const FieldInfo& field);
  void DropField(const TableInfo& table, const FieldInfo& field);
  void CreateIndex(const TableInfo& table, const ports::IndexDefinition& index);
  void DropIndex(const TableInfo& table, const IndexInfo& index);
  // Fails when the file could not hold the table with its relations: 3047, 3277 or 3626.
  void JudgeTable(const std::string& name);

  void SetProperty(const TableInfo& table, const FieldInfo& field, const std::string& name,
                   ports::DataType type, const ports::DatabaseValue& value);
  std::optional<ports::DatabaseValue> Property(const FieldInfo& field, const std::string& name);

 private:
  std::int64_t InsertField(std::int64_t table, std::int64_t ordinal,
                           const ports::FieldDefinition& field);
  void ConvertColumn(const TableInfo& table, const FieldInfo& old_field, const FieldInfo& field);
  // 3047 if a row's key would be too long.
  void RefuseLongKeys(const TableInfo& table, const IndexInfo& index);
  bool TrySetDefinition(const FieldInfo& field, const std::string& name,
                        const ports::DatabaseValue& value);
  void RefuseNull(const TableInfo& table, const FieldInfo& field, std::int32_t error_number);
  Statement Prepare(const std::string& sql) { return {session_.SharedStorage(), sql}; }

  Session& session_;
};

// 3125 for a name that no table, field, index or relation may have.
void CheckName(const std::string& name);

// "c17 COLLATE JET": a column of the storage in its table's definition.
std::string ColumnSql(const std::string& column, ports::DataType type);

// "CREATE [UNIQUE] INDEX i5 ON t3(...)".
std::string CreateIndexSql(const TableInfo& table, const IndexInfo& index);

// Fails with the error of that number if there is no such table.
TablePtr RequireTable(Session& session, const std::string& name, std::int32_t error_number);

}  // namespace jet
