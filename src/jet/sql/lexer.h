#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace jet::sql {

enum class TokenKind {
  kEnd,
  kName,           // an identifier; a keyword is one too
  kBracketedName,  // [any text]; never a keyword
  kText,           // "..." or '...'
  kInteger,
  kNumber,
  kDate,    // #...#
  kSymbol,  // an operator or a punctuation mark
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string text;       // a name or a text without its quotes; a symbol as written
  double number = 0;      // of kInteger, kNumber and kDate (days since 1899-12-30)
  std::size_t begin = 0;  // in the statement, bytes
  std::size_t end = 0;
};

// Cuts a statement into tokens, the last one being kEnd. Fails with 3075 for a text, bracket or
// date that is not closed or not valid, 3126 for bad brackets.
std::vector<Token> Tokenize(std::string_view statement);

}  // namespace jet::sql
