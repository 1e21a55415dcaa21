#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "jet/file/table_layout.h"

// The four tables in which a file describes itself, and the objects that every file has.
namespace jet::file {

struct SystemColumn {
  const char* name;
  ColumnType type;
  std::uint16_t size;
  std::uint8_t flags;  // definition::column
};

struct SystemIndex {
  const char* name;
  std::span<const std::uint16_t> columns;  // ids
  std::uint8_t flags;                      // definition::real_index
  bool is_primary;
};

// A column's id is its place in the list; definitions hold columns and logical indexes in the order
// of their names, trees in the order of this list.
struct SystemTable {
  const char* name;
  std::span<const SystemColumn> columns;
  std::span<const SystemIndex> indexes;
};

extern const SystemTable kObjectsTable;
extern const SystemTable kRightsTable;
extern const SystemTable kQueriesTable;
extern const SystemTable kRelationsTable;

// Ids of the columns.
namespace objects_column {
enum : std::uint16_t {
  kId,  // of a table: the page of its definition
  kParentId,
  kName,
  kType,
  kDateCreate,
  kDateUpdate,
  kOwner,
  kFlags,
  kDatabase,  // of linked tables
  kConnect,
  kForeignName,
  kRmtInfoShort,
  kRmtInfoLong,
  kLv,
  kLvProp,
  kLvModule,
  kLvExtra,
  kCount,
};
}  // namespace objects_column

namespace rights_column {
enum : std::uint16_t { kObjectId, kSid, kRights, kIsInheritable, kCount };
}

namespace queries_column {
enum : std::uint16_t {
  kObjectId,
  kAttribute,
  kOrder,
  kName1,
  kName2,
  kExpression,
  kFlag,
  kLvExtra,
  kCount,
};
}

namespace relations_column {
enum : std::uint16_t {
  kRelation,
  kFlags,
  kColumnCount,
  kColumnNumber,
  kTable,  // the referencing one
  kColumn,
  kReferencedTable,
  kReferencedColumn,
  kCount,
};
}

namespace object_type {
inline constexpr std::int16_t kTable = 1;
inline constexpr std::int16_t kDatabase = 2;
inline constexpr std::int16_t kContainer = 3;
inline constexpr std::int16_t kOdbcTable = 4;
inline constexpr std::int16_t kQuery = 5;
inline constexpr std::int16_t kLinkedTable = 6;
inline constexpr std::int16_t kRelation = 8;
inline constexpr std::int16_t kForm = -32768;
inline constexpr std::int16_t kMacro = -32766;
inline constexpr std::int16_t kReport = -32764;
inline constexpr std::int16_t kModule = -32761;
inline constexpr std::int16_t kDocument = -32757;  // summaries and settings; carried as they are
inline constexpr std::int16_t kDataAccessPage = -32756;
}  // namespace object_type

// Objects that a rewritten file would lose.
bool IsForeignObject(std::int16_t type);

namespace object_id {
inline constexpr std::uint32_t kRoot = 0x0F000000;
inline constexpr std::uint32_t kTables = 0x0F000001;
inline constexpr std::uint32_t kDatabases = 0x0F000002;
inline constexpr std::uint32_t kRelationships = 0x0F000003;
inline constexpr std::uint32_t kMSysDb = 0x10000000;
inline constexpr std::uint32_t kMaskOfPage = 0x00FFFFFF;
}  // namespace object_id

}  // namespace jet::file
