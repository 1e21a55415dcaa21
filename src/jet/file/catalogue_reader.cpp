#include "jet/file/catalogue_reader.h"

#include <map>
#include <utility>

#include "jet/file/long_value_reader.h"
#include "jet/file/system_rows.h"

namespace jet::file {
namespace {

// A relation while its rows are collected; they may come in any order.
struct GrowingRelation {
  Relation relation;
  std::uint32_t column_count = 0;
  std::map<std::uint32_t, RelationColumn> columns;
};

Relation Finished(GrowingRelation growing, PageNumber page) {
  if (growing.columns.size() != growing.column_count ||
      growing.columns.rbegin()->first + 1 != growing.column_count)
    throw Damage(page, texts::kBadRelation);
  for (auto& [number, column] : growing.columns)
    growing.relation.columns.push_back(std::move(column));
  return std::move(growing.relation);
}

}  // namespace

std::vector<CatalogueObject> ReadObjects(PageSource& source, const Header& header) {
  std::vector<CatalogueObject> objects;
  SystemRows rows(source, header.ObjectsTable(), kObjectsTable);
  while (rows.Next()) {
    if (objects.size() == limits::kObjects) throw Damage(rows.Home().page, texts::kManyObjects);
    CatalogueObject object;
    object.id = rows.Number(objects_column::kId);
    object.parent = rows.Number(objects_column::kParentId);
    object.name = rows.Text(objects_column::kName);
    object.type = static_cast<std::int16_t>(rows.Number(objects_column::kType));
    object.flags = rows.Number(objects_column::kFlags);
    object.place = rows.Home();
    for (std::uint16_t column = 0; column < objects_column::kCount; ++column) {
      const auto stored = rows.Stored(column);
      object.stored.push_back(stored ? std::optional<std::string>(*stored) : std::nullopt);
    }
    objects.push_back(std::move(object));
  }
  return objects;
}

std::vector<Relation> ReadRelations(PageSource& source, const Header& header) {
  std::map<std::string, GrowingRelation> growing;
  SystemRows rows(source, header.RelationsTable(), kRelationsTable);
  while (rows.Next()) {
    const std::string name = rows.Text(relations_column::kRelation);
    GrowingRelation& found = growing[name];
    found.relation.name = name;
    found.relation.flags = rows.Number(relations_column::kFlags);
    found.relation.table = rows.Text(relations_column::kTable);
    found.relation.referenced_table = rows.Text(relations_column::kReferencedTable);
    found.column_count = rows.Number(relations_column::kColumnCount);
    RelationColumn column{rows.Text(relations_column::kColumn),
                          rows.Text(relations_column::kReferencedColumn)};
    if (!found.columns.emplace(rows.Number(relations_column::kColumnNumber), std::move(column))
             .second)
      throw Damage(rows.Home().page, texts::kBadRelation);
  }
  std::vector<Relation> relations;
  relations.reserve(growing.size());
  for (auto& [name, relation] : growing)
    relations.push_back(Finished(std::move(relation), header.RelationsTable()));
  return relations;
}

std::vector<PropertySet> ReadProperties(PageSource& source, const CatalogueObject& object) {
  const auto& stored = object.stored[objects_column::kLvProp];
  if (!stored) return {};
  const ByteView reference(object.place.page, *stored);
  if (LongValueReference::Parse(reference).length > limits::kPropertiesLength)
    reference.Fail(texts::kBadProperties);
  const std::string block = ReadLongValue(source, reference);
  return ParseProperties({object.place.page, block});
}

}  // namespace jet::file
