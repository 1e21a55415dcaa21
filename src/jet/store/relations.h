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

// The relations of one database. Changes must be made within Session::Change.
class Relations {
 public:
  explicit Relations(Session& session) : session_(session) {}

  // Adds a foreign key to the table. Fails with 3371 if there is no referenced table, 3609 if its
  // fields have no unique index, 3368 if the types or numbers of fields differ, 3201 if a row
  // refers to a missing one, 3367 if the name is taken.
  void Create(const TableInfo& table, const sql::Constraint& constraint);

  // The calls of the port, with its errors.
  std::vector<ports::RelationDefinition> List();
  void Create(const ports::RelationDefinition& definition);
  void Delete(const std::string& name);

  // Drops the relation of the table and its index; returns false if there is none of that name.
  bool Drop(const TableInfo& table, const std::string& name);

  // Drops the foreign keys of the table; fails with 3281 if another table refers to it.
  void Release(const TableInfo& table);

  // Fail with 3303 for a field and with 3281 for an index that a relation needs.
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
