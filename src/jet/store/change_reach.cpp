#include "jet/store/change_reach.h"

#include <vector>

#include "jet/store/relations.h"

namespace jet {
namespace {

bool ChangesReferring(const Relation& relation) {
  return relation.OnUpdate() != sql::ReferenceAction::kRefuse ||
         relation.OnDelete() != sql::ReferenceAction::kRefuse;
}

}  // namespace

void ChangeReach::Prepare(const TablePtr& table) {
  if (ready_.contains(table->id)) return;
  const Connection::Unnoticed unnoticed(*storage_);
  const std::vector<Relation> relations = LoadRelations(storage_);
  loader_.Load(table);
  std::vector<std::int64_t> changing = {table->id};
  ready_.insert(table->id);
  while (!changing.empty()) {
    const std::int64_t id = changing.back();
    changing.pop_back();
    loader_.LimitRows(*catalogue_.FindTable(id));
    for (const Relation& relation : relations) {
      const bool refers = relation.table_id == id;
      const bool is_referred_to = relation.referenced_id == id;
      if (!relation.IsEnforced() || (!refers && !is_referred_to)) continue;
      const TablePtr own = catalogue_.FindTable(relation.table_id);
      const TablePtr other = catalogue_.FindTable(relation.referenced_id);
      loader_.Load(own);
      loader_.Load(other);
      storage_->Run(RelationTriggers(relation, *own, *other));
      if (is_referred_to && ChangesReferring(relation) && ready_.insert(own->id).second)
        changing.push_back(own->id);
    }
  }
}

}  // namespace jet
