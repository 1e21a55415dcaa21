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

  // The tables that the description selects: dictionaries, then user tables, both in the order of
  // names. A table that no rule matches is a fault.
  std::vector<TableRecord> Choose(const Description& description, Faults& faults);

  // Writes the text of a table (for a user table only its structure) to a file and returns its
  // hash. The file is UTF-16 without a byte-order mark, so that an interrupted update recognises a
  // verified copy by the hash of its bytes. A table that the format cannot hold is a fault.
  std::string WriteText(const TableRecord& table, const std::string& file, Faults& faults);

 private:
  std::unique_ptr<ports::Database> database_;
};

// Reads a dictionary's file as the updater does and returns the hash of its text. Anything that the
// updater's import would refuse is a fault.
std::string CheckTableFile(const std::string& path, const TableRecord& table, Faults& faults);

// Checks a structure in the same way; its file may have any encoding that the import recognises.
void CheckStructureFile(const std::string& path, const TableRecord& table, Faults& faults);

}  // namespace publish
