#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/encodings.h"
#include "jet/values/value_text.h"
#include "tests/jet/database_fixture.h"

namespace tests {

// A statement and its expected result.
struct StatementCase {
  // One statement, or several with " -> " between them.
  const char* statements;
  // The result of the last one: the rows of a SELECT as "1|Анна;2|Null", otherwise the number of
  // rows changed; or "#3061" if a statement fails.
  const char* answer;
};

enum class Kinds { kHidden, kShown };  // "5", "Long 5"

inline std::string Bare(const ports::DatabaseValue& value, Kinds kinds) {
  if (kinds == Kinds::kShown) return Words(value);
  if (const auto* const date = std::get_if<ports::DateValue>(&value))
    return jet::DateText(date->days);
  const std::string words = Words(value);
  const std::size_t blank = words.find(' ');
  return blank == std::string::npos ? words : words.substr(blank + 1);
}

inline std::string RowsOf(ports::Database& db, const std::string& select, Kinds kinds) {
  std::string text;
  const auto rows = db.OpenRecordset(select, ports::RecordsetType::kDynaset);
  for (bool is_first = true; !rows->AtEnd(); rows->MoveNext(), is_first = false) {
    if (!is_first) text += ";";
    for (std::size_t i = 0; i < rows->FieldNames().size(); ++i)
      text += (i == 0 ? "" : "|") + Bare(rows->Value(i), kinds);
  }
  return text;
}

inline std::string AnswerOf(ports::Database& db, std::string_view statements, Kinds kinds) {
  constexpr std::string_view kArrow = " -> ";
  std::string answer;
  const std::int32_t error = ErrorOf([&] {
    for (std::size_t end = 0; end != std::string_view::npos;) {
      end = statements.find(kArrow);
      const std::string statement(statements.substr(0, end));
      const bool is_last = end == std::string_view::npos;
      if (!is_last) statements.remove_prefix(end + kArrow.size());
      const std::string verb =
          tmw::LowerCase(statement.substr(statement.front() == '(' ? 1 : 0, 6));
      answer = is_last && verb == "select" ? RowsOf(db, statement, kinds)
                                           : std::to_string(db.Execute(statement, true));
    }
  });
  return error == 0 ? answer : "#" + std::to_string(error);
}

// Changes are rolled back, so that each row of the table starts with the same database.
template <std::size_t count>
void CheckStatements(ports::DatabaseEngine& engine, ports::Database& db,
                     const StatementCase (&cases)[count], Kinds kinds = Kinds::kHidden) {
  for (const StatementCase& c : cases) {
    engine.BeginTrans();
    EXPECT_EQ(AnswerOf(db, c.statements, kinds), c.answer) << c.statements;
    engine.Rollback();
  }
}

}  // namespace tests
