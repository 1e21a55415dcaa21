#include "jet/store/file_relations.h"

#include <algorithm>
#include <set>
#include <string>
#include <utility>

namespace jet {
namespace {

// Gives the names as the definitions have them; returns false if one of them is not there.
bool Resolve(file::Relation& relation, Catalogue& catalogue) {
  const TablePtr table = catalogue.FindTable(relation.table);
  const TablePtr referenced = catalogue.FindTable(relation.referenced_table);
  if (!table || !referenced) return false;
  relation.table = table->name;
  relation.referenced_table = referenced->name;
  return std::all_of(relation.columns.begin(), relation.columns.end(), [&](auto& pair) {
    const FieldInfo* const own = table->FindField(pair.column);
    const FieldInfo* const other = referenced->FindField(pair.referenced_column);
    if (own == nullptr || other == nullptr) return false;
    pair = {own->definition.name, other->definition.name};
    return true;
  });
}

}  // namespace

void BringRelations(const std::shared_ptr<Connection>& storage, file::DatabaseReader& reader,
                    Catalogue& catalogue) {
  Statement insert(storage,
                   "INSERT INTO _jet_relation(name, table_id, referenced_id, attributes, index_id)"
                   " VALUES(?1, ?2, ?3, ?4, ?5)");
  Statement part(storage, "INSERT INTO _jet_relation_field VALUES(?1, ?2, ?3, ?4)");
  Statement carried(storage, "INSERT INTO _jet_carried_relation VALUES(?1)");
  for (file::Relation& relation : reader.Relations()) {
    if (!Resolve(relation, catalogue)) {
      carried.Bind(1, std::string_view(relation.name)).Run();
      continue;
    }
    const TablePtr table = catalogue.FindTable(relation.table);
    const TablePtr referenced = catalogue.FindTable(relation.referenced_table);
    const IndexInfo* const index = table->FindIndex(relation.name);
    insert.Bind(1, std::string_view(relation.name)).Bind(2, table->id).Bind(3, referenced->id);
    insert.Bind(4, std::int64_t{relation.flags});
    insert.Bind(5, index == nullptr ? 0 : index->id).Run();
    const std::int64_t id = storage->LastRow();
    std::int64_t ordinal = 0;
    for (const file::RelationColumn& pair : relation.columns) {
      part.Bind(1, id).Bind(2, ordinal++);
      part.Bind(3, table->FindField(pair.column)->id);
      part.Bind(4, referenced->FindField(pair.referenced_column)->id).Run();
    }
  }
}

FileRelations ReadFileRelations(const std::shared_ptr<Connection>& storage,
                                file::DatabaseReader& reader, Catalogue& catalogue) {
  std::set<std::string> carried;
  Statement names(storage, "SELECT name FROM _jet_carried_relation");
  while (names.Step())
    carried.emplace(names.Text(0));
  FileRelations relations;
  for (file::Relation& relation : reader.Relations()) {
    if (carried.contains(relation.name)) {
      relations.carried.push_back(std::move(relation));
      continue;
    }
    Resolve(relation, catalogue);
    relations.known.push_back(std::move(relation));
  }
  return relations;
}

}  // namespace jet
