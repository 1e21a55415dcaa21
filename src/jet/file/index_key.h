#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "jet/file/row_packer.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// Makes the keys of one index: bytes whose unsigned order is the order of the index.
class IndexKey {
 public:
  // The table must outlive the key maker.
  IndexKey(const TableLayout& table, const IndexLayout& index);

  // False when the index has no entry for such a row. A memo's value is needed up to the characters
  // that count, and not its reference.
  bool Make(StoredValues values, std::string& key) const;

  // Places in TableLayout::columns of the columns that the key is made of.
  std::vector<std::size_t> Places() const;

 private:
  struct Part {
    std::size_t place;
    bool is_descending;
  };

  const TableLayout* table_;
  std::vector<Part> parts_;
  bool ignores_nulls_;
};

}  // namespace jet::file
