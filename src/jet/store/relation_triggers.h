#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/table_info.h"

namespace jet {

// A relation as the catalogue stores it. An enforced one is checked by triggers, so that it holds
// however rows are changed.
struct Relation {
  struct FieldPair {
    std::int64_t field = 0;  // of the referring table
    std::int64_t referenced = 0;
  };

  std::int64_t id = 0;
  std::string name;
  std::int64_t table_id = 0;
  std::int64_t referenced_id = 0;
  std::int32_t attributes = 0;  // the port's
  std::int64_t index_id = 0;    // created for it in the referring table; 0 if not enforced
  std::vector<FieldPair> fields;

  bool IsEnforced() const { return (attributes & ports::kRelationDontEnforce) == 0; }
  sql::ReferenceAction OnUpdate() const;
  sql::ReferenceAction OnDelete() const;
};

const FieldInfo& FieldById(const TableInfo& table, std::int64_t id);

// Statements that create and drop the triggers of a relation between the two tables.
std::string RelationTriggers(const Relation& relation, const TableInfo& table,
                             const TableInfo& referenced);
std::string DropRelationTriggers(const Relation& relation);

}  // namespace jet
