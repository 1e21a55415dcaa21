#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/header.h"
#include "jet/file/page_source.h"
#include "jet/file/property_block.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

// One object of a file: a table, a query, a relation, a container or something that another program
// keeps there.
struct CatalogueObject {
  std::uint32_t id = 0;  // of a table that lies in this file: the page of its definition
  std::uint32_t parent = 0;
  std::string name;
  std::int16_t type = 0;  // object_type
  std::uint32_t flags = 0;
  RowPointer place;  // of its record
  // All columns of the record by objects_column, as they are stored (references of long values).
  std::vector<std::optional<std::string>> stored;
};

struct RelationColumn {
  std::string column;
  std::string referenced_column;
  bool operator==(const RelationColumn&) const = default;
};

struct Relation {
  std::string name;
  std::uint32_t flags = 0;
  std::string table;  // the referencing one
  std::string referenced_table;
  std::vector<RelationColumn> columns;
  bool operator==(const Relation&) const = default;
};

// All of these throw Damage.
std::vector<CatalogueObject> ReadObjects(PageSource& source, const Header& header);
std::vector<Relation> ReadRelations(PageSource& source, const Header& header);
std::vector<PropertySet> ReadProperties(PageSource& source, const CatalogueObject& object);

}  // namespace jet::file
