#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "jet/sql/query_translator.h"
#include "jet/store/row_spool.h"
#include "jet/store/session.h"
#include "ports/database_types.h"

namespace jet {

using Row = std::vector<ports::DatabaseValue>;

// The rows of a recordset. The set of rows is fixed at the beginning; their values are read in
// blocks when they are needed.
class RowSource {
 public:
  RowSource(std::shared_ptr<Session> session, const sql::SelectPlan& plan);

  std::size_t Count() const { return spool_ ? spool_->Count() : keys_.size(); }
  // Null if the row has been deleted. Valid until the next call.
  const Row* Fetch(std::size_t index);

  // True if the rows are those of a table and may be changed.
  bool IsUpdatable() const { return !plan_.row_sql.empty(); }
  std::int64_t Key(std::size_t index) const { return keys_[index]; }
  void SetKeys(std::vector<std::int64_t> keys) {
    keys_ = std::move(keys);
    block_.clear();
  }
  void Append(std::int64_t key) { keys_.push_back(key); }

 private:
  static constexpr std::size_t kMostAhead = 256;

  void ReadAhead(std::size_t first);
  std::optional<Row> ReadRow(std::int64_t key);
  Row TakeRow(const Statement& statement) const;

  std::shared_ptr<Session> session_;
  const sql::SelectPlan& plan_;
  Statement row_;
  std::optional<RowSpool> spool_;  // for rows that are not those of a table
  std::vector<std::int64_t> keys_;
  std::vector<std::optional<Row>> block_;  // rows from block_start_ on
  std::size_t block_start_ = 0;
  std::size_t ahead_ = kMostAhead;
  std::int64_t changes_seen_ = 0;
};

}  // namespace jet
