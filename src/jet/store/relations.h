#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/store/relation_triggers.h"
#include "jet/store/session.h"
#include "jet/table_info.h"

namespace jet {

std::vector<Relation> LoadRelations(const std::shared_ptr<Connection>& storage);

// The relations of one database's tables. Each change belongs inside of Session::Change.
class Relations {
 public:
  explicit Relations(Session& session) : session_(session) {}

  // The constraint is a foreign key of the table. 3371: no such table to refer to; 3609: its fields
  // have no unique index; 3368: the fields differ; 3201: a row refers to nothing; 3367: the name is
  // taken.
  void Create(const TableInfo& table, const sql::Constraint& constraint);

  // The port's calls, with its errors.
  std::vector<ports::RelationDefinition> List();
  void Create(const ports::RelationDefinition& definition);
  void Delete(const std::string& name);

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
  void RefuseTakenName(const std::string& name, std::int32_t error_number);
  void Add(Relation& relation, const TableInfo& table, const TableInfo& referenced);
  void Enforce(Relation& relation, const TableInfo& table, const TableInfo& referenced);
  void Erase(const Relation& relation);
  void EraseWithIndex(const Relation& relation);

  Session& session_;
};

}  // namespace jet
