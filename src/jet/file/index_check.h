#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/index_key.h"
#include "jet/file/index_page.h"
#include "jet/file/page_census.h"
#include "jet/file/row_set.h"
#include "jet/file/table_cursor.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// One tree of keys: its pages, their order and links, and an entry for each row that needs one.
class IndexCheck {
 public:
  // The layouts and the rows must outlive the check.
  IndexCheck(CheckContext& context, std::string name, const TableLayout& table,
             const IndexLayout& index, const RowSet& rows);

  void Run();

 private:
  // Facts of a subtree that the node above compares.
  struct Branch {
    std::string last_entry;  // of its rightmost leaf, without a child's number
    std::size_t height = 0;
  };

  void CheckMap();
  bool CheckTree(PageNumber number, PageNumber from, std::size_t depth, Branch& branch);
  void CheckLeaf(const IndexPage& page, Branch& branch);
  void CheckNode(const IndexPage& page, std::size_t depth, Branch& branch);
  void CheckPageFacts(const IndexPage& page, std::size_t height);
  void CheckEntry(const std::string& entry, PageNumber page);
  // Fills values_ for the key, giving how many of them are Null.
  std::size_t TakeKeyValues(const PlacedRow& placed);
  void CheckRowOfEntry(const IndexEntry& entry, PageNumber page, bool is_repeated);
  void CheckMissingRows();

  CheckContext& context_;
  std::string name_;
  const TableLayout& table_;
  const IndexLayout& index_;
  RowShape shape_;
  const RowSet& rows_;
  RowSet left_;  // rows without an entry so far
  IndexKey key_;
  std::vector<std::size_t> places_;                      // of the key's columns in the table
  std::vector<std::optional<std::string_view>> values_;  // by those places
  std::deque<std::string> long_values_;                  // what some of them refer to
  PageCensus::Owner owner_;
  std::vector<PageNumber> pages_;  // of the tree
  bool is_whole_ = true;           // no part of the tree was given up
  PageNumber last_leaf_ = 0;
  PageNumber expected_leaf_ = 0;  // what the last leaf calls the next one
  std::string last_entry_;
  std::size_t long_keys_ = 0;
};

}  // namespace jet::file
