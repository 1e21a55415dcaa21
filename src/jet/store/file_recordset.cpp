#include "jet/store/file_recordset.h"

#include <utility>

#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/store/catalogue.h"

namespace jet {

FileRecordset::FileRecordset(std::shared_ptr<Session> session, TablePtr table, file::RowList rows)
    : session_(std::move(session)),
      table_(std::move(table)),
      changes_(session_->ChangeCount()),
      rows_(std::move(rows)) {
  for (const FieldInfo& field : table_->fields)
    columns_.push_back(rows_.Layout().FindColumn(*ColumnOf(field.id)));
}

std::size_t FileRecordset::Count() const {
  if (!is_listed_) rows_.List(session_->FileReader());
  is_listed_ = true;
  return rows_.Size();
}

// Null while the file holds what the database does.
Recordset* FileRecordset::Stored() const {
  if (!stored_ && session_->ChangeCount() != changes_) MakeStored();
  return stored_.get();
}

Recordset& FileRecordset::MakeStored() const {
  if (stored_) return *stored_;
  // Rows are numbered in the order in which they are brought.
  Count();
  std::vector<std::int64_t> keys = rows_.Places(session_->FileReader());
  session_->LoadedTables().FindTable(table_->name);
  stored_ = std::make_unique<Recordset>(session_, sql::PlanTable(table_, index_),
                                        ports::RecordsetType::kTable);
  stored_->TakePlace(std::move(keys), position_);
  return *stored_;
}

void FileRecordset::SetIndex(const std::string& name) {
  if (Recordset* const stored = Stored()) return stored->SetIndex(name);
  const IndexInfo* const index = table_->FindIndex(name);
  if (index == nullptr) Fail(kNotAnIndex, name);
  for (const file::LogicalIndexLayout& logical : rows_.Layout().logical_indexes) {
    if (!tmw::EqualIgnoringCase(logical.name, name)) continue;
    const file::IndexLayout& tree = rows_.Layout().indexes.at(logical.real_index);
    if (!rows_.ListBy(session_->FileReader(), tree)) break;
    is_listed_ = true;
    index_ = index;
    position_ = 1;
    return;
  }
  MakeStored().SetIndex(name);
}

bool FileRecordset::AtBeginning() const {
  const Recordset* const stored = Stored();
  return stored != nullptr ? stored->AtBeginning() : position_ == 0 || Count() == 0;
}

bool FileRecordset::AtEnd() const {
  const Recordset* const stored = Stored();
  return stored != nullptr ? stored->AtEnd() : position_ > Count();
}

void FileRecordset::MoveFirst() {
  if (Recordset* const stored = Stored()) return stored->MoveFirst();
  position_ = 1;
  if (Count() == 0) Fail(kNoCurrentRecord);
}

void FileRecordset::MoveLast() {
  if (Recordset* const stored = Stored()) return stored->MoveLast();
  position_ = Count();
  if (position_ == 0) Fail(kNoCurrentRecord);
}

void FileRecordset::MoveNext() {
  if (Recordset* const stored = Stored()) return stored->MoveNext();
  if (position_ > Count()) Fail(kNoCurrentRecord);
  ++position_;
}

void FileRecordset::MovePrevious() {
  if (Recordset* const stored = Stored()) return stored->MovePrevious();
  if (position_ == 0) Fail(kNoCurrentRecord);
  --position_;
}

std::vector<std::string> FileRecordset::FieldNames() const {
  std::vector<std::string> names;
  for (const FieldInfo& field : table_->fields)
    names.push_back(field.definition.name);
  return names;
}

std::size_t FileRecordset::FieldPosition(const std::string& name) const {
  const FieldInfo* const field = table_->FindField(name);
  if (field == nullptr) Fail(kItemNotFound, name);
  return static_cast<std::size_t>(field - table_->fields.data());
}

ports::DatabaseValue FileRecordset::Value(std::size_t position) const {
  if (const Recordset* const stored = Stored()) return stored->Value(position);
  if (position >= columns_.size()) Fail(kItemNotFound, std::to_string(position));
  if (position_ == 0 || position_ > Count()) Fail(kNoCurrentRecord);
  return rows_.Value(session_->FileReader(), position_ - 1, *columns_[position]);
}

void FileRecordset::SetValue(std::size_t position, const ports::DatabaseValue& value) {
  MakeStored().SetValue(position, value);
}

void FileRecordset::Edit() {
  MakeStored().Edit();
}

void FileRecordset::AddNew() {
  MakeStored().AddNew();
}

void FileRecordset::Update() {
  MakeStored().Update();
}

void FileRecordset::Delete() {
  MakeStored().Delete();
}

}  // namespace jet
