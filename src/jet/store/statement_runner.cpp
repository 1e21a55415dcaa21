#include "jet/store/statement_runner.h"

#include <variant>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/insert_translator.h"
#include "jet/sql/parser.h"
#include "jet/sql/update_translator.h"
#include "jet/store/definitions.h"
#include "jet/store/relations.h"

namespace jet {
namespace {

// An unnamed constraint is named after its first field.
std::string ConstraintName(const sql::Constraint& constraint) {
  if (!constraint.name.empty()) return constraint.name;
  return constraint.kind == sql::ConstraintKind::kPrimaryKey ? "PrimaryKey"
                                                             : constraint.fields.front();
}

ports::IndexDefinition IndexOf(const sql::Constraint& constraint) {
  ports::IndexDefinition index;
  index.name = ConstraintName(constraint);
  index.primary = constraint.kind == sql::ConstraintKind::kPrimaryKey;
  index.unique = true;
  for (const std::string& field : constraint.fields)
    index.fields.push_back({field, false});
  return index;
}

class Runner {
 public:
  Runner(Session& session, const std::string& text)
      : session_(session), definitions_(session), text_(text) {}

  std::int64_t operator()(const sql::Select& select) {
    if (select.into.empty()) Fail(kNotAnActionQuery);
    definitions_.CreateTable(sql::TranslateIntoTable(select, session_.LoadedTables(), text_));
    return Run(sql::TranslateIntoRows(select, session_.LoadedTables(), text_));
  }
  std::int64_t operator()(const sql::Insert& insert) {
    return Run(sql::TranslateInsert(insert, session_.LoadedTables(), text_));
  }
  std::int64_t operator()(const sql::Update& update) {
    return Run(sql::TranslateUpdate(update, session_.LoadedTables(), text_));
  }
  std::int64_t operator()(const sql::Delete& statement) {
    return Run(sql::TranslateDelete(statement, session_.LoadedTables(), text_));
  }

  std::int64_t operator()(const sql::CreateTable& create) {
    ports::TableDefinition table;
    table.name = create.table;
    table.fields = create.fields;
    definitions_.CreateTable(table);
    // References come last, because one may refer to a key of this table.
    for (const bool are_references : {false, true}) {
      for (const sql::Constraint& constraint : create.constraints) {
        if ((constraint.kind == sql::ConstraintKind::kForeignKey) == are_references)
          Add(create.table, constraint);
      }
    }
    return 0;
  }
  std::int64_t operator()(const sql::AddColumn& add) {
    definitions_.AddField(*Table(add.table), add.field);
    for (const sql::Constraint& constraint : add.constraints)
      Add(add.table, constraint);
    return 0;
  }
  std::int64_t operator()(const sql::AlterColumn& alter) {
    const TablePtr table = Table(alter.table);
    definitions_.AlterField(*table, RequireField(*table, alter.field.name, kFieldNotFound),
                            alter.field);
    return 0;
  }
  std::int64_t operator()(const sql::DropColumn& drop) {
    const TablePtr table = Table(drop.table);
    definitions_.DropField(*table, RequireField(*table, drop.field, kFieldNotFound));
    return 0;
  }
  std::int64_t operator()(const sql::AddConstraint& add) {
    Add(add.table, add.constraint);
    return 0;
  }
  std::int64_t operator()(const sql::DropConstraint& drop) {
    const TablePtr table = Table(drop.table);
    if (Relations(session_).Drop(*table, drop.name)) return 0;
    const IndexInfo* const index = table->FindIndex(drop.name);
    if (index == nullptr || !index->definition.unique) Fail(kConstraintNotFound, drop.name);
    definitions_.DropIndex(*table, *index);
    return 0;
  }
  std::int64_t operator()(const sql::CreateIndex& create) {
    definitions_.CreateIndex(*Table(create.table), create.index);
    return 0;
  }
  std::int64_t operator()(const sql::DropTable& drop) {
    definitions_.DropTable(*Table(drop.table));
    return 0;
  }
  std::int64_t operator()(const sql::DropIndex& drop) {
    const TablePtr table = Table(drop.table);
    const IndexInfo* const index = table->FindIndex(drop.index);
    if (index == nullptr) Fail(kNoSuchIndex, drop.index, drop.table);
    definitions_.DropIndex(*table, *index);
    return 0;
  }

 private:
  TablePtr Table(const std::string& name) { return RequireTable(session_, name, kTableNotFound); }

  void Add(const std::string& table_name, const sql::Constraint& constraint) {
    const TablePtr table = Table(table_name);
    switch (constraint.kind) {
      case sql::ConstraintKind::kForeignKey:
        Relations(session_).Create(*table, constraint);
        break;
      case sql::ConstraintKind::kNotNull:
        for (const std::string& field : constraint.fields)
          definitions_.RequireValues(*table, RequireField(*table, field, kFieldNotFound));
        break;
      default:
        definitions_.CreateIndex(*table, IndexOf(constraint));
        break;
    }
  }

  std::int64_t Run(const sql::ActionPlan& plan) {
    std::int64_t touched = 0;
    for (std::size_t i = 0; i < plan.steps.size(); ++i) {
      Statement(session_.SharedStorage(), plan.steps[i]).Run();
      if (i == plan.counted) touched = session_.Storage().Changes();
    }
    return touched;
  }

  Session& session_;
  Definitions definitions_;
  const std::string& text_;
};

}  // namespace

std::int64_t RunStatement(Session& session, const std::string& text) {
  const sql::Statement statement = sql::ParseStatement(text);
  std::int64_t touched = 0;
  session.Change([&] { touched = std::visit(Runner(session, text), statement); });
  return touched;
}

namespace {

// The table whose rows "SELECT Count(*) FROM table" counts; empty for any other statement.
std::string CountedTable(const sql::Select& select) {
  const bool is_plain = select.items.size() == 1 && select.items[0].expression &&
                        select.from.size() == 1 && !select.from[0]->select &&
                        !select.from[0]->join && !select.top && !select.where &&
                        select.group_by.empty() && !select.having && select.order_by.empty() &&
                        !select.united_with && select.predicate == sql::SelectPredicate::kAll;
  if (!is_plain) return {};
  const sql::Expression& item = *select.items[0].expression;
  const bool counts = item.kind == sql::ExpressionKind::kCall &&
                      tmw::EqualIgnoringCase(item.text, "count") && item.arguments.size() == 1 &&
                      item.arguments[0]->kind == sql::ExpressionKind::kStar;
  return counts ? select.from[0]->table : std::string();
}

}  // namespace

sql::SelectPlan PlanSelect(Session& session, const std::string& text) {
  const sql::Statement statement = sql::ParseStatement(text);
  const auto* const select = std::get_if<sql::Select>(&statement);
  if (select == nullptr) Fail(kInvalidOperation, Excerpt(text));
  // Rows are counted where they are: whoever counts them all rarely needs them.
  const TablePtr counted = session.Tables().FindTable(CountedTable(*select));
  const auto count = counted ? session.CountInFile(*counted) : std::nullopt;
  if (!count) return sql::TranslateSelect(*select, session.LoadedTables(), text);
  sql::SelectPlan plan = sql::TranslateSelect(*select, session.Tables(), text);
  plan.rows_sql = "SELECT " + std::to_string(*count);
  return plan;
}

}  // namespace jet
