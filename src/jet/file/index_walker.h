#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "jet/file/index_page.h"
#include "jet/file/page_source.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// The entries of an index in its order, from leaf to leaf through the tree.
class IndexWalker {
 public:
  // The source must outlive the walker.
  IndexWalker(PageSource& source, const TableLayout& table, const IndexLayout& index);

  // Steps to the next entry; false behind the last one. Throws Damage, also when the tree leads
  // back into itself.
  bool Next();

  // Valid until the next step.
  IndexEntry Entry() const { return IndexEntry::FromLeaf(entry_); }

 private:
  struct Level {
    std::vector<PageNumber> children;
    std::size_t next = 0;
  };

  void Descend(PageNumber page, PageNumber from);
  bool NextLeaf();

  PageSource* source_;
  PageNumber owner_;
  PageNumber pages_left_;
  std::vector<Level> levels_;
  std::optional<IndexPage> leaf_;
  std::size_t next_entry_ = 0;
  std::string entry_;
};

}  // namespace jet::file
