#include <utility>

#include "jet/errors.h"
#include "jet/sql/statement_parser.h"

namespace jet::sql {
namespace {

constexpr int kMostNestedSelects = 20;

}  // namespace

std::shared_ptr<Select> QueryParser::ReadNestedSelect() {
  if (depth_ >= kMostNestedSelects) Fail(kSyntaxInSelect, "слишком много вложенных запросов");
  ++depth_;
  auto select = std::make_shared<Select>(ReadSelect());
  --depth_;
  return select;
}

Select QueryParser::ReadSelect() {
  const ClauseScope clause(tokens_, kSyntaxInSelect);
  tokens_.ExpectKeyword("select");
  Select select;
  ReadPredicates(select);
  do
    select.items.push_back(ReadItem());
  while (tokens_.TakeSymbol(","));
  if (tokens_.TakeKeyword("into")) {
    select.into = tokens_.ExpectName();
    if (tokens_.AtKeyword("in")) FailUnsupported("SELECT … INTO … IN");
  }
  if (tokens_.AtKeyword("from")) select.from = ReadFrom();
  select.where = ReadWhere();
  ReadGroups(select);
  if (tokens_.TakeKeyword("union")) {
    select.union_all = tokens_.TakeKeyword("all");
    select.united_with = ReadNestedSelect();
  }
  ReadOrder(select);
  return select;
}

void QueryParser::ReadPredicates(Select& select) {
  if (tokens_.TakeKeyword("distinct")) {
    select.predicate = SelectPredicate::kDistinct;
  } else if (tokens_.TakeKeyword("distinctrow")) {
    select.predicate = SelectPredicate::kDistinctRow;
  } else {
    tokens_.TakeKeyword("all");
  }
  if (tokens_.AtKeyword("top") && tokens_.Peek(1).kind == TokenKind::kInteger) {
    tokens_.Take();
    select.top = static_cast<std::int32_t>(tokens_.Take().number);
    select.top_percent = tokens_.TakeKeyword("percent");
  }
}

OutputItem QueryParser::ReadItem() {
  OutputItem item;
  if (tokens_.TakeSymbol("*")) {
    item.is_star = true;
    return item;
  }
  if (tokens_.AtName() && (tokens_.AtSymbol(".", 1) || tokens_.AtSymbol("!", 1)) &&
      tokens_.AtSymbol("*", 2)) {
    item.is_star = true;
    item.star_qualifier = tokens_.ExpectName();
    tokens_.Take();
    tokens_.Take();
    return item;
  }
  item.expression = ReadExpression();
  if (tokens_.TakeKeyword("as") || tokens_.AtName()) item.alias = tokens_.ExpectName();
  return item;
}

void QueryParser::ReadGroups(Select& select) {
  if (tokens_.TakeKeyword("group")) {
    tokens_.ExpectKeyword("by");
    do
      select.group_by.push_back(ReadExpression());
    while (tokens_.TakeSymbol(","));
  }
  if (tokens_.TakeKeyword("having")) select.having = ReadExpression();
}

void QueryParser::ReadOrder(Select& select) {
  if (!tokens_.TakeKeyword("order")) return;
  const ClauseScope clause(tokens_, kSyntaxInOrderBy);
  tokens_.ExpectKeyword("by");
  do {
    OrderItem item;
    item.expression = ReadExpression();
    item.descending = tokens_.TakeKeyword("desc");
    if (!item.descending) tokens_.TakeKeyword("asc");
    select.order_by.push_back(std::move(item));
  } while (tokens_.TakeSymbol(","));
}

std::vector<SourcePtr> QueryParser::ReadFrom() {
  const ClauseScope clause(tokens_, kSyntaxInFrom);
  tokens_.ExpectKeyword("from");
  std::vector<SourcePtr> sources;
  do
    sources.push_back(ReadJoins());
  while (tokens_.TakeSymbol(","));
  if (tokens_.AtKeyword("in")) FailUnsupported("FROM … IN");
  return sources;
}

SourcePtr QueryParser::ReadJoins() {
  SourcePtr left = ReadSource();
  for (;;) {
    std::optional<JoinKind> kind;
    if (tokens_.TakeKeyword("inner")) {
      kind = JoinKind::kInner;
    } else if (tokens_.TakeKeyword("left")) {
      kind = JoinKind::kLeft;
      tokens_.TakeKeyword("outer");
    } else if (tokens_.TakeKeyword("right")) {
      kind = JoinKind::kRight;
      tokens_.TakeKeyword("outer");
    }
    if (!kind) return left;
    tokens_.ExpectKeyword("join");
    auto join = std::make_unique<Source>();
    join->join = kind;
    join->left = std::move(left);
    join->right = ReadSource();
    tokens_.ExpectKeyword("on");
    join->on = ReadExpression();
    left = std::move(join);
  }
}

SourcePtr QueryParser::ReadSource() {
  auto source = std::make_unique<Source>();
  if (tokens_.TakeSymbol("(")) {
    if (!tokens_.AtKeyword("select")) {
      if (++depth_ > kMostNestedSelects) Fail(kSyntaxInFrom, "слишком много скобок");
      source = ReadJoins();
      --depth_;
      tokens_.ExpectSymbol(")");
      return source;
    }
    source->select = ReadNestedSelect();
    tokens_.ExpectSymbol(")");
  } else {
    source->table = tokens_.ExpectName();
    // "[select …]. AS x", the old form of a sub-select.
    if (tokens_.AtSymbol(".")) FailUnsupported("[SELECT …]. AS");
  }
  if (tokens_.TakeKeyword("as") || tokens_.AtName()) source->alias = tokens_.ExpectName();
  return source;
}

ExpressionPtr QueryParser::ReadWhere() {
  if (!tokens_.TakeKeyword("where")) return nullptr;
  return ReadExpression();
}

Insert QueryParser::ReadInsert() {
  const ClauseScope clause(tokens_, kSyntaxInInsert);
  tokens_.ExpectKeyword("insert");
  tokens_.ExpectKeyword("into");
  Insert insert;
  insert.table = tokens_.ExpectName();
  if (tokens_.AtKeyword("in")) FailUnsupported("INSERT INTO … IN");
  if (tokens_.AtSymbol("(") && !tokens_.AtKeyword("select", 1)) {
    tokens_.Take();
    do {
      std::string name = tokens_.ExpectName();
      if (tokens_.TakeSymbol(".")) name = tokens_.ExpectName();
      insert.fields.push_back(std::move(name));
    } while (tokens_.TakeSymbol(","));
    tokens_.ExpectSymbol(")");
  }
  if (!tokens_.TakeKeyword("values")) {
    const bool is_parenthesised = tokens_.TakeSymbol("(");
    insert.select = ReadNestedSelect();
    if (is_parenthesised) tokens_.ExpectSymbol(")");
    return insert;
  }
  tokens_.ExpectSymbol("(");
  do
    insert.values.push_back(ReadExpression());
  while (tokens_.TakeSymbol(","));
  tokens_.ExpectSymbol(")");
  return insert;
}

Update QueryParser::ReadUpdate() {
  const ClauseScope clause(tokens_, kSyntaxInUpdate);
  tokens_.ExpectKeyword("update");
  tokens_.TakeKeyword("distinctrow");
  Update update;
  do
    update.from.push_back(ReadJoins());
  while (tokens_.TakeSymbol(","));
  tokens_.ExpectKeyword("set");
  do {
    Assignment assignment;
    assignment.field = tokens_.ExpectName();
    if (tokens_.TakeSymbol(".") || tokens_.TakeSymbol("!"))
      assignment.qualifier = std::exchange(assignment.field, tokens_.ExpectName());
    tokens_.ExpectSymbol("=");
    assignment.value = ReadExpression();
    update.assignments.push_back(std::move(assignment));
  } while (tokens_.TakeSymbol(","));
  update.where = ReadWhere();
  return update;
}

Delete QueryParser::ReadDelete() {
  const ClauseScope clause(tokens_, kSyntaxInDelete);
  tokens_.ExpectKeyword("delete");
  tokens_.TakeKeyword("distinctrow");
  Delete statement;
  if (tokens_.TakeSymbol("*")) {
    // every field, which is the same as none
  } else if (tokens_.AtName()) {
    statement.target = tokens_.ExpectName();
    if (!tokens_.TakeSymbol(".")) tokens_.ExpectSymbol("!");
    tokens_.ExpectSymbol("*");
  }
  statement.from = ReadFrom();
  statement.where = ReadWhere();
  return statement;
}

}  // namespace jet::sql
