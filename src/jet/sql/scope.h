#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "jet/table_info.h"
#include "jet/values/value_type.h"

namespace jet::sql {

// A column that names may mean.
struct ScopeColumn {
  std::string name;
  std::string lower_name;
  std::string column;                // the storage's name
  ValueType type;                    // as it lies there: amounts and GUIDs have types of their own
  const FieldInfo* field = nullptr;  // none: a sub-select computes it
};

// A table or a sub-select of a FROM clause.
struct ScopeTable {
  std::string alias;
  std::string lower_alias;
  TablePtr table;  // null for a sub-select
  std::vector<ScopeColumn> columns;
  std::string sql_alias;         // "a0"
  std::string row;               // its row number ("a0.rowid"); empty for a sub-select
  mutable bool is_used = false;  // some name meant it

  std::string Sql(const ScopeColumn& column) const { return sql_alias + "." + column.column; }
};

// The tables of one FROM clause; looks names up in them, then in those around a sub-select.
class Scope {
 public:
  struct Found {
    const ScopeTable* table = nullptr;  // none: the name is unknown
    const ScopeColumn* column = nullptr;
    bool is_outer = false;
  };

  // Sub-selects are refused when no tables can be found.
  Scope() : shared_(std::make_shared<Shared>()) {}
  explicit Scope(TableFinder& tables) : Scope() { shared_->tables = &tables; }

  // The scope of a sub-select: in an expression of this one, or in its FROM clause.
  Scope Inside() const { return {shared_, this}; }
  Scope Beside() const { return {shared_, outer_}; }

  // The reference holds until the next one is added.
  const ScopeTable& Add(TablePtr table, std::string_view alias);
  const ScopeTable& Add(std::vector<ScopeColumn> columns, std::string_view alias);
  // The column that has the row number of the table added last.
  void NameLastRow(std::string_view column);
  // The table of that name (3078).
  TablePtr FindStored(const std::string& name) const;

  // Names mean tables from the position on only, for a join's condition; puts it back at the end.
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

  // Fails with 3079 when an unqualified name is in more than one table.
  Found Find(std::string_view qualifier, std::string_view name) const;
  const ScopeTable* FindTable(std::string_view alias) const;
  const std::vector<ScopeTable>& Tables() const { return tables_; }
  // Of the whole statement, in no particular order.
  const std::vector<TablePtr>& StoredTables() const { return shared_->stored; }

  // Outside of totals only these values of a grouped query may be named.
  void SetGroups(const std::vector<std::string>* groups) { groups_ = groups; }

  // A name that is no field is a parameter that nobody gives a value.
  void NoteUnknown(std::string name);
  // Fails with 3061 when there is one.
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
