#pragma once

#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/token_stream.h"

namespace jet::sql {

// Reads definitions: CREATE, ALTER, DROP.
class DefinitionParser {
 public:
  explicit DefinitionParser(TokenStream& tokens) : tokens_(tokens) {}

  Statement ReadCreate();
  Statement ReadAlter();
  Statement ReadDrop();

 private:
  Statement ReadCreateTable();
  Statement ReadCreateIndex(bool unique);
  bool AtConstraint() const;
  ports::FieldDefinition ReadField(std::vector<Constraint>* constraints);
  void ReadType(ports::FieldDefinition& field);
  bool ReadFieldConstraint(ports::FieldDefinition& field, std::vector<Constraint>& constraints);
  Constraint ReadTableConstraint();
  bool TakeKey(Constraint& constraint);
  void ReadReference(Constraint& constraint);
  ReferenceAction ReadAction();
  void ReadNumbering(const ports::FieldDefinition& field);
  std::vector<std::string> ReadNames();

  TokenStream& tokens_;
};

}  // namespace jet::sql
