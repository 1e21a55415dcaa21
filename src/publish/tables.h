#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ports/database.h"
#include "publish/description.h"
#include "publish/faults.h"
#include "publish/manifest.h"

namespace publish {

// The tables of the reference database and their texts.
class ReferenceTables {
 public:
  // Opens the database for reading.
  explicit ReferenceTables(const std::string& database);

  // The tables that the description names, dictionaries before user tables, each in the order of
  // names. A table that no rule matches is a fault.
  std::vector<TableRecord> Choose(const Description& description, Faults& faults);

  // Writes the text of a table into a file: UTF-16 without a byte-order mark, so that an
  // interrupted update recognises a verified copy by the hash of its bytes. A user table's text is
  // its structure. A table that the format cannot carry is a fault. Gives the hash.
  std::string WriteText(const TableRecord& table, const std::string& file, Faults& faults);

 private:
  std::unique_ptr<ports::Database> database_;
};

// Reads a dictionary's file as the updater does; anything that its import would refuse is a fault.
// Gives the hash of the text.
std::string CheckTableFile(const std::string& path, const TableRecord& table, Faults& faults);

// The same for a structure, whose file may have any encoding that the import recognises.
void CheckStructureFile(const std::string& path, const TableRecord& table, Faults& faults);

}  // namespace publish
