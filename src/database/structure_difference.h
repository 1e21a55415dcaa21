#pragma once

#include <string>
#include <vector>

#include "ports/database.h"

// What differs between the structures of two databases.
namespace tmw {

enum class StructurePart {
  kTable,       // on one side only
  kField,       // type, size, NOT NULL, default, zero-length texts
  kFieldOrder,  // of the fields that both tables have
  kIndex,
  kRelation,
};

struct StructureDifference {
  StructurePart part = StructurePart::kTable;
  std::string table;  // the referring one of a relation
  std::string name;   // of the field, the index or the relation; else empty
  // The definition as SQL, on each side; empty where it is missing.
  std::string left;
  std::string right;
};

using StructureDifferences = std::vector<StructureDifference>;

// Compares two tables, field by field and index by index, in the order of names.
StructureDifferences CompareTables(const ports::TableDefinition& left,
                                   const ports::TableDefinition& right);

// The relations between the users' own tables.
StructureDifferences CompareRelations(ports::Database& left, ports::Database& right);

// Everything: tables that one side lacks, those that both have, relations. Linked tables and those
// of the system are left out.
StructureDifferences CompareStructures(ports::Database& left, ports::Database& right);

}  // namespace tmw
