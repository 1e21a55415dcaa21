#pragma once

#include <map>
#include <string>
#include <vector>

#include "jet/file/catalogue_reader.h"
#include "jet/file/page_census.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// What the file says of its objects: their places, owners, rights, relations and queries.
class CatalogueCheck {
 public:
  // The objects must outlive the check.
  CatalogueCheck(CheckContext& context, const Header& header,
                 const std::vector<CatalogueObject>& objects);

  // Notes what the table says of its relations; all tables are added before the check runs.
  void AddTable(const std::string& name, const TableLayout& layout);

  void Run();

 private:
  // One end of a relation as a definition describes it.
  struct End {
    std::string table;
    RelationEnd relation;
  };
  using EndKey = std::pair<PageNumber, std::uint32_t>;  // definition, number of the index

  void CheckObjects();
  void CheckOwner(const CatalogueObject& object);
  void CheckRights();
  void CheckEnds();
  void CheckRelations();
  void CheckQueries();
  bool HasObject(const std::string& name, std::int16_t type) const;
  const CatalogueObject* FindTable(const std::string& name) const;
  bool HasColumns(const Relation& relation);

  CheckContext& context_;
  const Header& header_;
  const std::vector<CatalogueObject>& objects_;
  std::map<EndKey, End> ends_;
};

}  // namespace jet::file
