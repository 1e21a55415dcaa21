#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "jet/sql/query_translator.h"
#include "jet/store/row_spool.h"
#include "jet/store/session.h"
#include "ports/database_types.h"

namespace jet {

using Row = std::vector<ports::DatabaseValue>;

// The rows behind a recordset. The set is fixed when it is opened; values are read when a row is
// asked for, a stretch of rows at a time.
class RowSource {
 public:
  RowSource(std::shared_ptr<Session> session, const sql::SelectPlan& plan);

  std::size_t Count() const { return spool_ ? spool_->Count() : keys_.size(); }
  // Null when the row is no longer there. Valid until the next call.
  const Row* Fetch(std::size_t index);

  // True when rows belong to rows of a table and may be changed.
  bool IsUpdatable() const { return !plan_.row_sql.empty(); }
  std::int64_t Key(std::size_t index) const { return keys_[index]; }
  void Append(std::int64_t key) { keys_.push_back(key); }

 private:
  static constexpr std::size_t kMostAhead = 256;

  void ReadAhead(std::size_t first);
  std::optional<Row> ReadRow(std::int64_t key);
  Row TakeRow(const Statement& statement) const;

  std::shared_ptr<Session> session_;
  const sql::SelectPlan& plan_;
  Statement row_;
  std::optional<RowSpool> spool_;  // rows that are not a table's, as they were at the beginning
  std::vector<std::int64_t> keys_;
  std::vector<std::optional<Row>> block_;  // of rows from block_start_ on
  std::size_t block_start_ = 0;
  std::size_t ahead_ = kMostAhead;
  std::int64_t changes_seen_ = 0;
};

}  // namespace jet
