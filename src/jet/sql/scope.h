#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jet/table_info.h"

namespace jet::sql {

// A table that a statement's names may mean.
struct ScopeTable {
  std::string lower_alias;
  TablePtr table;
  std::string sql_alias;  // "a0"
};

// The tables of one FROM clause; looks names up in them.
class Scope {
 public:
  struct Found {
    const ScopeTable* table = nullptr;  // none: the name is unknown
    const FieldInfo* field = nullptr;
  };

  const ScopeTable& Add(TablePtr table, std::string_view alias);

  // Fails with 3079 when an unqualified name is in more than one table.
  Found Find(std::string_view qualifier, std::string_view name) const;
  const ScopeTable* FindTable(std::string_view alias) const;
  const std::vector<ScopeTable>& Tables() const { return tables_; }

  // A name that is no field is a parameter that nobody gives a value.
  void NoteUnknown(std::string name);
  // Fails with 3061 when there is one.
  void FailOnUnknown() const;

 private:
  std::vector<ScopeTable> tables_;
  std::vector<std::string> unknown_;
};

}  // namespace jet::sql
