#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/limits.h"
#include "jet/file/row_pointer.h"

// One table as its definition describes it, and what follows from that for its rows.
namespace jet::file {

enum class ColumnType : std::uint8_t {
  kBoolean = 1,  // the value is the bit of the null mask
  kByte = 2,
  kInteger = 3,
  kLong = 4,
  kCurrency = 5,
  kSingle = 6,
  kDouble = 7,
  kDate = 8,
  kBinary = 9,
  kText = 10,
  kOle = 11,
  kMemo = 12,
  kGuid = 15,
  kNumeric = 16,
  kWideBinary = 17,  // bytes of a fixed length; only in tables that the engine keeps for itself
};

// Whether this room knows values of the type.
bool IsKnown(ColumnType type);

// Whether the record holds a reference to the value instead of the value.
bool IsLong(ColumnType type);

// Bytes of a value in a record; 0 for types whose values vary in length and for Booleans.
std::size_t ValueWidth(ColumnType type);

struct LongColumnMaps {
  RowPointer pages;  // usage maps of the pages that hold values, and of those with room
  RowPointer space;
  bool operator==(const LongColumnMaps&) const = default;
};

struct ColumnLayout {
  std::string name;
  ColumnType type = ColumnType::kText;
  std::uint16_t id = 0;             // its bit in the null mask; ids of deleted columns stay unused
  std::uint16_t variable_slot = 0;  // among the record's variable columns
  std::uint16_t ordinal = 0;        // its place in the table's field order
  std::uint16_t fixed_offset = 0;   // from the beginning of the record's fixed part
  std::uint16_t size = 0;           // bytes; 0 for long values
  std::uint32_t sort_order = 0;     // numeric columns: precision, and scale shifted by 8
  std::uint8_t flags = 0;           // definition::column
  std::uint8_t extra_flags = 0;
  std::optional<LongColumnMaps> long_maps;

  bool IsFixed() const { return (flags & definition::column::kFixed) != 0; }
  bool IsAutonumber() const { return (flags & definition::column::kAutonumber) != 0; }
  std::uint8_t Scale() const { return static_cast<std::uint8_t>(sort_order >> 8U); }
  bool operator==(const ColumnLayout&) const = default;
};

struct KeyColumn {
  std::uint16_t column_id = 0;
  bool is_descending = false;
  bool operator==(const KeyColumn&) const = default;
};

// A tree of keys.
struct IndexLayout {
  std::vector<KeyColumn> columns;
  RowPointer pages_map;
  PageNumber root = 0;
  std::uint8_t flags = 0;              // definition::real_index
  std::uint32_t entry_statistics = 0;  // distinct keys, as the definition says
  std::uint32_t unknown_statistics = 0;

  bool IsUnique() const { return (flags & definition::real_index::kUnique) != 0; }
  bool IgnoresNulls() const { return (flags & definition::real_index::kIgnoreNulls) != 0; }
  bool IsRequired() const { return (flags & definition::real_index::kRequired) != 0; }
  bool operator==(const IndexLayout&) const = default;
};

// The other end of a relation that an index serves.
struct RelationEnd {
  std::uint32_t other_number = 0;  // number of the logical index there
  PageNumber other_table = 0;      // definition page
  std::uint8_t side = 0;
  bool cascades_updates = false;
  bool cascades_deletions = false;
  bool operator==(const RelationEnd&) const = default;
};

// A named index; several may share one tree.
struct LogicalIndexLayout {
  std::string name;
  std::uint32_t number = 0;
  std::uint32_t real_index = 0;
  std::uint8_t kind = definition::logical_index::kOrdinary;
  std::optional<RelationEnd> relation;
  bool operator==(const LogicalIndexLayout&) const = default;
};

struct TableLayout {
  PageNumber page = 0;  // where the definition begins
  std::uint8_t kind = definition::kUserTable;
  std::uint32_t row_count = 0;
  std::uint32_t last_autonumber = 0;
  std::uint32_t autonumber_step = 1;
  std::uint16_t column_ids = 0;  // highest id ever given, plus one
  std::uint16_t variable_columns = 0;
  RowPointer rows_map;
  RowPointer space_map;
  std::vector<ColumnLayout> columns;  // in the order of the definition
  std::vector<IndexLayout> indexes;
  std::vector<LogicalIndexLayout> logical_indexes;  // in the order of their names

  const ColumnLayout* FindColumn(std::uint16_t id) const;
  bool operator==(const TableLayout&) const = default;
};

// Positions in TableLayout::columns, in the table's field order: by ordinal, then by id (many
// definitions that the engine made for itself have no ordinals).
std::vector<std::size_t> FieldOrder(const TableLayout& table);

// What a table's definition says about the shape of its records.
struct RowShape {
  std::size_t column_ids = 0;       // of the widest record
  std::size_t variable_slots = 0;   // 0: records have no variable part
  std::size_t first_variable = 0;   // smallest id of a variable column; column_ids without any
  std::size_t fixed_length = 0;     // of the fixed part
  std::size_t mask_width = 0;       // bytes
  std::size_t declared_length = 0;  // of the longest record without its variable values
};

RowShape ShapeOf(const TableLayout& table);

// Bytes of a null mask for so many columns.
constexpr std::size_t MaskWidth(std::size_t column_ids) {
  return (column_ids + 7) / 8;
}

}  // namespace jet::file
