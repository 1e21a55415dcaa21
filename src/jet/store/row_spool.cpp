#include "jet/store/row_spool.h"

#include <sqlite3.h>

#include <string>

#include "jet/errors.h"

namespace jet {

RowSpool::RowSpool(Statement& rows) {
  file_->Open();
  const int columns = sqlite3_column_count(rows.Handle());
  std::string names = "c0";
  std::string parameters = "?";
  for (int i = 1; i < columns; ++i) {
    names += ", c" + std::to_string(i);
    parameters += ", ?";
  }
  file_->Run("BEGIN; CREATE TABLE t(" + names + ")");
  Statement insert(file_, "INSERT INTO t VALUES(" + parameters + ")");
  while (rows.Step()) {
    for (int i = 0; i < columns; ++i)
      sqlite3_bind_value(insert.Handle(), i + 1, sqlite3_column_value(rows.Handle(), i));
    insert.Run();
    ++count_;
  }
  rows.Reset();
  read_ = Statement(file_, "SELECT * FROM t WHERE rowid = ?1");
}

const Statement& RowSpool::Row(std::size_t index) {
  read_.Reset();
  read_.Bind(1, static_cast<std::int64_t>(index) + 1);
  if (!read_.Step()) Fail(kDiskError);
  return read_;
}

}  // namespace jet
