#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jet/file/findings.h"
#include "jet/file/page_census.h"
#include "ports/page_file.h"

// The door for checking a file from its first page to its last.
namespace jet::file {

struct CheckedTable {
  std::string name;
  bool is_system = false;
  std::uint64_t row_count = 0;   // rows found
  std::uint64_t page_count = 0;  // all pages that are its own: definition, rows, values, indexes
};

struct CheckReport {
  FindingList findings;
  std::vector<CheckedTable> tables;
  std::uint64_t page_count = 0;
  std::uint64_t free_page_count = 0;

  bool IsClean() const { return findings.FaultCount() == 0; }
};

// Never stops at a fault. Fails like DatabaseReader when the file cannot even be listed; the name
// is for the words of errors. The format has no sums over its pages: a value that was changed into
// another valid one is not found.
CheckReport CheckDatabase(const std::shared_ptr<ports::PageFile>& file,
                          const std::string& file_name, CheckDepth depth = CheckDepth::kWhole);

}  // namespace jet::file
