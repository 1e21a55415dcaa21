#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "jet/sql/query_translator.h"
#include "jet/store/row_source.h"
#include "jet/store/session.h"
#include "ports/database.h"

namespace jet {

class Recordset final : public ports::DatabaseRecordset {
 public:
  Recordset(std::shared_ptr<Session> session, sql::SelectPlan plan, ports::RecordsetType type);

  // The rows of those keys, and the place among them, from 1, that is the current one.
  void TakePlace(std::vector<std::int64_t> keys, std::size_t position);

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
  enum class Mode { kBrowse, kEdit, kAdd };
  using Buffer = std::vector<std::optional<ports::DatabaseValue>>;

  void OpenRows();
  void SettleForward();
  bool IsOnRow() const;
  void RequireRow() const;
  void RequireUpdatable() const;
  std::size_t TableField(std::size_t position) const;
  ports::DatabaseValue DefaultValue(const FieldInfo& field) const;
  void InsertBuffer();
  void UpdateBuffer();
  void BindBuffered(Statement& statement, int parameter, std::size_t field);

  std::shared_ptr<Session> session_;
  sql::SelectPlan plan_;
  ports::RecordsetType type_;
  mutable std::optional<RowSource> rows_;  // reads ahead
  // 0 is before the first row.
  std::size_t position_ = 0;
  Mode mode_ = Mode::kBrowse;
  Buffer buffer_;  // by field; unset ones keep their value or get their default
  Statement insert_;
};

}  // namespace jet
