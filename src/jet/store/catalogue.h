#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/store/sqlite.h"
#include "jet/table_info.h"

namespace jet {

// The catalogue of one database, stored beside the data in tables of its own:
//   _jet_table        one row per table
//   _jet_field        one row per field, by ordinal
//   _jet_index        one row per index
//   _jet_index_field  one row per field of an index
//   _jet_property     further properties of fields
//   _jet_relation     one row per relation
//   _jet_relation_field  one row per pair of fields of a relation
// The list of tables is read at first use, the fields and indexes of a table when it is first
// found.
class Catalogue final : public TableFinder {
 public:
  explicit Catalogue(std::shared_ptr<Connection> connection) : connection_(std::move(connection)) {}

  TablePtr FindTable(std::string_view name) override;
  // Without system tables, in any order.
  std::vector<ports::TableSummary> Tables();

  // To be called after definitions have changed, in this process or another.
  void Forget();

 private:
  struct Entry {
    std::int64_t id = 0;
    std::string name;
    std::uint32_t attributes = 0;
    TablePtr loaded;
  };

  void LoadNames();
  TablePtr LoadTable(const Entry& entry);
  void LoadFields(TableInfo& table);
  void LoadIndexes(TableInfo& table);

  std::shared_ptr<Connection> connection_;
  std::map<std::string, Entry> tables_;  // by lower-case name
  bool names_loaded_ = false;
};

// The order of a collection's members.
bool InNameOrder(const std::string& a, const std::string& b);

// The system tables that every database lists. They can be neither read nor changed.
std::vector<ports::TableSummary> SystemTables();
bool IsSystemTable(std::string_view name);

// The properties of an index as the catalogue stores them.
std::int64_t IndexFlags(const ports::IndexDefinition& index);

// Turns an empty storage file into a database, and tests whether a file is one.
void CreateCatalogue(Connection& connection);
bool HasCatalogue(Connection& connection);

}  // namespace jet
