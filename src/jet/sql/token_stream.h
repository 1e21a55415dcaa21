#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/lexer.h"

namespace jet::sql {

// The tokens of one statement, read in order. Keywords are case-insensitive; an unexpected token
// fails with the error number of the clause being read.
class TokenStream {
 public:
  // The text must outlive the stream. Only the given range is read; positions are those in the
  // whole text.
  explicit TokenStream(std::string_view text) : TokenStream(text, 0, text.size()) {}
  TokenStream(std::string_view text, std::size_t begin, std::size_t end);

  const Token& Peek(std::size_t ahead = 0) const;
  Token Take();

  bool AtKeyword(std::string_view keyword, std::size_t ahead = 0) const;
  bool AtSymbol(std::string_view symbol, std::size_t ahead = 0) const;
  bool TakeKeyword(std::string_view keyword);
  bool TakeSymbol(std::string_view symbol);
  void ExpectKeyword(std::string_view keyword);
  void ExpectSymbol(std::string_view symbol);
  // An optional ASC or DESC.
  bool TakeDescending();
  // Calls read for each item of a list separated by commas.
  template <typename Read>
  void ReadList(Read read) {
    do
      read();
    while (TakeSymbol(","));
  }
  template <typename Read>
  void ReadBracketedList(Read read) {
    ExpectSymbol("(");
    ReadList(read);
    ExpectSymbol(")");
  }

  // A bracketed name or an identifier that is not reserved.
  bool AtName(std::size_t ahead = 0) const;
  std::string ExpectName();

  std::size_t Position() const { return Peek().begin; }
  std::size_t LastEnd() const;
  std::string_view Text() const { return text_; }
  std::string_view TextBetween(std::size_t begin, std::size_t end) const;

  // Sets the error number for failures from here on; returns the previous one.
  std::int32_t SetClause(std::int32_t error_number);
  [[noreturn]] void FailAt(std::string_view expected) const;

 private:
  std::string_view text_;
  std::vector<Token> tokens_;
  std::size_t next_ = 0;
  std::int32_t clause_;
};

// Sets the stream's clause until the end of a scope.
class ClauseScope {
 public:
  ClauseScope(TokenStream& tokens, std::int32_t error_number)
      : tokens_(tokens), saved_(tokens.SetClause(error_number)) {}
  ClauseScope(const ClauseScope&) = delete;
  ClauseScope& operator=(const ClauseScope&) = delete;
  ~ClauseScope() { tokens_.SetClause(saved_); }

 private:
  TokenStream& tokens_;
  std::int32_t saved_;
};

}  // namespace jet::sql
