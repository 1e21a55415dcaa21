#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ports/database.h"

namespace tmw {

// How many rows the tables of a database must have.
class RowCounts {
 public:
  void Expect(const std::string& table, std::int64_t rows) { expected_.push_back({table, rows}); }

  // Reports the first table that differs, with both numbers, and returns false.
  bool Check(ports::Database& database) const;

 private:
  struct Expectation {
    std::string table;
    std::int64_t rows;
  };
  std::vector<Expectation> expected_;
};

}  // namespace tmw
