#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/store/session.h"
#include "jet/table_info.h"

namespace jet {

// A relation as the catalogue has it. Its rules are triggers of the storage, so that every way to
// change a row respects them.
struct Relation {
  struct FieldPair {
    std::int64_t field = 0;  // of the referring table
    std::int64_t referenced = 0;
  };

  std::int64_t id = 0;
  std::string name;
  std::int64_t table_id = 0;
  std::int64_t referenced_id = 0;
  sql::ReferenceAction on_update = sql::ReferenceAction::kRefuse;
  sql::ReferenceAction on_delete = sql::ReferenceAction::kRefuse;
  std::int64_t index_id = 0;  // made for it in the referring table
  std::vector<FieldPair> fields;
};

std::vector<Relation> LoadRelations(const std::shared_ptr<Connection>& storage);

// The statements that make the triggers of a relation between the two tables.
std::string RelationTriggers(const Relation& relation, const TableInfo& table,
                             const TableInfo& referenced);

// The relations of one database's tables. Each change belongs inside of Session::Change.
class Relations {
 public:
  explicit Relations(Session& session) : session_(session) {}

  // The constraint is a foreign key of the table. 3371: no such table to refer to; 3609: its fields
  // have no unique index; 3368: the fields differ; 3201: a row refers to nothing; 3367: the name is
  // taken.
  void Create(const TableInfo& table, const sql::Constraint& constraint);

  // Drops the table's relation of that name with its index; false when there is none.
  bool Drop(const TableInfo& table, const std::string& name);

  // Drops what the table refers to; 3281 when another table refers to it.
  void Release(const TableInfo& table);

  // 3303 for a field and 3281 for an index that a relation needs.
  void RefuseField(const FieldInfo& field);
  void RefuseIndex(const TableInfo& table, const IndexInfo& index);

 private:
  std::string FreeName(const TableInfo& table, const TableInfo& referenced);
  void RefuseOrphans(const Relation& relation, const TableInfo& table, const TableInfo& referenced);
  void Insert(Relation& relation);
  void Erase(const Relation& relation);

  Session& session_;
};

}  // namespace jet
