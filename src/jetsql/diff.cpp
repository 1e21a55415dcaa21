#include "jetsql/diff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "database/structure_difference.h"
#include "database/table_export.h"
#include "database/table_lookup.h"
#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jetsql/database_access.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/output.h"
#include "jetsql/schema_sql.h"
#include "jetsql/value_order.h"
#include "jetsql/value_text.h"
#include "tools/json.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace jetsql {
namespace {

using Row = std::vector<ports::DatabaseValue>;

// The rows of a table in the order of its primary key.
class KeyedRows {
 public:
  KeyedRows(ports::Database& database, const ports::TableDefinition& table)
      : rows_(database.OpenRecordset(table.name, ports::RecordsetType::kTable)) {
    const std::string primary = tmw::GetPrimaryIndex(table);
    if (!primary.empty()) rows_->SetIndex(primary);
    for (const ports::FieldDefinition& field : table.fields)
      positions_.push_back(rows_->FieldPosition(field.name));
    for (const ports::IndexDefinition& index : table.indexes) {
      if (!index.primary) continue;
      for (const ports::IndexFieldDefinition& part : index.fields)
        key_.emplace_back(rows_->FieldPosition(part.name), part.descending);
    }
    Read();
  }

  bool AtEnd() const { return rows_->AtEnd(); }
  const Row& Current() const { return row_; }

  void Next() {
    rows_->MoveNext();
    Read();
  }

  int CompareKeys(const KeyedRows& other) const {
    for (std::size_t i = 0; i < key_.size(); ++i) {
      const int order =
          CompareValues(rows_->Value(key_[i].first), other.rows_->Value(other.key_[i].first));
      if (order != 0) return key_[i].second ? -order : order;
    }
    return 0;
  }

  std::string KeyText() const {
    std::vector<std::string> texts;
    for (const auto& [position, is_descending] : key_)
      texts.push_back(PlainText(rows_->Value(position)));
    return tmw::Joined(texts, ", ");
  }

 private:
  void Read() {
    row_.clear();
    if (rows_->AtEnd()) return;
    for (const std::size_t position : positions_)
      row_.push_back(rows_->Value(position));
  }

  std::unique_ptr<ports::DatabaseRecordset> rows_;
  std::vector<std::size_t> positions_;
  std::vector<std::pair<std::size_t, bool>> key_;
  Row row_;
};

// The whole row; equal exactly when the values are.
std::string RowText(const Row& row) {
  std::vector<std::string> literals;
  for (const ports::DatabaseValue& value : row)
    literals.push_back(SqlLiteral(value));
  return tmw::Joined(literals, ", ");
}

class Comparison {
 public:
  Comparison(ports::Database& a, ports::Database& b, std::size_t most_shown)
      : a_(a), b_(b), most_shown_(most_shown) {}

  void Run() {
    std::map<std::string, std::string> left = TablesOf(a_);
    std::map<std::string, std::string> right = TablesOf(b_);
    tools::Progress progress;
    progress.Begin(Say(texts::kComparing), left.size());
    for (const auto& [lower, name] : left) {
      const auto other = right.find(lower);
      if (other == right.end()) {
        Add("-", Say(texts::kTableOfDiff, {name}));
      } else {
        CompareTables(a_.Table(name), b_.Table(other->second));
      }
      progress.Advance();
    }
    for (const auto& [lower, name] : right) {
      if (!left.contains(lower)) Add("+", Say(texts::kTableOfDiff, {name}));
    }
    Add(tmw::CompareRelations(a_, b_));
  }

  const std::vector<std::string>& Lines() const { return lines_; }
  std::uint64_t Count() const { return count_; }

 private:
  static std::map<std::string, std::string> TablesOf(ports::Database& database) {
    std::map<std::string, std::string> tables;
    for (const std::string& name : tmw::UserTables(database))
      tables.emplace(tmw::LowerCase(name), name);
    return tables;
  }

  // What stands on one side only; every line is counted, the first ones are kept.
  void Add(const char* side, const std::string& what) {
    ++count_;
    if (lines_.size() < most_shown_) lines_.push_back(std::string(side) + " " + what);
  }

  void Add(const tmw::StructureDifferences& differences) {
    for (const tmw::StructureDifference& difference : differences) {
      std::string prefix = difference.table + ": ";
      if (difference.part == tmw::StructurePart::kField) prefix += SqlName(difference.name) + " ";
      if (difference.part == tmw::StructurePart::kRelation) prefix.clear();
      if (!difference.left.empty()) Add("-", prefix + difference.left);
      if (!difference.right.empty()) Add("+", prefix + difference.right);
    }
  }

  void CompareTables(const ports::TableDefinition& left, const ports::TableDefinition& right) {
    const std::uint64_t before = count_;
    Add(tmw::CompareTables(left, right));
    // Rows of different structures cannot be compared value by value.
    if (count_ != before) return;
    if (tmw::GetPrimaryIndex(left).empty()) {
      CompareAllRows(left, right);
    } else {
      CompareKeyedRows(left, right);
    }
  }

  void CompareKeyedRows(const ports::TableDefinition& left, const ports::TableDefinition& right) {
    KeyedRows a(a_, left);
    KeyedRows b(b_, right);
    while (!a.AtEnd() || !b.AtEnd()) {
      const int order = a.AtEnd() ? 1 : b.AtEnd() ? -1 : a.CompareKeys(b);
      if (order < 0) {
        Add("-", Say(texts::kRowOfDiff, {left.name, a.KeyText()}));
        a.Next();
      } else if (order > 0) {
        Add("+", Say(texts::kRowOfDiff, {left.name, b.KeyText()}));
        b.Next();
      } else {
        CompareValuesOf(left, a, b);
        a.Next();
        b.Next();
      }
    }
  }

  void CompareValuesOf(const ports::TableDefinition& table, const KeyedRows& a,
                       const KeyedRows& b) {
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
      if (a.Current()[i] == b.Current()[i]) continue;
      Add("*", Say(texts::kValueOfDiff, {table.name, a.KeyText(), table.fields[i].name,
                                         PlainText(a.Current()[i]), PlainText(b.Current()[i])}));
    }
  }

  // Without a key rows are equal when all their values are.
  void CompareAllRows(const ports::TableDefinition& left, const ports::TableDefinition& right) {
    std::map<std::string, std::int64_t> counts;
    for (KeyedRows rows(a_, left); !rows.AtEnd(); rows.Next())
      ++counts[RowText(rows.Current())];
    for (KeyedRows rows(b_, right); !rows.AtEnd(); rows.Next())
      --counts[RowText(rows.Current())];
    for (const auto& [row, count] : counts) {
      for (std::int64_t i = 0; i < std::max(count, -count); ++i)
        Add(count > 0 ? "-" : "+", Say(texts::kRowOfDiff, {left.name, row}));
    }
  }

  ports::Database& a_;
  ports::Database& b_;
  std::size_t most_shown_;
  std::vector<std::string> lines_;
  std::uint64_t count_ = 0;
};

}  // namespace

int Diff(const tools::Arguments& arguments) {
  constexpr std::size_t kShown = 1000;
  constexpr int kDiffers = 1;
  const auto a = OpenToRead(arguments.Words()[0]);
  const auto b = OpenToRead(arguments.Words()[1]);
  Comparison comparison(*a, *b, kShown);
  comparison.Run();
  Output output;
  if (arguments.Has(tools::kJsonOption)) {
    output.Text().Add(
        tools::JsonLine({{"differences", comparison.Count()}, {"first", comparison.Lines()}}));
  } else {
    for (const std::string& line : comparison.Lines())
      output.Text().Add(line + "\n");
    output.Text().Add(Count(texts::kDifferences, comparison.Count()) + "\n");
  }
  output.Finish();
  return comparison.Count() == 0 ? tools::kDone : kDiffers;
}

}  // namespace jetsql
