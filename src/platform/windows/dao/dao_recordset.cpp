#include "platform/windows/dao/dao_recordset.h"

#include "foundation/text.h"
#include "platform/windows/dao/dao_values.h"

namespace platform {

DaoRecordset::DaoRecordset(DaoObject recordset) : recordset_(std::move(recordset)) {
  const DaoObject fields = recordset_.GetObject(L"Fields");
  for (std::int32_t i = 0; i < fields.Count(); ++i) {
    fields_.push_back(fields.Item(i));
    names_.push_back(TextOf(fields_.back().Get(L"Name")));
  }
}

DaoRecordset::~DaoRecordset() {
  try {
    recordset_.Call(L"Close");
  } catch (const ports::DatabaseError&) {  // NOLINT(bugprone-empty-catch): its database closed it
                                           // already
  }
}

bool DaoRecordset::AtBeginning() const {
  return BooleanOf(recordset_.Get(L"BOF"));
}

bool DaoRecordset::AtEnd() const {
  return BooleanOf(recordset_.Get(L"EOF"));
}

std::size_t DaoRecordset::FieldPosition(const std::string& name) const {
  for (std::size_t i = 0; i < names_.size(); ++i) {
    if (tmw::EqualIgnoringCase(names_[i], name)) return i;
  }
  throw ports::DatabaseError(ports::kItemNotFound,
                             "Элемент \"" + name + "\" не найден в этой коллекции.", "DAO");
}

ports::DatabaseValue DaoRecordset::Value(std::size_t position) const {
  return fields_.at(position).Get(L"Value");
}

void DaoRecordset::SetValue(std::size_t position, const ports::DatabaseValue& value) {
  fields_.at(position).Put(L"Value", value);
}

}  // namespace platform
