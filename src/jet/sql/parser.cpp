#include "jet/sql/parser.h"

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/sql/definition_parser.h"
#include "jet/sql/query_parser.h"

namespace jet::sql {
namespace {

Statement ReadStatement(TokenStream& tokens, QueryParser& queries) {
  DefinitionParser definitions(tokens);
  if (tokens.AtKeyword("select") || tokens.AtSymbol("(")) return queries.ReadSelect();
  if (tokens.AtKeyword("insert")) return queries.ReadInsert();
  if (tokens.AtKeyword("update")) return queries.ReadUpdate();
  if (tokens.AtKeyword("delete")) return queries.ReadDelete();
  if (tokens.AtKeyword("create")) return definitions.ReadCreate();
  if (tokens.AtKeyword("alter")) return definitions.ReadAlter();
  if (tokens.AtKeyword("drop")) return definitions.ReadDrop();
  for (const char* const what : {"PARAMETERS", "TRANSFORM", "EXECUTE", "GRANT", "REVOKE",
                                 "PROCEDURE", "BEGIN", "COMMIT", "ROLLBACK"}) {
    if (tokens.AtKeyword(tmw::LowerCase(what))) FailUnsupported(what);
  }
  tokens.FailAt("SELECT");
}

void ExpectEnd(TokenStream& tokens) {
  const Token& token = tokens.Peek();
  if (token.kind == TokenKind::kEnd) return;
  Fail(kTextAfterStatement, Excerpt(tokens.TextBetween(token.begin, std::string_view::npos)));
}

}  // namespace

Statement ParseStatement(std::string_view text) {
  TokenStream tokens(text);
  QueryParser queries(tokens);
  Statement statement = ReadStatement(tokens, queries);
  while (tokens.TakeSymbol(";")) {
  }
  ExpectEnd(tokens);
  return statement;
}

ExpressionPtr ParseExpression(std::string_view text) {
  TokenStream tokens(text);
  QueryParser queries(tokens);
  tokens.TakeSymbol("=");
  ExpressionPtr expression = queries.ReadExpression();
  ExpectEnd(tokens);
  return expression;
}

}  // namespace jet::sql
