#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jet/file/row_list.h"
#include "jet/store/recordset.h"
#include "jet/store/session.h"

namespace jet {

// The rows of a table that nobody has used yet, read from the file as long as that holds them: the
// first change, of whatever table, brings the rows into the working store, and the recordset goes
// on there, at the same row.
class FileRecordset final : public ports::DatabaseRecordset {
 public:
  FileRecordset(std::shared_ptr<Session> session, TablePtr table, file::RowList rows);

  void SetIndex(const std::string& name) override;
  bool AtBeginning() const override;
  bool AtEnd() const override;
  void MoveFirst() override;
  void MoveLast() override;
  void MoveNext() override;
  void MovePrevious() override;
  std::vector<std::string> FieldNames() const override;
  std::size_t FieldPosition(const std::string& name) const override;
  ports::DatabaseValue Value(std::size_t position) const override;
  void SetValue(std::size_t position, const ports::DatabaseValue& value) override;
  void Edit() override;
  void AddNew() override;
  void Update() override;
  void Delete() override;

 private:
  Recordset* Stored() const;
  Recordset& MakeStored() const;
  std::size_t Count() const;

  std::shared_ptr<Session> session_;
  TablePtr table_;
  const IndexInfo* index_ = nullptr;
  std::int64_t changes_;
  std::size_t position_ = 1;
  mutable file::RowList rows_;  // lists and reads when it is asked to
  mutable bool is_listed_ = false;
  mutable std::unique_ptr<Recordset> stored_;
  std::vector<const file::ColumnLayout*> columns_;
};

}  // namespace jet
