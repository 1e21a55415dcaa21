#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/values/coercion.h"
#include "ports/database_types.h"

// Tables as the catalogue describes them. In the storage, tables, columns and indexes are named by
// number ("t3", "c17", "i5"), because names in the database may contain anything and may change.
namespace jet {

struct FieldInfo {
  std::int64_t id = 0;
  ports::FieldDefinition definition;
  std::string lower_name;
  std::string column;
  Target target;

  bool IsAutonumber() const { return (definition.attributes & ports::kAutoIncrementField) != 0; }
};

struct IndexInfo {
  std::int64_t id = 0;
  ports::IndexDefinition definition;
  std::string lower_name;
  std::vector<std::size_t> positions;  // of its fields in the table
};

struct TableInfo {
  std::int64_t id = 0;
  std::string name;
  std::uint32_t attributes = 0;
  std::vector<FieldInfo> fields;   // in the table's field order
  std::vector<IndexInfo> indexes;  // in name order
  std::string StorageName() const { return "t" + std::to_string(id); }

  // Null if there is none.
  const FieldInfo* FindField(std::string_view name) const;
  const IndexInfo* FindIndex(std::string_view name) const;
  const IndexInfo* PrimaryIndex() const;
};

using TablePtr = std::shared_ptr<const TableInfo>;

// The tables of one database, by name.
class TableFinder {
 public:
  virtual ~TableFinder() = default;
  // Null if there is none; system tables are not found.
  virtual TablePtr FindTable(std::string_view name) = 0;
};

// Fails with the error of that number when the table has no such field.
const FieldInfo& RequireField(const TableInfo& table, std::string_view name,
                              std::int32_t error_number);

// The columns of an index for the storage: "c1 COLLATE JET, c2 DESC".
std::string IndexOrder(const TableInfo& table, const IndexInfo& index);

// "c1 IS NOT NULL OR c2 IS NOT NULL": true for the rows in an index that ignores Null.
std::string IndexedRows(const TableInfo& table, const IndexInfo& index);

// What the catalogue keeps as the size of a field: for a decimal its precision and scale.
std::int32_t StoredSize(const ports::FieldDefinition& definition);

// What a field of this definition, its size settled, demands of its values.
Target TargetOf(const ports::FieldDefinition& definition, bool in_primary_key);

bool IsTextType(ports::DataType type);

// The clause that orders the values of a column: kCollate, kCollateDecimal or empty.
const char* CollationOfField(ports::DataType type);

}  // namespace jet
