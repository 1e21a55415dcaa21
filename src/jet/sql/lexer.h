#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace jet::sql {

enum class TokenKind {
  kEnd,
  kName,           // an identifier or a keyword
  kBracketedName,  // [any text]; never a keyword
  kText,           // "..." or '...'
  kInteger,
  kNumber,
  kDate,    // #...#
  kBytes,   // 0x..., as its bytes
  kSymbol,  // an operator or a punctuation mark
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string text;       // without quotes or brackets
  double number = 0;      // of kInteger, kNumber and kDate (days since 1899-12-30)
  std::size_t begin = 0;  // byte positions in the statement
  std::size_t end = 0;
};

// Splits a statement into tokens; the last one is kEnd. Fails with 3075 for an unclosed or invalid
// text, number or date, 3126 for invalid brackets.
std::vector<Token> Tokenize(std::string_view statement);

}  // namespace jet::sql
