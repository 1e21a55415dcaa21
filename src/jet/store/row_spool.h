#pragma once

#include <cstddef>
#include <memory>

#include "jet/store/sqlite.h"

namespace jet {

// Rows put aside for reading in any order: in memory as long as they are few, in a temporary file
// that goes with the spool when they are many.
class RowSpool {
 public:
  // Takes all rows of the statement.
  explicit RowSpool(Statement& rows);

  std::size_t Count() const { return count_; }
  // Valid until the next call; the columns are those of the statement.
  const Statement& Row(std::size_t index);

 private:
  std::shared_ptr<Connection> file_ = std::make_shared<Connection>();
  Statement read_;
  std::size_t count_ = 0;
};

}  // namespace jet
