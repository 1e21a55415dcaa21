#include "jet/sql/scope.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "jet/errors.h"

namespace jet::sql {

const ScopeTable& Scope::Add(TablePtr table, std::string_view alias) {
  ScopeTable entry;
  entry.lower_alias = tmw::LowerCase(alias.empty() ? std::string_view(table->name) : alias);
  entry.table = std::move(table);
  entry.sql_alias = "a" + std::to_string(tables_.size());
  tables_.push_back(std::move(entry));
  return tables_.back();
}

const ScopeTable* Scope::FindTable(std::string_view alias) const {
  const std::string lower = tmw::LowerCase(alias);
  for (const ScopeTable& entry : tables_) {
    if (entry.lower_alias == lower) return &entry;
  }
  return nullptr;
}

Scope::Found Scope::Find(std::string_view qualifier, std::string_view name) const {
  if (!qualifier.empty()) {
    const ScopeTable* const table = FindTable(qualifier);
    const FieldInfo* const field = table == nullptr ? nullptr : table->table->FindField(name);
    return field == nullptr ? Found{} : Found{table, field};
  }
  Found found;
  for (const ScopeTable& entry : tables_) {
    const FieldInfo* const field = entry.table->FindField(name);
    if (field == nullptr) continue;
    if (found.field != nullptr) Fail(kAmbiguousField, name);
    found = {&entry, field};
  }
  return found;
}

void Scope::NoteUnknown(std::string name) {
  if (std::find(unknown_.begin(), unknown_.end(), name) == unknown_.end())
    unknown_.push_back(std::move(name));
}

void Scope::FailOnUnknown() const {
  if (unknown_.empty()) return;
  std::string names;
  for (const std::string& name : unknown_)
    names += (names.empty() ? "" : ", ") + name;
  Fail(kTooFewParameters, std::to_string(unknown_.size()), names);
}

}  // namespace jet::sql
