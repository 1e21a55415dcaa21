#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/database.h"
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

  // The text of a table; a user table's is its structure. A table that the format cannot carry is a
  // fault, and the text is empty.
  std::string TextOf(const TableRecord& table, Faults& faults);

 private:
  std::unique_ptr<platform::Database> database_;
};

// Reads a table's text as the updater's import does; anything it would refuse is a fault.
void CheckTableText(const std::string& text, const TableRecord& table, Faults& faults);

// The text of a table's file in any encoding that the updater's import recognises.
std::string ReadTableFile(const std::string& path);

// The bytes of a table's file: UTF-16 without a byte-order mark, so that an interrupted update
// recognises a verified copy by the hash of its bytes.
std::string TableFileBytes(const std::string& text);

}  // namespace publish
