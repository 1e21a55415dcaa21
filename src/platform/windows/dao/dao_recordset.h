#pragma once

#include <utility>
#include <vector>

#include "platform/windows/dao/dao_object.h"
#include "ports/database.h"

namespace platform {

class DaoRecordset final : public ports::DatabaseRecordset {
 public:
  explicit DaoRecordset(DaoObject recordset);
  DaoRecordset(const DaoRecordset&) = delete;
  DaoRecordset& operator=(const DaoRecordset&) = delete;
  ~DaoRecordset() override;

  void SetIndex(const std::string& name) override { recordset_.Put(L"Index", name); }
  bool AtBeginning() const override;
  bool AtEnd() const override;
  void MoveFirst() override { recordset_.Call(L"MoveFirst"); }
  void MoveLast() override { recordset_.Call(L"MoveLast"); }
  void MoveNext() override { recordset_.Call(L"MoveNext"); }
  void MovePrevious() override { recordset_.Call(L"MovePrevious"); }
  std::vector<std::string> FieldNames() const override { return names_; }
  std::size_t FieldPosition(const std::string& name) const override;
  ports::DatabaseValue Value(std::size_t position) const override;
  void SetValue(std::size_t position, const ports::DatabaseValue& value) override;
  void Edit() override { recordset_.Call(L"Edit"); }
  void AddNew() override { recordset_.Call(L"AddNew"); }
  void Update() override { recordset_.Call(L"Update"); }
  void Delete() override { recordset_.Call(L"Delete"); }

 private:
  DaoObject recordset_;
  std::vector<std::string> names_;
  std::vector<DaoObject> fields_;
};

}  // namespace platform
