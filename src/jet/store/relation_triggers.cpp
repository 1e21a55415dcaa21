#include "jet/store/relation_triggers.h"

#include <algorithm>
#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/field_value.h"
#include "jet/storage_sql.h"

namespace jet {
namespace {

using sql::ReferenceAction;
using tmw::Joined;

ReferenceAction ActionOf(std::int32_t attributes, std::int32_t cascade, std::int32_t null) {
  if ((attributes & cascade) != 0) return ReferenceAction::kCascade;
  return (attributes & null) != 0 ? ReferenceAction::kSetNull : ReferenceAction::kRefuse;
}

// Writes the triggers of one relation.
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
    const bool cascades = relation_.OnUpdate() == ReferenceAction::kCascade;
    return Trigger("a", "INSERT", table_, missing, refusal) +
           Trigger("b", "UPDATE OF " + Joined(own_columns_, ", "), table_, missing, refusal) +
           Trigger("c", "DELETE", referenced_, Guard(relation_.OnDelete(), {}),
                   Action(relation_.OnDelete(), "DELETE FROM " + table_.StorageName())) +
           Trigger("d", "UPDATE OF " + Joined(other_columns_, ", "), referenced_,
                   Guard(relation_.OnUpdate(),
                         "(" + Joined(cascades ? bytes_differ_ : key_differs_, " OR ") + ")"),
                   Action(relation_.OnUpdate(), Assignments(true)));
  }

 private:
  std::string Trigger(const char* suffix, const std::string& event, const TableInfo& on,
                      const std::string& when, const std::string& action) const {
    return "CREATE TRIGGER IF NOT EXISTS r" + std::to_string(relation_.id) + suffix + " AFTER " +
           event + " ON " + on.StorageName() + (when.empty() ? "" : " WHEN " + when) + " BEGIN " +
           action + "; END;";
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

  // Sets the referring fields to the new key, or to Null.
  std::string Assignments(bool follow) const {
    std::vector<std::string> assignments;
    for (std::size_t i = 0; i < own_columns_.size(); ++i) {
      const FieldInfo& field = FieldById(table_, relation_.fields[i].field);
      sql::TypedSql value{"NULL", ValueType::kNull};
      if (follow) {
        value = {"NEW." + other_columns_[i], TypeOfField(field.definition.type)};
        if (value.type == ValueType::kCurrency) value.type = ValueType::kStoredCurrency;
        if (field.definition.type == ports::DataType::kDecimal)
          value.type = ValueType::kStoredDecimal;
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

}  // namespace

const FieldInfo& FieldById(const TableInfo& table, std::int64_t id) {
  return *std::find_if(table.fields.begin(), table.fields.end(),
                       [id](const FieldInfo& field) { return field.id == id; });
}

ReferenceAction Relation::OnUpdate() const {
  return ActionOf(attributes, ports::kRelationUpdateCascade, ports::kRelationUpdateNull);
}

ReferenceAction Relation::OnDelete() const {
  return ActionOf(attributes, ports::kRelationDeleteCascade, ports::kRelationDeleteNull);
}

std::string RelationTriggers(const Relation& relation, const TableInfo& table,
                             const TableInfo& referenced) {
  return relation.IsEnforced() ? TriggerWriter(relation, table, referenced).Write() : "";
}

std::string DropRelationTriggers(const Relation& relation) {
  std::string sql;
  for (const char* const suffix : {"a", "b", "c", "d"})
    sql += "DROP TRIGGER IF EXISTS r" + std::to_string(relation.id) + suffix + "; ";
  return sql;
}

}  // namespace jet
