#pragma once

#include <string>
#include <vector>

#include "ports/database.h"

namespace tmw {

// The relations that are out of a database while its tables are replaced. None is forgotten: each
// is put back as it was, or stays here with the reason.
class HeldRelations {
 public:
  explicit HeldRelations(ports::Database& database) : database_(database) {}

  // Takes out the relations on either side of which the table stands. Those that linked tables have
  // in their own database stay.
  void TakeOut(const std::string& table);
  void TakeOutAll();

  // True for the index that a held relation brings along when it is put back.
  bool IsOwnIndex(const std::string& table, const ports::IndexDefinition& index) const;

  // Puts back every relation that the tables, their fields and their rows allow. One whose name the
  // database has anew, or whose referring table is gone, no longer matters.
  void PutBack();

  // A statement that drops a held relation is done by leaving the relation out: true.
  bool IsDroppedBy(const std::string& statement);

  // What is still held, a sentence each: both tables, their fields, and why it cannot be put back.
  std::vector<std::string> Misfits() const;
  bool IsEmpty() const { return held_.empty(); }

 private:
  struct Held {
    ports::RelationDefinition relation;
    std::string reason;
  };

  template <typename Condition>
  void TakeOutWhere(Condition condition);
  std::string TryPutBack(const ports::RelationDefinition& relation);
  std::string MisfitOfTables(const ports::RelationDefinition& relation);
  std::string MisfitOfRows(const ports::RelationDefinition& relation);

  ports::Database& database_;
  std::vector<Held> held_;
};

}  // namespace tmw
