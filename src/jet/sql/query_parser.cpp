#include "jet/sql/query_parser.h"

#include <utility>

#include "jet/errors.h"

namespace jet::sql {
namespace {

constexpr int kMostNestedSelects = 20;
constexpr int kMostUnionParts = 50;
// Per statement: SQLite joins at most 64 tables, and chains of joins are translated recursively.
constexpr int kMostSources = 60;

}  // namespace

std::shared_ptr<Select> QueryParser::ReadNestedSelect() {
  if (depth_ >= kMostNestedSelects) Fail(kSyntaxInSelect, "слишком много вложенных запросов");
  ++depth_;
  auto select = std::make_shared<Select>(ReadSelect());
  --depth_;
  if (!select->into.empty()) Fail(kSyntaxInSelect, "INTO стоит во вложенном запросе");
  return select;
}

// One SELECT statement, or several with UNION between them.
Select QueryParser::ReadSelect() {
  const ClauseScope clause(tokens_, kSyntaxInSelect);
  Select first = ReadUnionPart();
  Select* last = &first;
  for (int parts = 1; tokens_.TakeKeyword("union"); ++parts) {
    if (parts >= kMostUnionParts) Fail(kTooComplex);
    last->union_all = tokens_.TakeKeyword("all");
    last->united_with = std::make_shared<Select>(ReadUnionPart());
    last = last->united_with.get();
    if (!last->into.empty()) Fail(kSyntaxInSelect, "INTO стоит не в первом запросе");
  }
  ReadOrder(first);
  return first;
}

// A SELECT without ORDER BY, possibly in parentheses, or "TABLE t" for a whole table.
Select QueryParser::ReadUnionPart() {
  if (tokens_.AtSymbol("(") && tokens_.AtKeyword("select", 1)) {
    tokens_.Take();
    Select part = ReadPart();
    tokens_.ExpectSymbol(")");
    return part;
  }
  if (!tokens_.TakeKeyword("table")) return ReadPart();
  Select part;
  part.items.emplace_back().is_star = true;
  part.from.push_back(std::make_unique<Source>());
  part.from.back()->table = tokens_.ExpectName();
  return part;
}

Select QueryParser::ReadPart() {
  tokens_.ExpectKeyword("select");
  Select select;
  ReadPredicates(select);
  tokens_.ReadList([&] { select.items.push_back(ReadItem()); });
  if (tokens_.TakeKeyword("into")) {
    select.into = tokens_.ExpectName();
    if (tokens_.AtKeyword("in")) FailUnsupported("SELECT … INTO … IN");
  }
  if (tokens_.AtKeyword("from")) select.from = ReadFrom();
  select.where = ReadWhere();
  ReadGroups(select);
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
    tokens_.ReadList([&] { select.group_by.push_back(ReadExpression()); });
  }
  if (tokens_.TakeKeyword("having")) select.having = ReadExpression();
}

void QueryParser::ReadOrder(Select& select) {
  if (!tokens_.TakeKeyword("order")) return;
  const ClauseScope clause(tokens_, kSyntaxInOrderBy);
  tokens_.ExpectKeyword("by");
  tokens_.ReadList([&] {
    OrderItem item;
    item.expression = ReadExpression();
    item.descending = tokens_.TakeDescending();
    select.order_by.push_back(std::move(item));
  });
}

std::vector<SourcePtr> QueryParser::ReadFrom() {
  const ClauseScope clause(tokens_, kSyntaxInFrom);
  tokens_.ExpectKeyword("from");
  std::vector<SourcePtr> sources;
  tokens_.ReadList([&] { sources.push_back(ReadJoins()); });
  if (tokens_.AtKeyword("in")) FailUnsupported("FROM … IN");
  return sources;
}

SourcePtr QueryParser::ReadJoins() {
  SourcePtr left = ReadSource();
  for (;;) {
    if (tokens_.AtKeyword("join")) tokens_.FailAt("INNER JOIN");
    JoinKind kind = JoinKind::kInner;
    if (!tokens_.TakeKeyword("inner")) {
      const bool is_left = tokens_.TakeKeyword("left");
      if (!is_left && !tokens_.TakeKeyword("right")) return left;
      kind = is_left ? JoinKind::kLeft : JoinKind::kRight;
      tokens_.TakeKeyword("outer");
    }
    const ClauseScope clause(tokens_, kSyntaxInJoin);
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
  if (++sources_ > kMostSources) Fail(kTooComplex);
  auto source = std::make_unique<Source>();
  if (tokens_.TakeSymbol("(")) {
    if (!tokens_.AtKeyword("select")) {
      if (++depth_ > kMostNestedSelects) Fail(kTooComplex);
      source = ReadJoins();
      --depth_;
      tokens_.ExpectSymbol(")");
      if (source->join) return source;
    } else {
      source->select = ReadNestedSelect();
      tokens_.ExpectSymbol(")");
    }
  } else if (tokens_.AtSymbol(".", 1)) {
    source->select = ReadBracketedSelect();
  } else {
    source->table = tokens_.ExpectName();
  }
  if (tokens_.TakeKeyword("as") || tokens_.AtName()) source->alias = tokens_.ExpectName();
  return source;
}

// "[select …].", an older form of a sub-select.
std::shared_ptr<Select> QueryParser::ReadBracketedSelect() {
  const Token bracketed = tokens_.Take();
  tokens_.ExpectSymbol(".");
  TokenStream inner(tokens_.Text(), bracketed.begin + 1, bracketed.end - 1);
  if (bracketed.kind != TokenKind::kBracketedName || !inner.AtKeyword("select"))
    FailUnsupported("FROM база.таблица");
  QueryParser parser(inner);
  parser.depth_ = depth_;
  parser.sources_ = sources_;
  std::shared_ptr<Select> select = parser.ReadNestedSelect();
  inner.TakeSymbol(";");
  if (inner.Peek().kind != TokenKind::kEnd) inner.FailAt("]");
  return select;
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
    tokens_.ReadList([&] {
      std::string name = tokens_.ExpectName();
      if (tokens_.TakeSymbol(".")) name = tokens_.ExpectName();
      insert.fields.push_back(std::move(name));
    });
    tokens_.ExpectSymbol(")");
  }
  if (!tokens_.TakeKeyword("values")) {
    const bool is_parenthesised = tokens_.TakeSymbol("(");
    insert.select = ReadNestedSelect();
    if (is_parenthesised) tokens_.ExpectSymbol(")");
    return insert;
  }
  tokens_.ReadBracketedList([&] { insert.values.push_back(ReadExpression()); });
  return insert;
}

Update QueryParser::ReadUpdate() {
  const ClauseScope clause(tokens_, kSyntaxInUpdate);
  tokens_.ExpectKeyword("update");
  tokens_.TakeKeyword("distinctrow");
  Update update;
  tokens_.ReadList([&] { update.from.push_back(ReadJoins()); });
  tokens_.ExpectKeyword("set");
  tokens_.ReadList([&] {
    Assignment assignment;
    assignment.field = tokens_.ExpectName();
    if (tokens_.TakeSymbol(".") || tokens_.TakeSymbol("!"))
      assignment.qualifier = std::exchange(assignment.field, tokens_.ExpectName());
    tokens_.ExpectSymbol("=");
    assignment.value = ReadExpression();
    update.assignments.push_back(std::move(assignment));
  });
  update.where = ReadWhere();
  return update;
}

Delete QueryParser::ReadDelete() {
  const ClauseScope clause(tokens_, kSyntaxInDelete);
  tokens_.ExpectKeyword("delete");
  tokens_.TakeKeyword("distinctrow");
  Delete statement;
  // Fields may be listed too, but only "t.*" says which table rows are deleted from.
  if (!tokens_.AtKeyword("from")) {
    tokens_.ReadList([&] { statement.items.push_back(ReadItem()); });
    if (!tokens_.AtKeyword("from")) tokens_.FailAt("FROM");
  }
  statement.from = ReadFrom();
  statement.where = ReadWhere();
  return statement;
}

}  // namespace jet::sql
