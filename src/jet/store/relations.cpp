#include "jet/store/relations.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/store/definitions.h"

namespace jet {
namespace {

using sql::ReferenceAction;
using tmw::Joined;

// Sorted ids of the fields that the relation refers to.
std::vector<std::int64_t> ReferencedFields(const Relation& relation) {
  std::vector<std::int64_t> ids;
  for (const Relation::FieldPair& pair : relation.fields)
    ids.push_back(pair.referenced);
  std::sort(ids.begin(), ids.end());
  return ids;
}

bool IsUniqueOver(const TableInfo& table, const IndexInfo& index,
                  const std::vector<std::int64_t>& sorted_ids) {
  if (!index.definition.unique) return false;
  std::vector<std::int64_t> ids;
  for (const std::size_t position : index.positions)
    ids.push_back(table.fields[position].id);
  std::sort(ids.begin(), ids.end());
  return ids == sorted_ids;
}

const IndexInfo* FindUnique(const TableInfo& table, const std::vector<std::int64_t>& sorted_ids,
                            const IndexInfo* except) {
  for (const IndexInfo& index : table.indexes) {
    if (&index != except && IsUniqueOver(table, index, sorted_ids)) return &index;
  }
  return nullptr;
}

// Fails with the error of that number if a table has no such field.
std::vector<Relation::FieldPair> PairFields(const std::vector<ports::RelationFieldPair>& names,
                                            const TableInfo& table, const TableInfo& referenced,
                                            std::int32_t error_number) {
  std::vector<Relation::FieldPair> pairs;
  for (const ports::RelationFieldPair& pair : names) {
    pairs.push_back({RequireField(table, pair.foreign_name, error_number).id,
                     RequireField(referenced, pair.name, error_number).id});
  }
  return pairs;
}

// The field names of a constraint. Without referenced fields, those of the primary key.
std::vector<ports::RelationFieldPair> PairNames(const sql::Constraint& constraint,
                                                const TableInfo& referenced) {
  std::vector<std::string> names = constraint.referenced_fields;
  if (names.empty()) {
    const IndexInfo* const primary = referenced.PrimaryIndex();
    if (primary == nullptr) Fail(kNoUniqueReference, referenced.name);
    for (const ports::IndexFieldDefinition& part : primary->definition.fields)
      names.push_back(part.name);
  }
  if (names.size() != constraint.fields.size()) Fail(kRelationFieldsDiffer, constraint.name);
  std::vector<ports::RelationFieldPair> pairs;
  for (std::size_t i = 0; i < names.size(); ++i)
    pairs.push_back({names[i], constraint.fields[i]});
  return pairs;
}

std::int32_t AttributesOf(const sql::Constraint& constraint) {
  std::int32_t attributes = 0;
  if (constraint.on_update == ReferenceAction::kCascade)
    attributes |= ports::kRelationUpdateCascade;
  if (constraint.on_update == ReferenceAction::kSetNull) attributes |= ports::kRelationUpdateNull;
  if (constraint.on_delete == ReferenceAction::kCascade)
    attributes |= ports::kRelationDeleteCascade;
  if (constraint.on_delete == ReferenceAction::kSetNull) attributes |= ports::kRelationDeleteNull;
  return attributes;
}

}  // namespace

std::vector<Relation> LoadRelations(const std::shared_ptr<Connection>& storage) {
  std::vector<Relation> relations;
  Statement rows(storage,
                 "SELECT id, name, table_id, referenced_id, attributes, index_id"
                 " FROM _jet_relation ORDER BY id");
  while (rows.Step()) {
    Relation relation;
    relation.id = rows.Integer(0);
    relation.name = rows.Text(1);
    relation.table_id = rows.Integer(2);
    relation.referenced_id = rows.Integer(3);
    relation.attributes = static_cast<std::int32_t>(rows.Integer(4));
    relation.index_id = rows.Integer(5);
    relations.push_back(std::move(relation));
  }
  Statement pairs(storage,
                  "SELECT field_id, referenced_field_id FROM _jet_relation_field"
                  " WHERE relation_id = ?1 ORDER BY ordinal");
  for (Relation& relation : relations) {
    pairs.Bind(1, relation.id);
    while (pairs.Step())
      relation.fields.push_back({pairs.Integer(0), pairs.Integer(1)});
    pairs.Reset();
  }
  return relations;
}

std::string Relations::FreeName(const TableInfo& table, const TableInfo& referenced) {
  const std::vector<Relation> relations = LoadRelations(session_.SharedStorage());
  // Two long names together exceed the length of a name.
  constexpr std::size_t kMostUnits = 60;
  const std::u16string units = tmw::Utf8ToUtf16(referenced.name + table.name);
  const std::string base = tmw::Trim(tmw::Utf16ToUtf8(units.substr(0, kMostUnits)));
  std::string name = base;
  for (int number = 1;; ++number) {
    const bool is_taken = table.FindIndex(name) != nullptr ||
                          std::any_of(relations.begin(), relations.end(), [&](const auto& other) {
                            return tmw::EqualIgnoringCase(other.name, name);
                          });
    if (!is_taken) return name;
    name = base + std::to_string(number);
  }
}

void Relations::RefuseOrphans(const Relation& relation, const TableInfo& table,
                              const TableInfo& referenced) {
  std::vector<std::string> present;
  std::vector<std::string> found;
  for (const Relation::FieldPair& pair : relation.fields) {
    const std::string own = "own.c" + std::to_string(pair.field);
    present.push_back(own + " IS NOT NULL");
    found.push_back("other.c" + std::to_string(pair.referenced) + " = " + own);
  }
  const std::int64_t has_orphan = session_.Storage().ReadInteger(
      "SELECT EXISTS (SELECT 1 FROM " + table.StorageName() + " AS own WHERE " +
      Joined(present, " AND ") + " AND NOT EXISTS (SELECT 1 FROM " + referenced.StorageName() +
      " AS other WHERE " + Joined(found, " AND ") + "))");
  if (has_orphan != 0) Fail(kNoRelatedRecord, referenced.name);
}

void Relations::Insert(Relation& relation) {
  Statement insert(session_.SharedStorage(),
                   "INSERT INTO _jet_relation(name, table_id, referenced_id, attributes, index_id)"
                   " VALUES(?1, ?2, ?3, ?4, ?5)");
  insert.Bind(1, std::string_view(relation.name)).Bind(2, relation.table_id);
  insert.Bind(3, relation.referenced_id).Bind(4, std::int64_t{relation.attributes});
  insert.Bind(5, relation.index_id).Run();
  relation.id = session_.Storage().LastRow();
  Statement part(session_.SharedStorage(),
                 "INSERT INTO _jet_relation_field VALUES(?1, ?2, ?3, ?4)");
  for (std::size_t i = 0; i < relation.fields.size(); ++i) {
    part.Bind(1, relation.id).Bind(2, static_cast<std::int64_t>(i));
    part.Bind(3, relation.fields[i].field).Bind(4, relation.fields[i].referenced).Run();
  }
}

void Relations::RefuseTakenName(const std::string& name, std::int32_t error_number) {
  for (const Relation& other : LoadRelations(session_.SharedStorage())) {
    if (tmw::EqualIgnoringCase(other.name, name)) Fail(error_number, name);
  }
}

void Relations::Create(const TableInfo& table, const sql::Constraint& constraint) {
  const TablePtr referenced =
      RequireTable(session_, constraint.referenced_table, kConstraintNotFound);
  Relation relation;
  relation.name = constraint.name.empty() ? FreeName(table, *referenced) : constraint.name;
  RefuseTakenName(relation.name, kRelationExists);
  relation.attributes = AttributesOf(constraint);
  relation.fields =
      PairFields(PairNames(constraint, *referenced), table, *referenced, kFieldNotFound);
  Add(relation, table, *referenced);
}

void Relations::Create(const ports::RelationDefinition& definition) {
  CheckName(definition.name);
  RefuseTakenName(definition.name, kObjectExists);
  if ((definition.attributes & ports::kRelationInherited) != 0)
    Fail(kInvalidArgument, definition.name);
  if (definition.fields.empty()) Fail(kRelationWithoutFields, definition.name);
  const TablePtr table = RequireTable(session_, definition.foreign_table, kItemNotFound);
  const TablePtr referenced = RequireTable(session_, definition.table, kItemNotFound);
  Relation relation;
  relation.name = definition.name;
  relation.attributes = definition.attributes;
  relation.fields = PairFields(definition.fields, *table, *referenced, kItemNotFound);
  Add(relation, *table, *referenced);
}

void Relations::Add(Relation& relation, const TableInfo& table, const TableInfo& referenced) {
  // With their indexes: every row looks for the one that it refers to.
  session_.LoadedTables().FindTable(table.name);
  session_.LoadedTables().FindTable(referenced.name);
  session_.MarkChanged(table);
  session_.MarkChanged(referenced);
  relation.table_id = table.id;
  relation.referenced_id = referenced.id;
  if (relation.IsEnforced()) Enforce(relation, table, referenced);
  Insert(relation);
  Definitions(session_).JudgeTable(table.name);
  Definitions(session_).JudgeTable(referenced.name);
  session_.Storage().Run(RelationTriggers(relation, table, referenced));
}

// Checks the existing rows and creates the index of the relation.
void Relations::Enforce(Relation& relation, const TableInfo& table, const TableInfo& referenced) {
  ports::IndexDefinition index;
  index.name = relation.name;
  index.foreign = true;
  for (const Relation::FieldPair& pair : relation.fields) {
    const ports::FieldDefinition& field = FieldById(table, pair.field).definition;
    if (field.type != FieldById(referenced, pair.referenced).definition.type)
      Fail(kRelationFieldsDiffer, relation.name);
    index.fields.push_back({field.name, false});
  }
  if (FindUnique(referenced, ReferencedFields(relation), nullptr) == nullptr)
    Fail(kNoUniqueReference, referenced.name);
  RefuseOrphans(relation, table, referenced);
  Definitions(session_).CreateIndex(table, index);
  relation.index_id = session_.Tables().FindTable(table.name)->FindIndex(relation.name)->id;
}

std::vector<ports::RelationDefinition> Relations::List() {
  std::vector<ports::RelationDefinition> list;
  Statement rows(session_.SharedStorage(),
                 "SELECT r.id, r.name, own.name, other.name, r.attributes FROM _jet_relation AS r"
                 " JOIN _jet_table AS own ON own.id = r.table_id"
                 " JOIN _jet_table AS other ON other.id = r.referenced_id");
  Statement pairs(session_.SharedStorage(),
                  "SELECT own.name, other.name FROM _jet_relation_field AS r"
                  " JOIN _jet_field AS own ON own.id = r.field_id"
                  " JOIN _jet_field AS other ON other.id = r.referenced_field_id"
                  " WHERE r.relation_id = ?1 ORDER BY r.ordinal");
  while (rows.Step()) {
    ports::RelationDefinition relation;
    relation.name = rows.Text(1);
    relation.foreign_table = rows.Text(2);
    relation.table = rows.Text(3);
    relation.attributes = static_cast<std::int32_t>(rows.Integer(4));
    pairs.Bind(1, rows.Integer(0));
    while (pairs.Step())
      relation.fields.push_back({std::string(pairs.Text(1)), std::string(pairs.Text(0))});
    pairs.Reset();
    list.push_back(std::move(relation));
  }
  std::sort(list.begin(), list.end(),
            [](const auto& a, const auto& b) { return InNameOrder(a.name, b.name); });
  return list;
}

void Relations::Delete(const std::string& name) {
  for (const Relation& relation : LoadRelations(session_.SharedStorage())) {
    if (!tmw::EqualIgnoringCase(relation.name, name)) continue;
    EraseWithIndex(relation);
    return;
  }
  Fail(kItemNotFound, name);
}

void Relations::Erase(const Relation& relation) {
  const std::string id = std::to_string(relation.id);
  session_.Storage().Run(DropRelationTriggers(relation) + "DELETE FROM _jet_relation WHERE id = " +
                         id + "; DELETE FROM _jet_relation_field WHERE relation_id = " + id);
}

void Relations::EraseWithIndex(const Relation& relation) {
  Erase(relation);
  if (!relation.IsEnforced()) return;
  Statement row(session_.SharedStorage(), "SELECT name FROM _jet_table WHERE id = ?1");
  row.Bind(1, relation.table_id);
  row.Step();
  const TablePtr table = session_.Tables().FindTable(row.Text(0));
  row.Reset();
  const IndexInfo* const index = table->FindIndex(relation.name);
  if (index != nullptr) Definitions(session_).DropIndex(*table, *index);
}

bool Relations::Drop(const TableInfo& table, const std::string& name) {
  for (const Relation& relation : LoadRelations(session_.SharedStorage())) {
    if (relation.table_id != table.id || !tmw::EqualIgnoringCase(relation.name, name)) continue;
    EraseWithIndex(relation);
    return true;
  }
  return false;
}

void Relations::Release(const TableInfo& table) {
  const std::vector<Relation> relations = LoadRelations(session_.SharedStorage());
  for (const Relation& relation : relations) {
    if (relation.referenced_id == table.id && relation.table_id != table.id)
      Fail(kUsedInRelation, table.name);
  }
  for (const Relation& relation : relations) {
    if (relation.table_id == table.id) Erase(relation);
  }
}

void Relations::RefuseField(const FieldInfo& field) {
  for (const Relation& relation : LoadRelations(session_.SharedStorage())) {
    for (const Relation::FieldPair& pair : relation.fields) {
      if (pair.field == field.id || pair.referenced == field.id)
        Fail(kFieldInRelation, field.definition.name);
    }
  }
}

void Relations::RefuseIndex(const TableInfo& table, const IndexInfo& index) {
  for (const Relation& relation : LoadRelations(session_.SharedStorage())) {
    bool is_needed = relation.index_id == index.id;
    if (relation.referenced_id == table.id && relation.IsEnforced()) {
      const std::vector<std::int64_t> ids = ReferencedFields(relation);
      is_needed = is_needed ||
                  (IsUniqueOver(table, index, ids) && FindUnique(table, ids, &index) == nullptr);
    }
    if (is_needed) Fail(kUsedInRelation, index.definition.name);
  }
}

}  // namespace jet
