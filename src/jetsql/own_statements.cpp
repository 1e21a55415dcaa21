#include "jetsql/own_statements.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "database/db_string.h"
#include "foundation/text.h"
#include "jetsql/jetsql_texts.h"

namespace jetsql {
namespace {

constexpr std::int32_t kInvalidStatement = 3129;

// Reads a statement from its beginning to its end.
class Scanner {
 public:
  explicit Scanner(const std::string& text) : text_(text) {}

  std::string Word() {
    SkipBlanks();
    const std::size_t end = text_.find_first_of(" \t\r\n[('", position_);
    std::string word = text_.substr(position_, end - position_);
    position_ = end == std::string::npos ? text_.size() : end;
    return word;
  }

  std::string Name() {
    Expect('[');
    const std::size_t end = text_.find(']', position_);
    if (end == std::string::npos) Fail();
    std::string name = text_.substr(position_, end - position_);
    position_ = end + 1;
    return name;
  }

  std::vector<std::string> Names() {
    std::vector<std::string> names;
    Expect('(');
    do {
      names.push_back(Name());
    } while (Take(','));
    Expect(')');
    return names;
  }

  // In '…', quotes doubled.
  std::string Literal() {
    Expect('\'');
    std::string literal;
    for (;;) {
      const std::size_t end = text_.find('\'', position_);
      if (end == std::string::npos) Fail();
      literal += text_.substr(position_, end - position_);
      position_ = end + 1;
      if (position_ == text_.size() || text_[position_] != '\'') return literal;
      literal += '\'';
      ++position_;
    }
  }

  std::int32_t Number() {
    const std::string word = Word();
    std::int32_t number = 0;
    const auto read = std::from_chars(word.data(), word.data() + word.size(), number);
    if (word.empty() || read.ec != std::errc() || read.ptr != word.data() + word.size()) Fail();
    return number;
  }

  void ExpectWord(const char* word) {
    if (!tmw::EqualIgnoringCase(Word(), word)) Fail();
  }

  void Expect(char c) {
    if (!Take(c)) Fail();
  }

  void ExpectEnd() {
    SkipBlanks();
    if (position_ != text_.size()) Fail();
  }

  [[noreturn]] void Fail() const {
    throw ports::DatabaseError(kInvalidStatement, Say(texts::kBadOwnStatement), "jetsql");
  }

 private:
  void SkipBlanks() {
    position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size());
  }

  bool Take(char c) {
    SkipBlanks();
    if (position_ == text_.size() || text_[position_] != c) return false;
    ++position_;
    return true;
  }

  const std::string& text_;
  std::size_t position_ = 0;
};

void SetProperty(Scanner& scanner, ports::Database& database) {
  const std::string table = scanner.Name();
  scanner.Expect('.');
  const std::string field = scanner.Name();
  scanner.Expect('.');
  const std::string property = scanner.Name();
  const std::optional<ports::DataType> type = tmw::FieldTypeFromStr(scanner.Word());
  if (!type) scanner.Fail();
  const ports::DatabaseValue value = tmw::DBStringToVariant(scanner.Literal());
  scanner.ExpectEnd();
  database.SetFieldProperty(table, field, property, *type, value);
}

void CreateRelation(Scanner& scanner, ports::Database& database) {
  ports::RelationDefinition relation;
  relation.name = scanner.Name();
  relation.foreign_table = scanner.Name();
  const std::vector<std::string> own = scanner.Names();
  scanner.ExpectWord("references");
  relation.table = scanner.Name();
  const std::vector<std::string> other = scanner.Names();
  relation.attributes = scanner.Number();
  scanner.ExpectEnd();
  if (own.size() != other.size()) scanner.Fail();
  for (std::size_t i = 0; i < own.size(); ++i)
    relation.fields.push_back({other[i], own[i]});
  database.CreateRelation(relation);
}

}  // namespace

bool RunOwnStatement(ports::Database& database, const std::string& statement) {
  Scanner scanner(statement);
  const std::string word = scanner.Word();
  if (tmw::EqualIgnoringCase(word, "property")) {
    SetProperty(scanner, database);
  } else if (tmw::EqualIgnoringCase(word, "relation")) {
    CreateRelation(scanner, database);
  } else {
    return false;
  }
  return true;
}

}  // namespace jetsql
