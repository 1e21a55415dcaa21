#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/store/sqlite.h"
#include "jet/table_info.h"

namespace jet {

// How much of a table has been brought from the database's file into the working store. Kept in the
// table's row, so that it goes back with everything else when a transaction is taken back.
enum class TableState : std::uint8_t {
  kInFile,   // nothing but its name
  kDefined,  // fields, indexes and properties
  kLoaded,   // all of it
  kChanged,  // and it differs from the file
};

// Numbers that catalogue rows made from a file have. The same table, field or index gets the same
// one each time it is loaded, so that whoever holds a table's description may go on after a
// transaction that loaded it has been taken back. What is made later gets higher numbers.
namespace loaded_id {
inline constexpr std::int64_t kPerTable = 0x10000;
inline constexpr std::int64_t kFirstMade = std::int64_t{1} << 40U;
}  // namespace loaded_id

// The table's position in the file's list of objects; nothing for a table that was made here.
std::optional<std::size_t> ObjectOf(std::int64_t table);
// The column's number in the file's definition of its table; nothing for a field made here.
std::optional<std::uint16_t> ColumnOf(std::int64_t field);

// Brings a table's definition into the catalogue.
class TableDefiner {
 public:
  virtual ~TableDefiner() = default;
  virtual void Define(std::int64_t table) = 0;
};

// The catalogue of one database, stored beside the data in tables of its own:
//   _jet_database     one row: whether anything differs from the file
//   _jet_table        one row per table
//   _jet_field        one row per field, by ordinal
//   _jet_index        one row per index
//   _jet_index_field  one row per field of an index
//   _jet_property     further properties of fields
//   _jet_relation     one row per relation
//   _jet_relation_field  one row per pair of fields of a relation
//   _jet_carried_relation  names of relations of the file between tables that cannot be read here
// The list of tables is read at first use, the fields and indexes of a table when it is first
// found.
class Catalogue final : public TableFinder {
 public:
  Catalogue(std::shared_ptr<Connection> connection, TableDefiner& definer)
      : connection_(std::move(connection)), definer_(definer) {}

  // Null for tables of the system and for linked ones too: nothing can be read from or done to
  // them.
  TablePtr FindTable(std::string_view name) override;
  TablePtr FindTable(std::int64_t id);
  // Of every table that is listed; null when there is none.
  const ports::TableSummary* FindSummary(std::string_view name);
  // In no particular order.
  std::vector<ports::TableSummary> Tables();

  // To be called after definitions have changed, in this process or another.
  void Forget();

 private:
  struct Entry {
    std::int64_t id = 0;
    ports::TableSummary summary;
    TableState state = TableState::kChanged;
    TablePtr loaded;
  };

  void LoadNames();
  TablePtr LoadTable(Entry& entry);
  void LoadFields(TableInfo& table);
  void LoadIndexes(TableInfo& table);

  std::shared_ptr<Connection> connection_;
  TableDefiner& definer_;
  std::map<std::string, Entry> tables_;  // by lower-case name
  Entry* latest_ = nullptr;  // the one found last: every change of a row asks for its table
  bool names_loaded_ = false;
};

// The order of a collection's members.
bool InNameOrder(const std::string& a, const std::string& b);

// False for tables of the system and for linked ones.
bool IsReadable(const ports::TableSummary& table);

// The properties of an index as the catalogue stores them.
std::int64_t IndexFlags(const ports::IndexDefinition& index);

// The private storage that an open database works in, with an empty catalogue. It lies in memory
// and, beyond a bounded part, in a temporary file without a name.
std::shared_ptr<Connection> MakeWorkingStore();

}  // namespace jet
