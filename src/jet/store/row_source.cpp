#include "jet/store/row_source.h"

#include <algorithm>
#include <utility>

#include "jet/store/stored_values.h"

namespace jet {
namespace {

using ports::DatabaseValue;

// One read transaction for several statements, so that the file is locked only once.
class ReadScope {
 public:
  explicit ReadScope(Connection& storage) : storage_(storage) { storage_.Run("SAVEPOINT reading"); }
  ReadScope(const ReadScope&) = delete;
  ReadScope& operator=(const ReadScope&) = delete;
  ~ReadScope() {
    try {
      storage_.Run("RELEASE reading");
    } catch (const ports::DatabaseError&) {  // NOLINT(bugprone-empty-catch): reads only
    }
  }

 private:
  Connection& storage_;
};

}  // namespace

RowSource::RowSource(std::shared_ptr<Session> session, const sql::SelectPlan& plan)
    : session_(std::move(session)), plan_(plan) {
  session_->RestoreRows();
  if (!IsUpdatable()) {
    Statement rows(session_->SharedStorage(), plan_.rows_sql);
    spool_.emplace(rows);
    return;
  }
  Statement keys(session_->SharedStorage(), plan_.keys_sql);
  while (keys.Step())
    keys_.push_back(keys.Integer(0));
  keys.Reset();
  row_ = Statement(session_->SharedStorage(), plan_.row_sql);
}

Row RowSource::TakeRow(const Statement& statement) const {
  Row row;
  row.reserve(plan_.columns.size());
  int column = 0;
  for (const sql::OutputColumn& output : plan_.columns) {
    // Booleans are Null only in rows missing from an outer join.
    const bool is_lacking = spool_ && statement.IsNull(column);
    row.push_back(is_lacking ? DatabaseValue(ports::NullValue{})
                  : output.field != nullptr
                      ? ReadStored(statement, column, output.field->definition.type)
                      : ReadComputed(statement, column, output.type));
    ++column;
  }
  return row;
}

std::optional<Row> RowSource::ReadRow(std::int64_t key) {
  row_.Bind(1, key);
  std::optional<Row> row;
  if (row_.Step()) row = TakeRow(row_);
  row_.Reset();
  return row;
}

// Nothing is read ahead while rows are changed in between, because each change would invalidate the
// block.
void RowSource::ReadAhead(std::size_t first) {
  const std::int64_t changes = session_->ChangeCount();
  session_->RestoreRows();
  ahead_ = changes != changes_seen_ ? 1 : std::min(kMostAhead, ahead_ * 2);
  changes_seen_ = changes;
  block_.clear();
  block_start_ = first;
  const std::size_t end = std::min(first + ahead_, Count());
  const ReadScope scope(session_->Storage());
  for (std::size_t i = first; i < end; ++i)
    block_.push_back(spool_ ? TakeRow(spool_->Row(i)) : ReadRow(keys_[i]));
}

const Row* RowSource::Fetch(std::size_t index) {
  const bool is_held = index >= block_start_ && index < block_start_ + block_.size() &&
                       (spool_ || session_->ChangeCount() == changes_seen_);
  if (!is_held) ReadAhead(index);
  const std::optional<Row>& row = block_[index - block_start_];
  return row ? &*row : nullptr;
}

}  // namespace jet
