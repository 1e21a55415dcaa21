#include "jet/sql/expression_parser.h"

#include <algorithm>

#include "jet/errors.h"

namespace jet::sql {
namespace {

// Limits that keep any text from exhausting the stack.
constexpr int kMostDepth = 100;
constexpr int kMostTreeDepth = 250;

class DepthGuard {
 public:
  DepthGuard(int& depth, std::string_view text) : depth_(depth) {
    if (++depth_ > kMostDepth) {
      --depth_;
      Fail(kSyntaxInExpression, "слишком сложное выражение", Excerpt(text));
    }
  }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;
  ~DepthGuard() { --depth_; }

 private:
  int& depth_;
};

// The binary operators, from the loosest binding level to the tightest.
struct LevelOperator {
  int level;
  std::string_view word;
  Operator op;
};

constexpr LevelOperator kOperators[] = {
    {0, "imp", Operator::kImp},     {1, "eqv", Operator::kEqv},
    {2, "xor", Operator::kXor},     {3, "or", Operator::kOr},
    {4, "and", Operator::kAnd},     {6, "&", Operator::kConcatenate},
    {7, "+", Operator::kAdd},       {7, "-", Operator::kSubtract},
    {8, "mod", Operator::kModulo},  {9, "\\", Operator::kIntegerDivide},
    {10, "*", Operator::kMultiply}, {10, "/", Operator::kDivide},
};
constexpr int kLoosest = 0;
constexpr int kNotLevel = 5;  // NOT, then the comparisons
constexpr int kConcatenation = 6;
constexpr int kSignLevel = 11;

struct WordLiteral {
  std::string_view word;
  ExpressionKind kind;
  double number;
};

constexpr WordLiteral kWords[] = {
    {"null", ExpressionKind::kNull, 0},     {"true", ExpressionKind::kBoolean, -1},
    {"yes", ExpressionKind::kBoolean, -1},  {"on", ExpressionKind::kBoolean, -1},
    {"false", ExpressionKind::kBoolean, 0}, {"no", ExpressionKind::kBoolean, 0},
    {"off", ExpressionKind::kBoolean, 0}};

}  // namespace

ExpressionPtr ExpressionParser::Make(ExpressionKind kind) const {
  auto expression = std::make_unique<Expression>();
  expression->kind = kind;
  expression->begin = tokens_.Position();
  expression->end = tokens_.Peek().end;
  return expression;
}

void ExpressionParser::Adopt(Expression& parent, ExpressionPtr child) const {
  parent.depth = std::max(parent.depth, child->depth + 1);
  if (parent.depth > kMostTreeDepth)
    Fail(kSyntaxInExpression, "слишком сложное выражение",
         Excerpt(tokens_.TextBetween(parent.begin, std::string_view::npos)));
  parent.arguments.push_back(std::move(child));
}

ExpressionPtr ExpressionParser::Binary(Operator op, ExpressionPtr left, ExpressionPtr right) const {
  ExpressionPtr expression = Make(ExpressionKind::kBinary);
  expression->op = op;
  expression->begin = left->begin;
  expression->end = right->end;
  Adopt(*expression, std::move(left));
  Adopt(*expression, std::move(right));
  return expression;
}

ExpressionPtr ExpressionParser::Unary(Operator op, ExpressionPtr operand, std::size_t begin) const {
  ExpressionPtr expression = Make(ExpressionKind::kUnary);
  expression->op = op;
  expression->begin = begin;
  expression->end = operand->end;
  Adopt(*expression, std::move(operand));
  return expression;
}

ExpressionPtr ExpressionParser::Negated(ExpressionPtr condition, bool negated) const {
  const std::size_t begin = condition->begin;
  return negated ? Unary(Operator::kNot, std::move(condition), begin) : std::move(condition);
}

ExpressionPtr ExpressionParser::Read() {
  const ClauseScope clause(tokens_, kSyntaxInExpression);
  const DepthGuard guard(depth_, tokens_.TextBetween(tokens_.Position(), std::string_view::npos));
  return ReadLevel(kLoosest);
}

std::optional<Operator> ExpressionParser::TakeOperator(int level) {
  for (const LevelOperator& entry : kOperators) {
    if (entry.level == level && (tokens_.TakeKeyword(entry.word) || tokens_.TakeSymbol(entry.word)))
      return entry.op;
  }
  return std::nullopt;
}

ExpressionPtr ExpressionParser::ReadLevel(int level) {
  if (level == kNotLevel) return ReadNot();
  if (level == kSignLevel) return ReadSign();
  ExpressionPtr left = ReadLevel(level + 1);
  while (const std::optional<Operator> op = TakeOperator(level))
    left = Binary(*op, std::move(left), ReadLevel(level + 1));
  return left;
}

ExpressionPtr ExpressionParser::ReadNot() {
  const std::size_t begin = tokens_.Position();
  if (!tokens_.TakeKeyword("not")) return ReadComparison();
  const DepthGuard guard(depth_, tokens_.TextBetween(begin, std::string_view::npos));
  return Unary(Operator::kNot, ReadNot(), begin);
}

ExpressionPtr ExpressionParser::ReadComparison() {
  ExpressionPtr value = ReadLevel(kConcatenation);
  for (;;) {
    bool is_comparison = false;
    for (const Comparison& comparison : kComparisons) {
      if (!tokens_.TakeSymbol(comparison.symbol)) continue;
      value = Binary(comparison.op, std::move(value), ReadCompared());
      is_comparison = true;
      break;
    }
    if (!is_comparison && !ReadPredicate(value)) return value;
  }
}

// The right side of a comparison: a value, or ANY, SOME or ALL of a sub-select.
ExpressionPtr ExpressionParser::ReadCompared() {
  const bool is_all = tokens_.AtKeyword("all");
  const bool is_any = tokens_.AtKeyword("any") || tokens_.AtKeyword("some");
  if ((!is_all && !is_any) || !tokens_.AtSymbol("(", 1) || !tokens_.AtKeyword("select", 2))
    return ReadLevel(kConcatenation);
  tokens_.Take();
  ExpressionPtr values = ReadParenthesised();
  values->quantifier = is_all ? Quantifier::kAll : Quantifier::kAny;
  return values;
}

// [NOT] IS, LIKE, IN or BETWEEN after a value; returns false if none of them follows.
bool ExpressionParser::ReadPredicate(ExpressionPtr& value) {
  if (tokens_.TakeKeyword("is")) {
    ExpressionPtr test = Make(ExpressionKind::kIsNull);
    test->negated = tokens_.TakeKeyword("not");
    tokens_.ExpectKeyword("null");
    test->begin = value->begin;
    test->end = tokens_.LastEnd();
    Adopt(*test, std::move(value));
    value = std::move(test);
    return true;
  }
  const bool negated = tokens_.AtKeyword("not");
  const std::size_t ahead = negated ? 1 : 0;
  const bool is_alike = tokens_.AtKeyword("alike", ahead);
  const bool is_like = is_alike || tokens_.AtKeyword("like", ahead);
  const bool is_in = tokens_.AtKeyword("in", ahead);
  if (!is_like && !is_in && !tokens_.AtKeyword("between", ahead)) return false;
  if (negated) tokens_.Take();
  tokens_.Take();
  if (is_like) {
    value = Binary(Operator::kLike, std::move(value), ReadLevel(kConcatenation));
    if (is_alike) value->text = "alike";
    value = Negated(std::move(value), negated);
  } else {
    value = is_in ? ReadIn(std::move(value), negated) : ReadBetween(std::move(value), negated);
  }
  return true;
}

ExpressionPtr ExpressionParser::ReadIn(ExpressionPtr value, bool negated) {
  ExpressionPtr test = Make(ExpressionKind::kIn);
  test->negated = negated;
  test->begin = value->begin;
  Adopt(*test, std::move(value));
  tokens_.ExpectSymbol("(");
  if (tokens_.AtKeyword("select")) {
    test->select = read_select_();
  } else {
    tokens_.ReadList([&] { Adopt(*test, Read()); });
  }
  tokens_.ExpectSymbol(")");
  test->end = tokens_.LastEnd();
  return test;
}

ExpressionPtr ExpressionParser::ReadBetween(ExpressionPtr value, bool negated) {
  ExpressionPtr test = Make(ExpressionKind::kBetween);
  test->negated = negated;
  test->begin = value->begin;
  Adopt(*test, std::move(value));
  Adopt(*test, ReadLevel(kConcatenation));
  tokens_.ExpectKeyword("and");
  Adopt(*test, ReadLevel(kConcatenation));
  test->end = tokens_.LastEnd();
  return test;
}

// A sign binds looser than ^: -2^2 is -4.
ExpressionPtr ExpressionParser::ReadSign() {
  const std::size_t begin = tokens_.Position();
  const bool is_minus = tokens_.AtSymbol("-");
  if (!is_minus && !tokens_.AtSymbol("+")) return ReadPower();
  tokens_.Take();
  const DepthGuard guard(depth_, tokens_.TextBetween(begin, std::string_view::npos));
  return Unary(is_minus ? Operator::kNegate : Operator::kPlusSign, ReadSign(), begin);
}

ExpressionPtr ExpressionParser::ReadPower() {
  ExpressionPtr left = ReadOperand();
  while (tokens_.TakeSymbol("^")) {
    const bool is_signed = tokens_.AtSymbol("-") || tokens_.AtSymbol("+");
    left = Binary(Operator::kPower, std::move(left), is_signed ? ReadSign() : ReadOperand());
  }
  return left;
}

ExpressionPtr ExpressionParser::ReadOperand() {
  const Token& token = tokens_.Peek();
  switch (token.kind) {
    case TokenKind::kText:
    case TokenKind::kBytes:
    case TokenKind::kInteger:
    case TokenKind::kNumber:
    case TokenKind::kDate: {
      ExpressionPtr literal = Make(token.kind == TokenKind::kText      ? ExpressionKind::kText
                                   : token.kind == TokenKind::kBytes   ? ExpressionKind::kBytes
                                   : token.kind == TokenKind::kInteger ? ExpressionKind::kInteger
                                   : token.kind == TokenKind::kNumber  ? ExpressionKind::kNumber
                                                                       : ExpressionKind::kDate);
      literal->text = token.text;
      literal->number = token.number;
      tokens_.Take();
      return literal;
    }
    case TokenKind::kSymbol:
      if (token.text == "(") return ReadParenthesised();
      break;
    case TokenKind::kName:
      for (const WordLiteral& word : kWords) {
        if (!tokens_.AtKeyword(word.word) || tokens_.AtSymbol("(", 1)) continue;
        ExpressionPtr literal = Make(word.kind);
        literal->number = word.number;
        tokens_.Take();
        return literal;
      }
      return ReadNamed();
    case TokenKind::kBracketedName:
      return ReadNamed();
    case TokenKind::kEnd:
      break;
  }
  tokens_.FailAt("значение");
}

ExpressionPtr ExpressionParser::ReadParenthesised() {
  const std::size_t begin = tokens_.Position();
  tokens_.ExpectSymbol("(");
  ExpressionPtr inner;
  if (tokens_.AtKeyword("select")) {
    inner = Make(ExpressionKind::kSubquery);
    inner->select = read_select_();
  } else {
    inner = Read();
  }
  tokens_.ExpectSymbol(")");
  inner->begin = begin;
  inner->end = tokens_.LastEnd();
  return inner;
}

ExpressionPtr ExpressionParser::ReadNamed() {
  if (tokens_.AtKeyword("exists") && tokens_.AtSymbol("(", 1)) {
    ExpressionPtr exists = Make(ExpressionKind::kExists);
    tokens_.Take();
    tokens_.Take();
    exists->select = read_select_();
    tokens_.ExpectSymbol(")");
    exists->end = tokens_.LastEnd();
    return exists;
  }
  ExpressionPtr name = Make(ExpressionKind::kName);
  const bool is_call = tokens_.Peek().kind == TokenKind::kName && tokens_.AtSymbol("(", 1);
  name->text = is_call ? tokens_.Take().text : tokens_.ExpectName();
  if (is_call) return ReadCall(std::move(name));
  if (tokens_.AtSymbol(".") || tokens_.AtSymbol("!")) {
    tokens_.Take();
    name->qualifier = std::exchange(name->text, {});
    // After the dot even a reserved word is a name.
    const TokenKind kind = tokens_.Peek().kind;
    if (kind != TokenKind::kName && kind != TokenKind::kBracketedName) tokens_.FailAt("имя");
    name->text = tokens_.Take().text;
  }
  name->end = tokens_.LastEnd();
  return name;
}

ExpressionPtr ExpressionParser::ReadCall(ExpressionPtr call) {
  call->kind = ExpressionKind::kCall;
  tokens_.ExpectSymbol("(");
  if (tokens_.AtSymbol("*")) {
    Adopt(*call, Make(ExpressionKind::kStar));
    tokens_.Take();
  } else if (!tokens_.AtSymbol(")")) {
    tokens_.ReadList([&] { Adopt(*call, Read()); });
  }
  tokens_.ExpectSymbol(")");
  call->end = tokens_.LastEnd();
  return call;
}

}  // namespace jet::sql
