#pragma once

#include <cstddef>
#include <memory>

#include "jet/store/sqlite.h"

namespace jet {

// Rows kept for reading in any order: in memory if they are few, otherwise in a temporary file that
// is deleted with the spool.
class RowSpool {
 public:
  // Reads all rows of the statement.
  explicit RowSpool(Statement& rows);

  std::size_t Count() const { return count_; }
  // Has the columns of the statement. Valid until the next call.
  const Statement& Row(std::size_t index);

 private:
  std::shared_ptr<Connection> file_ = std::make_shared<Connection>();
  Statement read_;
  std::size_t count_ = 0;
};

}  // namespace jet
