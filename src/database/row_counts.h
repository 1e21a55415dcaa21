#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "database/build_events.h"
#include "ports/database.h"

namespace tmw {

// How many rows the tables of a database must have.
class RowCounts {
 public:
  void Expect(const std::string& table, std::int64_t rows) { expected_.push_back({table, rows}); }

  // False when a table differs: the user has been told which, and both numbers.
  bool Check(ports::Database& database, BuildEvents& events) const;

 private:
  struct Expectation {
    std::string table;
    std::int64_t rows;
  };
  std::vector<Expectation> expected_;
};

}  // namespace tmw
