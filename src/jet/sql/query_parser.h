#pragma once

#include <memory>
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

}  // namespace jet::sql
