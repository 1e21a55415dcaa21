#include "jet/sql/scope.h"

#include <algorithm>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"

namespace jet::sql {
namespace {

ValueType StoredType(ports::DataType type) {
  if (type == ports::DataType::kCurrency) return ValueType::kStoredCurrency;
  if (type == ports::DataType::kGuid) return ValueType::kStoredGuid;
  if (type == ports::DataType::kDecimal) return ValueType::kStoredDecimal;
  return TypeOfField(type);
}

}  // namespace

ScopeTable& Scope::AddEntry(std::string_view alias) {
  ScopeTable entry;
  entry.alias = alias;
  entry.lower_alias = tmw::LowerCase(alias);
  entry.sql_alias = "a" + std::to_string(shared_->next_alias++);
  for (const ScopeTable& other : tables_) {
    if (!alias.empty() && other.lower_alias == entry.lower_alias) Fail(kTableJoinedTwice, alias);
  }
  tables_.push_back(std::move(entry));
  return tables_.back();
}

const ScopeTable& Scope::Add(TablePtr table, std::string_view alias) {
  ScopeTable& entry = AddEntry(alias.empty() ? std::string_view(table->name) : alias);
  entry.row = entry.sql_alias + ".rowid";
  for (const FieldInfo& field : table->fields)
    entry.columns.push_back({field.definition.name, field.lower_name, field.column,
                             StoredType(field.definition.type), &field});
  shared_->stored.push_back(table);
  entry.table = std::move(table);
  return entry;
}

const ScopeTable& Scope::Add(std::vector<ScopeColumn> columns, std::string_view alias) {
  ScopeTable& entry = AddEntry(alias);
  entry.columns = std::move(columns);
  return entry;
}

void Scope::NameLastRow(std::string_view column) {
  tables_.back().row = tables_.back().sql_alias + "." + std::string(column);
}

TablePtr Scope::FindStored(const std::string& name) const {
  if (shared_->tables == nullptr) FailUnsupported("SELECT в значении по умолчанию");
  TablePtr table = shared_->tables->FindTable(name);
  if (!table) Fail(kInputTableNotFound, name);
  return table;
}

const ScopeTable* Scope::FindTable(std::string_view alias) const {
  const std::string lower = tmw::LowerCase(alias);
  for (const ScopeTable& entry : tables_) {
    if (entry.lower_alias == lower) return &entry;
  }
  return nullptr;
}

Scope::Found Scope::FindHere(std::string_view qualifier, std::string_view name) const {
  const std::string lower_alias = tmw::LowerCase(qualifier);
  const std::string lower_name = tmw::LowerCase(name);
  Found found;
  bool is_hidden = false;
  for (std::size_t i = 0; i < tables_.size(); ++i) {
    if (!qualifier.empty() && tables_[i].lower_alias != lower_alias) continue;
    for (const ScopeColumn& column : tables_[i].columns) {
      if (column.lower_name != lower_name) continue;
      is_hidden = is_hidden || i < first_visible_;
      if (i < first_visible_) continue;
      if (found.column != nullptr) Fail(kAmbiguousField, name);
      found = {&tables_[i], &column};
    }
  }
  if (is_hidden && found.column == nullptr) Fail(kFieldOutsideJoin, name);
  return found;
}

void Scope::RefuseUngrouped(const Found& found, std::string_view name) const {
  if (groups_ == nullptr) return;
  if (std::find(groups_->begin(), groups_->end(), found.table->Sql(*found.column)) ==
      groups_->end())
    Fail(kNotInAggregate, name);
}

Scope::Found Scope::Find(std::string_view qualifier, std::string_view name) const {
  for (const Scope* scope = this; scope != nullptr; scope = scope->outer_) {
    Found found = scope->FindHere(qualifier, name);
    if (found.column == nullptr) continue;
    found.is_outer = scope != this;
    found.table->is_used = true;
    if (found.is_outer) scope->RefuseUngrouped(found, name);
    return found;
  }
  return {};
}

void Scope::NoteUnknown(std::string name) {
  std::vector<std::string>& unknown = shared_->unknown;
  if (std::find(unknown.begin(), unknown.end(), name) == unknown.end())
    unknown.push_back(std::move(name));
}

void Scope::FailOnUnknown() const {
  const std::vector<std::string>& unknown = shared_->unknown;
  if (unknown.empty()) return;
  Fail(kTooFewParameters, std::to_string(unknown.size()), tmw::Joined(unknown, ", "));
}

}  // namespace jet::sql
