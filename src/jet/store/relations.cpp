#include "jet/store/relations.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/field_value.h"
#include "jet/storage_sql.h"
#include "jet/store/definitions.h"

namespace jet {
namespace {

using sql::ReferenceAction;

const FieldInfo& FieldById(const TableInfo& table, std::int64_t id) {
  return *std::find_if(table.fields.begin(), table.fields.end(),
                       [id](const FieldInfo& field) { return field.id == id; });
}

// The fields of a relation that stand on one side of it.
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

std::string Joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string text;
  for (const std::string& part : parts)
    text += (text.empty() ? std::string() : std::string(separator)) + part;
  return text;
}

// Makes the triggers of one relation.
class TriggerWriter {
 public:
  TriggerWriter(const Relation& relation, const TableInfo& table, const TableInfo& referenced)
      : relation_(relation), table_(table), referenced_(referenced) {
    for (const Relation::FieldPair& pair : relation.fields) {
      const std::string own = "c" + std::to_string(pair.field);
      const std::string other = "c" + std::to_string(pair.referenced);
      own_columns_.push_back(own);
      other_columns_.push_back(other);
      refers_.push_back("NEW." + own + " IS NOT NULL");
      found_.push_back(Joined({other, "NEW." + own}, " = "));
      related_.push_back(Joined({own, "OLD." + other}, " = "));
      key_differs_.push_back(Joined({"NEW." + other, "OLD." + other}, " IS NOT "));
      bytes_differ_.push_back(Joined({"NEW." + other, "OLD." + other}, " COLLATE BINARY IS NOT "));
    }
  }

  std::string Write() const {
    const std::string missing = Joined(refers_, " AND ") + " AND NOT EXISTS (SELECT 1 FROM " +
                                referenced_.StorageName() + " WHERE " + Joined(found_, " AND ") +
                                ")";
    const std::string refusal = Refusal(kNoRelatedRecord, referenced_.name);
    const bool cascades = relation_.on_update == ReferenceAction::kCascade;
    return Trigger("a", "INSERT", table_, missing, refusal) +
           Trigger("b", "UPDATE OF " + Joined(own_columns_, ", "), table_, missing, refusal) +
           Trigger("c", "DELETE", referenced_, Guard(relation_.on_delete, {}),
                   Action(relation_.on_delete, "DELETE FROM " + table_.StorageName())) +
           Trigger("d", "UPDATE OF " + Joined(other_columns_, ", "), referenced_,
                   Guard(relation_.on_update,
                         "(" + Joined(cascades ? bytes_differ_ : key_differs_, " OR ") + ")"),
                   Action(relation_.on_update, Assignments(true)));
  }

 private:
  std::string Trigger(const char* suffix, const std::string& event, const TableInfo& on,
                      const std::string& when, const std::string& action) const {
    return "CREATE TRIGGER r" + std::to_string(relation_.id) + suffix + " AFTER " + event + " ON " +
           on.StorageName() + (when.empty() ? "" : " WHEN " + when) + " BEGIN " + action + "; END;";
  }

  std::string Related() const { return " WHERE " + Joined(related_, " AND "); }

  static std::string Refusal(std::int32_t number, const std::string& table) {
    return "SELECT " + CallSql(fn::kRefuse, {std::to_string(number), TextLiteral(table)});
  }

  std::string Guard(ReferenceAction action, std::string condition) const {
    if (action != ReferenceAction::kRefuse) return condition;
    if (!condition.empty()) condition += " AND ";
    return condition + "EXISTS (SELECT 1 FROM " + table_.StorageName() + Related() + ")";
  }

  std::string Action(ReferenceAction action, const std::string& cascade) const {
    if (action == ReferenceAction::kRefuse) return Refusal(kRelatedRecords, table_.name);
    return (action == ReferenceAction::kSetNull ? Assignments(false) : cascade) + Related();
  }

  // The referring fields follow the new key, or become Null.
  std::string Assignments(bool follow) const {
    std::vector<std::string> assignments;
    for (std::size_t i = 0; i < own_columns_.size(); ++i) {
      const FieldInfo& field = FieldById(table_, relation_.fields[i].field);
      sql::TypedSql value{"NULL", ValueType::kNull};
      if (follow) {
        value = {"NEW." + other_columns_[i], TypeOfField(field.definition.type)};
        if (value.type == ValueType::kCurrency) value.type = ValueType::kStoredCurrency;
      }
      assignments.push_back(own_columns_[i] + " = " + sql::AssignedSql(value, field));
    }
    return "UPDATE " + table_.StorageName() + " SET " + Joined(assignments, ", ");
  }

  const Relation& relation_;
  const TableInfo& table_;
  const TableInfo& referenced_;
  std::vector<std::string> own_columns_;
  std::vector<std::string> other_columns_;
  std::vector<std::string> refers_;
  std::vector<std::string> found_;
  std::vector<std::string> related_;
  std::vector<std::string> key_differs_;
  std::vector<std::string> bytes_differ_;
};

// The fields that a constraint names on both sides, the primary key's where it names none.
std::vector<Relation::FieldPair> PairFields(const sql::Constraint& constraint,
                                            const TableInfo& table, const TableInfo& referenced) {
  std::vector<std::string> names = constraint.referenced_fields;
  if (names.empty()) {
    const IndexInfo* const primary = referenced.PrimaryIndex();
    if (primary == nullptr) Fail(kNoUniqueReference, referenced.name);
    for (const ports::IndexFieldDefinition& part : primary->definition.fields)
      names.push_back(part.name);
  }
  if (names.size() != constraint.fields.size()) Fail(kRelationFieldsDiffer, constraint.name);
  std::vector<Relation::FieldPair> pairs;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const FieldInfo& field = RequireField(table, constraint.fields[i], kFieldNotFound);
    const FieldInfo& other = RequireField(referenced, names[i], kFieldNotFound);
    if (field.definition.type != other.definition.type)
      Fail(kRelationFieldsDiffer, constraint.name);
    pairs.push_back({field.id, other.id});
  }
  return pairs;
}

}  // namespace

std::vector<Relation> LoadRelations(const std::shared_ptr<Connection>& storage) {
  std::vector<Relation> relations;
  Statement rows(storage,
                 "SELECT id, name, table_id, referenced_id, on_update, on_delete, index_id"
                 " FROM _jet_relation ORDER BY id");
  while (rows.Step()) {
    Relation relation;
    relation.id = rows.Integer(0);
    relation.name = rows.Text(1);
    relation.table_id = rows.Integer(2);
    relation.referenced_id = rows.Integer(3);
    relation.on_update = static_cast<ReferenceAction>(rows.Integer(4));
    relation.on_delete = static_cast<ReferenceAction>(rows.Integer(5));
    relation.index_id = rows.Integer(6);
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

std::string RelationTriggers(const Relation& relation, const TableInfo& table,
                             const TableInfo& referenced) {
  return TriggerWriter(relation, table, referenced).Write();
}

std::string Relations::FreeName(const TableInfo& table, const TableInfo& referenced) {
  const std::vector<Relation> relations = LoadRelations(session_.SharedStorage());
  // Two long names together are longer than a name may be.
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
                   "INSERT INTO _jet_relation(name, table_id, referenced_id, on_update, on_delete,"
                   " index_id) VALUES(?1, ?2, ?3, ?4, ?5, ?6)");
  insert.Bind(1, std::string_view(relation.name)).Bind(2, relation.table_id);
  insert.Bind(3, relation.referenced_id);
  insert.Bind(4, std::int64_t{static_cast<int>(relation.on_update)});
  insert.Bind(5, std::int64_t{static_cast<int>(relation.on_delete)});
  insert.Bind(6, relation.index_id).Run();
  relation.id = session_.Storage().LastRow();
  Statement part(session_.SharedStorage(),
                 "INSERT INTO _jet_relation_field VALUES(?1, ?2, ?3, ?4)");
  for (std::size_t i = 0; i < relation.fields.size(); ++i) {
    part.Bind(1, relation.id).Bind(2, static_cast<std::int64_t>(i));
    part.Bind(3, relation.fields[i].field).Bind(4, relation.fields[i].referenced).Run();
  }
}

void Relations::Create(const TableInfo& table, const sql::Constraint& constraint) {
  const TablePtr referenced =
      RequireTable(session_, constraint.referenced_table, kConstraintNotFound);
  Relation relation;
  relation.name = constraint.name.empty() ? FreeName(table, *referenced) : constraint.name;
  for (const Relation& other : LoadRelations(session_.SharedStorage())) {
    if (tmw::EqualIgnoringCase(other.name, relation.name)) Fail(kRelationExists, relation.name);
  }
  relation.table_id = table.id;
  relation.referenced_id = referenced->id;
  relation.on_update = constraint.on_update;
  relation.on_delete = constraint.on_delete;
  relation.fields = PairFields(constraint, table, *referenced);
  if (FindUnique(*referenced, ReferencedFields(relation), nullptr) == nullptr)
    Fail(kNoUniqueReference, referenced->name);
  RefuseOrphans(relation, table, *referenced);

  ports::IndexDefinition index;
  index.name = relation.name;
  index.foreign = true;
  for (const std::string& field : constraint.fields)
    index.fields.push_back({field, false});
  Definitions(session_).CreateIndex(table, index);
  const TablePtr indexed = session_.Tables().FindTable(table.name);
  relation.index_id = indexed->FindIndex(relation.name)->id;
  Insert(relation);
  session_.Storage().Run(RelationTriggers(relation, *indexed, *referenced));
}

void Relations::Erase(const Relation& relation) {
  const std::string id = std::to_string(relation.id);
  std::string sql;
  for (const char* const suffix : {"a", "b", "c", "d"})
    sql += "DROP TRIGGER r" + id + suffix + "; ";
  session_.Storage().Run(sql + "DELETE FROM _jet_relation WHERE id = " + id +
                         "; DELETE FROM _jet_relation_field WHERE relation_id = " + id);
}

bool Relations::Drop(const TableInfo& table, const std::string& name) {
  for (const Relation& relation : LoadRelations(session_.SharedStorage())) {
    if (relation.table_id != table.id || !tmw::EqualIgnoringCase(relation.name, name)) continue;
    Erase(relation);
    Definitions(session_).DropIndex(table, *table.FindIndex(name));
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
    if (relation.referenced_id == table.id) {
      const std::vector<std::int64_t> ids = ReferencedFields(relation);
      is_needed = is_needed ||
                  (IsUniqueOver(table, index, ids) && FindUnique(table, ids, &index) == nullptr);
    }
    if (is_needed) Fail(kUsedInRelation, index.definition.name);
  }
}

}  // namespace jet
