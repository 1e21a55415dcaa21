#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/table_info.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A column that names can refer to.
struct ScopeColumn {
  std::string name;
  std::string lower_name;
  std::string column;                // the storage's name
  ValueType type;                    // raw
  const FieldInfo* field = nullptr;  // null if a sub-select computes it
};

// A table or a sub-select of a FROM clause.
struct ScopeTable {
  std::string alias;
  std::string lower_alias;
  TablePtr table;  // null for a sub-select
  std::vector<ScopeColumn> columns;
  std::string sql_alias;         // "a0"
  std::string row;               // its row number, "a0.rowid"; empty for a sub-select
  mutable bool is_used = false;  // a name referred to it

  std::string Sql(const ScopeColumn& column) const { return sql_alias + "." + column.column; }
};

// The tables of one FROM clause. Names are looked up here, then in the enclosing queries.
class Scope {
 public:
  struct Found {
    const ScopeTable* table = nullptr;  // null if the name is unknown
    const ScopeColumn* column = nullptr;
    bool is_outer = false;
  };

  // Without tables sub-selects are refused.
  Scope() : shared_(std::make_shared<Shared>()) {}
  explicit Scope(TableFinder& tables) : Scope() { shared_->tables = &tables; }

  // The scope of a sub-select in an expression of this query, or in its FROM clause.
  Scope Inside() const { return {shared_, this}; }
  Scope Beside() const { return {shared_, outer_}; }

  // The reference is valid until the next call.
  const ScopeTable& Add(TablePtr table, std::string_view alias);
  const ScopeTable& Add(std::vector<ScopeColumn> columns, std::string_view alias);
  // Names the column with the row number of the table added last.
  void NameLastRow(std::string_view column);
  // Fails with 3078 if there is none.
  TablePtr FindStored(const std::string& name) const;

  // For the condition of a join: limits names to the tables from a position on.
  class Limit {
   public:
    Limit(Scope& scope, std::size_t first) : scope_(scope), saved_(scope.first_visible_) {
      scope.first_visible_ = first;
    }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
    ~Limit() { scope_.first_visible_ = saved_; }

   private:
    Scope& scope_;
    std::size_t saved_;
  };

  // Fails with 3079 if an unqualified name is in more than one table.
  Found Find(std::string_view qualifier, std::string_view name) const;
  const ScopeTable* FindTable(std::string_view alias) const;
  const std::vector<ScopeTable>& Tables() const { return tables_; }
  // Of the whole statement, in any order.
  const std::vector<TablePtr>& StoredTables() const { return shared_->stored; }

  // The only values of this query that its sub-selects may refer to.
  void SetGroups(const std::vector<std::string>* groups) { groups_ = groups; }

  // A name that is not a field counts as a parameter without a value.
  void NoteUnknown(std::string name);
  // Fails with 3061 if there are any.
  void FailOnUnknown() const;

 private:
  struct Shared {
    TableFinder* tables = nullptr;
    std::size_t next_alias = 0;
    std::vector<std::string> unknown;
    std::vector<TablePtr> stored;
  };

  Scope(std::shared_ptr<Shared> shared, const Scope* outer)
      : shared_(std::move(shared)), outer_(outer) {}
  ScopeTable& AddEntry(std::string_view alias);
  Found FindHere(std::string_view qualifier, std::string_view name) const;
  void RefuseUngrouped(const Found& found, std::string_view name) const;

  std::shared_ptr<Shared> shared_;
  const Scope* outer_ = nullptr;
  std::vector<ScopeTable> tables_;
  std::size_t first_visible_ = 0;
  const std::vector<std::string>* groups_ = nullptr;
};

}  // namespace jet::sql
