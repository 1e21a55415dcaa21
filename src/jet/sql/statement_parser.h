#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jet/sql/ast.h"
#include "jet/sql/expression_parser.h"
#include "jet/sql/token_stream.h"

namespace jet::sql {

// Reads queries: SELECT, INSERT, UPDATE, DELETE.
class QueryParser {
 public:
  explicit QueryParser(TokenStream& tokens)
      : tokens_(tokens), expressions_(tokens, [this] { return ReadNestedSelect(); }) {}

  Select ReadSelect();
  Insert ReadInsert();
  Update ReadUpdate();
  Delete ReadDelete();
  ExpressionPtr ReadExpression() { return expressions_.Read(); }

 private:
  std::shared_ptr<Select> ReadNestedSelect();
  std::shared_ptr<Select> ReadBracketedSelect();
  Select ReadUnionPart();
  Select ReadPart();
  void ReadPredicates(Select& select);
  OutputItem ReadItem();
  void ReadGroups(Select& select);
  void ReadOrder(Select& select);
  std::vector<SourcePtr> ReadFrom();
  SourcePtr ReadJoins();
  SourcePtr ReadSource();
  ExpressionPtr ReadWhere();

  TokenStream& tokens_;
  ExpressionParser expressions_;
  int depth_ = 0;
  int sources_ = 0;
};

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
  void ReadReference(Constraint& constraint);
  ReferenceAction ReadAction();
  void ReadNumbering(const ports::FieldDefinition& field);
  std::vector<std::string> ReadNames();

  TokenStream& tokens_;
};

}  // namespace jet::sql
