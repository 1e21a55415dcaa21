#include "jet/store/recordset.h"

#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/sql/field_value.h"
#include "jet/storage_sql.h"
#include "jet/store/row_limit.h"
#include "jet/store/stored_values.h"

namespace jet {

using ports::DatabaseValue;

Recordset::Recordset(std::shared_ptr<Session> session, sql::SelectPlan plan,
                     ports::RecordsetType type)
    : session_(std::move(session)), plan_(std::move(plan)), type_(type) {
  OpenRows();
}

void Recordset::OpenRows() {
  session_->EnterLevels();
  rows_.emplace(session_, plan_);
  position_ = 1;
  mode_ = Mode::kBrowse;
}

void Recordset::TakePlace(std::vector<std::int64_t> keys, std::size_t position) {
  rows_->SetKeys(std::move(keys));
  position_ = position;
}

void Recordset::SetIndex(const std::string& name) {
  if (type_ != ports::RecordsetType::kTable) FailUnsupported("Index");
  const IndexInfo* const index = plan_.table->FindIndex(name);
  if (index == nullptr) Fail(kNotAnIndex, name);
  plan_ = sql::PlanTable(plan_.table, index);
  OpenRows();
}

bool Recordset::AtBeginning() const {
  return position_ == 0 || rows_->Count() == 0;
}

bool Recordset::AtEnd() const {
  return position_ > rows_->Count();
}

bool Recordset::IsOnRow() const {
  return position_ >= 1 && position_ <= rows_->Count();
}

void Recordset::RequireRow() const {
  if (!IsOnRow()) Fail(kNoCurrentRecord);
}

// Skips rows that were deleted since the recordset was opened.
void Recordset::SettleForward() {
  session_->Storage().Handle();
  while (IsOnRow() && rows_->Fetch(position_ - 1) == nullptr)
    ++position_;
}

void Recordset::MoveFirst() {
  mode_ = Mode::kBrowse;
  position_ = 1;
  SettleForward();
  RequireRow();
}

void Recordset::MoveLast() {
  mode_ = Mode::kBrowse;
  position_ = rows_->Count();
  while (IsOnRow() && rows_->Fetch(position_ - 1) == nullptr)
    --position_;
  RequireRow();
}

void Recordset::MoveNext() {
  mode_ = Mode::kBrowse;
  if (AtEnd()) Fail(kNoCurrentRecord);
  ++position_;
  SettleForward();
}

void Recordset::MovePrevious() {
  mode_ = Mode::kBrowse;
  if (position_ == 0) Fail(kNoCurrentRecord);
  --position_;
  while (IsOnRow() && rows_->Fetch(position_ - 1) == nullptr)
    --position_;
}

std::vector<std::string> Recordset::FieldNames() const {
  std::vector<std::string> names;
  for (const sql::OutputColumn& column : plan_.columns)
    names.push_back(column.name);
  return names;
}

std::size_t Recordset::FieldPosition(const std::string& name) const {
  for (std::size_t i = 0; i < plan_.columns.size(); ++i) {
    if (tmw::EqualIgnoringCase(plan_.columns[i].name, name)) return i;
  }
  Fail(kItemNotFound, name);
}

std::size_t Recordset::TableField(std::size_t position) const {
  const FieldInfo* const field = plan_.columns.at(position).field;
  if (field == nullptr) Fail(kFieldNotUpdatable, plan_.columns[position].name);
  return static_cast<std::size_t>(field - plan_.table->fields.data());
}

DatabaseValue Recordset::DefaultValue(const FieldInfo& field) const {
  if (field.definition.default_value.empty())
    return ConvertTo(ports::NullValue{}, field.definition.type, 0, kConversion);
  Statement statement(session_->SharedStorage(), "SELECT " + sql::DefaultSql(field));
  statement.Step();
  return ReadStored(statement, 0, field.definition.type);
}

DatabaseValue Recordset::Value(std::size_t position) const {
  if (position >= plan_.columns.size()) Fail(kItemNotFound, std::to_string(position));
  if (mode_ != Mode::kBrowse && plan_.columns[position].field != nullptr) {
    const std::size_t field = TableField(position);
    if (buffer_[field]) return *buffer_[field];
    if (mode_ == Mode::kAdd) return DefaultValue(plan_.table->fields[field]);
  }
  RequireRow();
  const Row* const row = rows_->Fetch(position_ - 1);
  if (row == nullptr) Fail(kRecordDeleted);
  return (*row)[position];
}

void Recordset::SetValue(std::size_t position, const DatabaseValue& value) {
  if (mode_ == Mode::kBrowse) Fail(kNoEditOrAddNew);
  if (position >= plan_.columns.size()) Fail(kItemNotFound, std::to_string(position));
  const std::size_t index = TableField(position);
  const FieldInfo& field = plan_.table->fields[index];
  if (field.IsAutonumber()) Fail(kFieldNotUpdatable, field.definition.name);
  buffer_[index] = ConvertFor(value, field.target, kConversion);
}

void Recordset::RequireUpdatable() const {
  if (!rows_->IsUpdatable()) Fail(kReadOnly);
}

void Recordset::Edit() {
  RequireUpdatable();
  RequireRow();
  buffer_.assign(plan_.table->fields.size(), std::nullopt);
  mode_ = Mode::kEdit;
}

void Recordset::AddNew() {
  RequireUpdatable();
  buffer_.assign(plan_.table->fields.size(), std::nullopt);
  mode_ = Mode::kAdd;
}

void Recordset::Update() {
  if (mode_ == Mode::kBrowse) Fail(kNoEditOrAddNew);
  session_->Change([this] {
    session_->LoadedTables().FindTable(plan_.table->name);
    if (mode_ == Mode::kAdd) {
      InsertBuffer();
    } else {
      UpdateBuffer();
    }
  });
  if (mode_ == Mode::kAdd) rows_->Append(session_->Storage().LastRow());
  mode_ = Mode::kBrowse;
}

void Recordset::BindBuffered(Statement& statement, int parameter, std::size_t field) {
  const FieldInfo& info = plan_.table->fields[field];
  CheckAllowed(*buffer_[field], info.target);
  CheckPackable(*buffer_[field], info.target);
  BindValue(statement, parameter, *buffer_[field], info.definition.type);
}

void Recordset::InsertBuffer() {
  const TableInfo& table = *plan_.table;
  if (!insert_) {
    // Columns are named because altering a field moves its column to the end.
    std::string columns;
    std::string parameters;
    for (const FieldInfo& field : table.fields) {
      Append(columns, field.column);
      parameters += parameters.empty() ? "?" : ", ?";
    }
    insert_ = Statement(session_->SharedStorage(), "INSERT INTO " + table.StorageName() + "(" +
                                                       columns + ") VALUES(" + parameters + ")");
  }
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    const FieldInfo& field = table.fields[i];
    if (!buffer_[i]) {
      buffer_[i] = field.IsAutonumber()
                       ? static_cast<std::int32_t>(session_->Numbers().Next(table.id))
                       : DefaultValue(field);
    }
    BindBuffered(insert_, static_cast<int>(i) + 1, i);
  }
  insert_.Run();
}

void Recordset::UpdateBuffer() {
  const TableInfo& table = *plan_.table;
  std::string assignments;
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    if (buffer_[i]) Append(assignments, table.fields[i].column + " = ?");
  }
  if (assignments.empty()) return;
  Statement update(session_->SharedStorage(),
                   "UPDATE " + table.StorageName() + " SET " + assignments + " WHERE rowid = ?");
  int parameter = 0;
  for (std::size_t i = 0; i < table.fields.size(); ++i) {
    if (buffer_[i]) BindBuffered(update, ++parameter, i);
  }
  update.Bind(parameter + 1, rows_->Key(position_ - 1)).Run();
  if (session_->Storage().Changes() == 0) Fail(kRecordDeleted);
}

void Recordset::Delete() {
  RequireUpdatable();
  RequireRow();
  mode_ = Mode::kBrowse;
  session_->Change([this] {
    session_->LoadedTables().FindTable(plan_.table->name);
    Statement statement(session_->SharedStorage(),
                        "DELETE FROM " + plan_.table->StorageName() + " WHERE rowid = ?1");
    statement.Bind(1, rows_->Key(position_ - 1)).Run();
    if (session_->Storage().Changes() == 0) Fail(kRecordDeleted);
  });
}

}  // namespace jet
