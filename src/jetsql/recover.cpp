#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "database/transaction.h"
#include "foundation/error_handling.h"
#include "jet/engine.h"
#include "jet/file/data_page.h"
#include "jet/file/database_reader.h"
#include "jet/file/format.h"
#include "jet/file/stored_value.h"
#include "jet/file/system_tables.h"
#include "jet/file/usage_map.h"
#include "jet/store/field_properties.h"
#include "jet/store/file_definitions.h"
#include "jetsql/database_access.h"
#include "jetsql/file_commands.h"
#include "jetsql/jetsql_texts.h"
#include "jetsql/own_statements.h"
#include "jetsql/schema_sql.h"
#include "jetsql/value_text.h"
#include "ports/ports.h"
#include "tools/json.h"
#include "tools/program.h"
#include "tools/progress.h"

namespace jetsql {
namespace {

namespace file = jet::file;
using file::PageNumber;

constexpr std::uint32_t kNotOurs = ports::kSystemTable | ports::kLinkedTable;

// Reads a file page by page. No map of its pages is trusted: the rows of a table are those on the
// pages that bear its number, but for pages that are marked as free.
class Salvage {
 public:
  Salvage(file::DatabaseReader& reader, ports::Database& target)
      : reader_(reader), source_(reader.Pages()), target_(target) {}

  void Run() {
    SortPages();
    tools::Progress progress;
    progress.Begin(Say(texts::kRecovering), reader_.Objects().size());
    for (const file::CatalogueObject& object : reader_.Objects()) {
      if (object.type == file::object_type::kQuery)
        lost_.push_back(Say(texts::kQueryNotDumped, {object.name}));
      if (file::IsStoredTable(object) && (object.flags & kNotOurs) == 0) TakeTable(object);
      progress.Advance();
    }
    for (const auto& [table, statement] : indexes_)
      Try([&, &sql = statement] { target_.Execute(sql, true); }, texts::kLostIndex, table,
          statement);
    TakeRelations();
  }

  const std::vector<std::string>& Lost() const { return lost_; }
  std::uint64_t TableCount() const { return tables_; }
  std::uint64_t RowCount() const { return rows_; }

 private:
  bool IsFree(PageNumber page) {
    try {
      if (!free_)
        free_.emplace(source_, file::RowPointer{file::space::kPage, file::space::kFreePagesRow},
                      file::header::kPage);
      return free_->Covers(page) && free_->Contains(page);
    } catch (const file::Damage&) {
      return false;
    }
  }

  void SortPages() {
    for (PageNumber page = 1; page < source_.PageCount(); ++page) {
      try {
        const file::PageView view = source_.Read(page);
        if (view.Kind() == file::PageKind::kData && !IsFree(page))
          pages_[view.Get(file::page::kOwner)].push_back(page);
      } catch (...) {
        lost_.push_back(
            Say(texts::kLostPage, {std::to_string(page), tmw::CurrentError().Description}));
      }
    }
  }

  template <typename Call>
  bool Try(Call call, const Text& text, const std::string& first, const std::string& second = {}) {
    try {
      call();
      return true;
    } catch (const file::Damage& damage) {
      std::vector<std::string> values = {first};
      if (!second.empty()) values.push_back(second);
      values.emplace_back(damage.what());
      lost_.push_back(Say(text, values));
    } catch (...) {
      std::vector<std::string> values = {first};
      if (!second.empty()) values.push_back(second);
      values.push_back(tmw::CurrentError().Description);
      lost_.push_back(Say(text, values));
    }
    return false;
  }

  void TakeTable(const file::CatalogueObject& object) {
    file::TableLayout layout;
    const bool is_made = Try(
        [&] {
          layout = reader_.Definition(object);
          MakeTable(object, layout);
        },
        texts::kLostTable, object.name);
    if (!is_made) return;
    ++tables_;
    TakeRows(object.name, layout);
    for (const std::string& statement : constraints_)
      Try([&] { RunOwnStatement(target_, statement); }, texts::kLostTable, object.name);
  }

  void MakeTable(const file::CatalogueObject& object, const file::TableLayout& layout) {
    std::vector<file::PropertySet> sets;
    Try([&] { sets = reader_.Properties(object); }, texts::kLostTable, object.name);
    ports::TableDefinition table;
    table.name = object.name;
    order_ = file::FieldOrder(layout);
    std::vector<NamedProperty> properties;
    for (const std::size_t position : order_) {
      const file::ColumnLayout& column = layout.columns[position];
      const file::PropertySet* const set = jet::FindProperties(sets, column.name);
      table.fields.push_back(jet::FieldOf(column, set));
      if (set == nullptr) continue;
      for (const file::StoredProperty& stored : set->properties) {
        if (!jet::IsPartOfDefinition(stored.name))
          properties.push_back({column.name, stored.name, static_cast<ports::DataType>(stored.type),
                                jet::PropertyValue(stored)});
      }
    }
    for (const file::LogicalIndexLayout& index : layout.logical_indexes) {
      if (jet::IsListed(index)) table.indexes.push_back(jet::IndexOf(layout, index));
    }
    for (const std::string& statement : IndexSql(table))
      indexes_.emplace_back(table.name, statement);
    constraints_ = ConstraintSql(table, true);
    // Rows that were there before the rules may break them, and so may what is left of a row.
    for (ports::FieldDefinition& field : table.fields) {
      field.required = false;
      field.allow_zero_length =
          field.type == ports::DataType::kText || field.type == ports::DataType::kMemo;
    }
    table.indexes.clear();
    target_.CreateTable(table);
    for (const NamedProperty& property : properties) {
      if (std::holds_alternative<ports::NullValue>(property.value)) continue;
      Try(
          [&] {
            target_.SetFieldProperty(table.name, property.field, property.name, property.type,
                                     property.value);
          },
          texts::kLostTable, table.name);
    }
  }

  void TakeRows(const std::string& name, const file::TableLayout& layout) {
    lost_rows_ = 0;
    const std::uint64_t rows_before = rows_;
    lost_pages_ = 0;
    lost_values_.clear();
    const file::RowShape shape = file::ShapeOf(layout);
    const std::string begin = "INSERT INTO " + SqlName(name) + " VALUES (";
    for (const PageNumber number : pages_[layout.page]) {
      try {
        const file::DataPage page(source_.Read(number));
        for (std::size_t row = 0; row < page.RowCount(); ++row)
          TakeRow(page, row, layout, shape, begin);
      } catch (const file::Damage&) {
        ++lost_pages_;
      }
    }
    if (lost_pages_ != 0)
      lost_.push_back(Say(texts::kLostPages, {name, std::to_string(lost_pages_)}));
    // Rows on pages that are gone altogether are known by the table's count only.
    const std::uint64_t taken = rows_ - rows_before;
    if (layout.row_count > taken) lost_rows_ = std::max(lost_rows_, layout.row_count - taken);
    if (lost_rows_ != 0) lost_.push_back(Say(texts::kLostRows, {name, std::to_string(lost_rows_)}));
    for (const auto& [field, count] : lost_values_)
      lost_.push_back(Say(texts::kLostValues, {name, field, std::to_string(count)}));
  }

  void TakeRow(const file::DataPage& page, std::size_t row, const file::TableLayout& layout,
               const file::RowShape& shape, const std::string& begin) {
    try {
      const auto placed = file::RecordAt(source_, layout, page, row);
      if (!placed) return;
      const file::RowView view(placed->record, shape);
      std::string statement = begin;
      for (std::size_t i = 0; i < order_.size(); ++i) {
        if (i != 0) statement += ", ";
        statement += SqlLiteral(ValueOf(view, layout.columns[order_[i]]));
      }
      target_.Execute(statement + ")", true);
      ++rows_;
    } catch (const file::Damage&) {
      ++lost_rows_;
    } catch (const ports::DatabaseError&) {
      ++lost_rows_;
    }
  }

  // Null, and noted, when the value cannot be read.
  ports::DatabaseValue ValueOf(const file::RowView& row, const file::ColumnLayout& column) {
    try {
      const auto stored = row.Stored(column);
      if (!stored || !file::IsLong(column.type)) return file::ToValue(column, stored);
      return file::ToValue(
          column, file::ReadLongValue(source_, file::ByteView(row.Record().Page(), *stored)));
    } catch (const file::Damage&) {
      ++lost_values_[column.name];
      return ports::NullValue{};
    }
  }

  void TakeRelations() {
    std::vector<file::Relation> relations;
    Try([&] { relations = reader_.Relations(); }, texts::kLostRelation, "*");
    for (const file::Relation& relation : relations) {
      const file::CatalogueObject* const own = reader_.FindTable(relation.table);
      const file::CatalogueObject* const other = reader_.FindTable(relation.referenced_table);
      const bool is_ours =
          own != nullptr && other != nullptr && ((own->flags | other->flags) & kNotOurs) == 0;
      if (!is_ours) continue;
      ports::RelationDefinition definition;
      definition.name = relation.name;
      definition.table = relation.referenced_table;
      definition.foreign_table = relation.table;
      definition.attributes = static_cast<std::int32_t>(relation.flags);
      for (const file::RelationColumn& pair : relation.columns)
        definition.fields.push_back({pair.referenced_column, pair.column});
      Try([&] { target_.CreateRelation(definition); }, texts::kLostRelation, relation.name);
    }
  }

  file::DatabaseReader& reader_;
  file::PageSource& source_;
  ports::Database& target_;
  std::optional<file::UsageMap> free_;
  std::map<PageNumber, std::vector<PageNumber>> pages_;       // by the owning definition
  std::vector<std::pair<std::string, std::string>> indexes_;  // table and statement
  std::vector<std::string> constraints_;                      // of the table
  std::vector<std::size_t> order_;                            // of the fields of the table
  std::uint64_t lost_rows_ = 0;                               // of the table
  std::uint64_t lost_pages_ = 0;
  std::map<std::string, std::uint64_t> lost_values_;
  std::vector<std::string> lost_;
  std::uint64_t tables_ = 0;
  std::uint64_t rows_ = 0;
};

}  // namespace

int Recover(const tools::Arguments& arguments) {
  constexpr int kLostSomething = 1;
  const std::string& path = arguments.Words()[0];
  const SharedFile shared = OpenShared(path);
  file::DatabaseReader reader(shared.pages, path, false);
  const auto engine = jet::MakeEngine();
  ports::CurrentPorts().database = engine.get();
  const auto target = engine->CreateDatabase(arguments.Words()[1]);
  Salvage salvage(reader, *target);
  tmw::Transaction whole;
  salvage.Run();
  whole.Commit();
  target->Close();
  if (arguments.Has(tools::kJsonOption)) {
    std::cout << tools::JsonLine(
        {{"tables", salvage.TableCount()}, {"rows", salvage.RowCount()}, {"lost", salvage.Lost()}});
  } else {
    for (const std::string& line : salvage.Lost())
      std::cout << line << '\n';
    std::cout << Say(texts::kRecovered,
                     {std::to_string(salvage.TableCount()), std::to_string(salvage.RowCount())});
    if (salvage.Lost().empty()) std::cout << Say(texts::kNothingLost);
  }
  return salvage.Lost().empty() ? tools::kDone : kLostSomething;
}

}  // namespace jetsql
