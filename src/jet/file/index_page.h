#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/page_view.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

// A page of an index, leaf or node, its entries taken apart.
class IndexPage {
 public:
  // Throws Damage when this is no page of an index or its entries contradict each other.
  explicit IndexPage(PageView page);

  const PageView& Page() const { return page_; }
  bool IsLeaf() const { return page_.Kind() == PageKind::kIndexLeaf; }
  PageNumber Previous() const { return page_.Get(index::kPrevious); }
  PageNumber Next() const { return page_.Get(index::kNext); }

  // A node's rightmost child, which no entry of it names.
  PageNumber LastChild() const { return page_.Get(index::kLastChild); }

  std::size_t Size() const { return ends_.size(); }

  // The whole entry: key, row pointer and in a node the child's page.
  std::string Entry(std::size_t entry) const;

  // The children of a node, from left to right.
  std::vector<PageNumber> Children() const;

  // Bytes behind the last entry.
  std::size_t Room() const;

  std::size_t PrefixLength() const { return prefix_.size(); }

 private:
  PageView page_;
  std::string_view prefix_;
  std::vector<std::size_t> ends_;  // offsets on the page
};

// An entry taken apart; both views live as long as its bytes.
struct IndexEntry {
  std::string_view key;
  RowPointer row;

  // Of a leaf's entry, or of a node's without its child.
  static IndexEntry FromLeaf(std::string_view entry);
};

}  // namespace jet::file
