#include "database/held_relations.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <variant>

#include "database/database_texts.h"
#include "database/engine_failures.h"
#include "database/statement_cutter.h"
#include "database/table_lookup.h"
#include "foundation/text.h"

namespace tmw {
namespace {

using ports::RelationDefinition;

constexpr std::size_t kShownValues = 5;

bool IsEnforced(const RelationDefinition& relation) {
  return (relation.attributes & ports::kRelationDontEnforce) == 0;
}

const ports::FieldDefinition* FindField(const ports::TableDefinition& table,
                                        const std::string& name) {
  for (const ports::FieldDefinition& field : table.fields) {
    if (EqualIgnoringCase(field.name, name)) return &field;
  }
  return nullptr;
}

bool HasFieldsOf(const ports::IndexDefinition& index, const std::vector<std::string>& names) {
  return index.fields.size() == names.size() &&
         std::all_of(names.begin(), names.end(), [&](const std::string& name) {
           return std::any_of(index.fields.begin(), index.fields.end(), [&](const auto& field) {
             return EqualIgnoringCase(field.name, name);
           });
         });
}

std::vector<std::string> ReferredNames(const RelationDefinition& relation) {
  std::vector<std::string> names;
  for (const ports::RelationFieldPair& pair : relation.fields)
    names.push_back(pair.name);
  return names;
}

std::vector<std::string> ReferringNames(const RelationDefinition& relation) {
  std::vector<std::string> names;
  for (const ports::RelationFieldPair& pair : relation.fields)
    names.push_back(pair.foreign_name);
  return names;
}

// The rows that refer to none, as the part of a statement from FROM on.
std::string OrphansSql(const RelationDefinition& relation) {
  std::vector<std::string> pairs;
  std::vector<std::string> conditions;
  for (const ports::RelationFieldPair& pair : relation.fields) {
    pairs.push_back("(f.[" + pair.foreign_name + "] = t.[" + pair.name + "])");
    conditions.push_back("f.[" + pair.foreign_name + "] is not null");
  }
  conditions.push_back("t.[" + relation.fields.front().name + "] is null");
  return " from [" + relation.foreign_table + "] as f left join [" + relation.table + "] as t on " +
         Joined(pairs, " and ") + " where " + Joined(conditions, " and ");
}

// The first values of the referring fields that have no counterpart, in their order.
std::vector<std::string> FirstOrphans(ports::Database& database,
                                      const RelationDefinition& relation) {
  std::vector<std::string> columns;
  for (const ports::RelationFieldPair& pair : relation.fields)
    columns.push_back("f.[" + pair.foreign_name + "]");
  const std::string list = Joined(columns, ", ");
  const auto rows =
      database.OpenRecordset("select " + Joined(columns, " & ', ' & ") + " & ''" +
                                 OrphansSql(relation) + " group by " + list + " order by " + list,
                             ports::RecordsetType::kDynaset);
  std::vector<std::string> values;
  for (; !rows->AtEnd() && values.size() < kShownValues; rows->MoveNext())
    values.push_back(std::get<std::string>(rows->Value(0)));
  return values;
}

}  // namespace

template <typename Condition>
void HeldRelations::TakeOutWhere(Condition condition) {
  for (RelationDefinition& relation : database_.Relations()) {
    if ((relation.attributes & ports::kRelationInherited) != 0 || !condition(relation)) continue;
    database_.DeleteRelation(relation.name);
    held_.push_back({std::move(relation), {}});
  }
}

void HeldRelations::TakeOut(const std::string& table) {
  TakeOutWhere([&](const RelationDefinition& relation) {
    return EqualIgnoringCase(relation.table, table) ||
           EqualIgnoringCase(relation.foreign_table, table);
  });
}

void HeldRelations::TakeOutAll() {
  TakeOutWhere([](const RelationDefinition& /*relation*/) { return true; });
}

bool HeldRelations::IsOwnIndex(const std::string& table,
                               const ports::IndexDefinition& index) const {
  return !index.primary && std::any_of(held_.begin(), held_.end(), [&](const Held& held) {
    return IsEnforced(held.relation) && EqualIgnoringCase(held.relation.name, index.name) &&
           EqualIgnoringCase(held.relation.foreign_table, table) &&
           HasFieldsOf(index, ReferringNames(held.relation));
  });
}

void HeldRelations::PutBack() {
  const std::vector<RelationDefinition> present = database_.Relations();
  std::vector<Held> still_held;
  for (Held& held : held_) {
    const bool is_replaced =
        std::any_of(present.begin(), present.end(), [&](const RelationDefinition& relation) {
          return EqualIgnoringCase(relation.name, held.relation.name);
        });
    if (is_replaced || !HasTable(database_, held.relation.foreign_table)) continue;
    held.reason = TryPutBack(held.relation);
    if (!held.reason.empty()) still_held.push_back(std::move(held));
  }
  held_ = std::move(still_held);
}

// Empty when the relation is in the database.
std::string HeldRelations::TryPutBack(const RelationDefinition& relation) {
  std::string reason = MisfitOfTables(relation);
  if (reason.empty() && IsEnforced(relation)) reason = MisfitOfRows(relation);
  if (!reason.empty()) return reason;
  try {
    database_.CreateRelation(relation);
    return {};
  } catch (const ports::DatabaseError& error) {
    if (IsResourceFailure(error.Number)) throw;
    return error.Description;
  }
}

std::string HeldRelations::MisfitOfTables(const RelationDefinition& relation) {
  if (!HasTable(database_, relation.table)) return database_texts::RelatedTableGone(relation.table);
  const ports::TableDefinition foreign = database_.Table(relation.foreign_table);
  const ports::TableDefinition table = database_.Table(relation.table);
  for (const ports::RelationFieldPair& pair : relation.fields) {
    const ports::FieldDefinition* const foreign_field = FindField(foreign, pair.foreign_name);
    if (foreign_field == nullptr)
      return database_texts::RelatedFieldGone(foreign.name, pair.foreign_name);
    const ports::FieldDefinition* const field = FindField(table, pair.name);
    if (field == nullptr) return database_texts::RelatedFieldGone(table.name, pair.name);
    if (IsEnforced(relation) && field->type != foreign_field->type)
      return database_texts::RelatedTypesDiffer(pair.foreign_name, pair.name);
  }
  const std::vector<std::string> names = ReferredNames(relation);
  const bool has_key =
      std::any_of(table.indexes.begin(), table.indexes.end(), [&](const auto& index) {
        return (index.unique || index.primary) && HasFieldsOf(index, names);
      });
  if (IsEnforced(relation) && !has_key)
    return database_texts::RelatedKeyGone(table.name, Joined(names, ", "));
  return {};
}

std::string HeldRelations::MisfitOfRows(const RelationDefinition& relation) {
  const auto counted = database_.OpenRecordset("select count(*)" + OrphansSql(relation),
                                               ports::RecordsetType::kDynaset);
  const std::int32_t count = std::get<std::int32_t>(counted->Value(0));
  if (count == 0) return {};
  return database_texts::RowsWithoutCounterpart(relation.foreign_table, relation.table, count,
                                                Joined(FirstOrphans(database_, relation), "; "));
}

bool HeldRelations::IsDroppedBy(const std::string& statement) {
  // alter table T drop constraint R
  const std::vector<std::string> words = StatementWords(statement);
  constexpr const char* kPattern[] = {"alter", "table", "", "drop", "constraint", ""};
  if (words.size() != std::size(kPattern)) return false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (*kPattern[i] != '\0' && !EqualIgnoringCase(words[i], kPattern[i])) return false;
  }
  const auto count = std::erase_if(held_, [&](const Held& held) {
    return EqualIgnoringCase(held.relation.foreign_table, words[2]) &&
           EqualIgnoringCase(held.relation.name, words[5]);
  });
  if (count == 0) return false;
  // A script may have made another one under its name: the engine drops that one.
  const std::vector<RelationDefinition> present = database_.Relations();
  return std::none_of(present.begin(), present.end(), [&](const RelationDefinition& relation) {
    return EqualIgnoringCase(relation.name, words[5]);
  });
}

std::vector<std::string> HeldRelations::Misfits() const {
  std::vector<std::string> texts;
  for (const Held& held : held_) {
    const RelationDefinition& relation = held.relation;
    texts.push_back(database_texts::RelationDoesNotFit(
        relation.name, relation.foreign_table, Joined(ReferringNames(relation), ", "),
        relation.table, Joined(ReferredNames(relation), ", "), held.reason));
  }
  return texts;
}

}  // namespace tmw
