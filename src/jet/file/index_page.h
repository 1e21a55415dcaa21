#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/page_buffer.h"
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

// Gathers the entries of one page of an index, in their order.
class IndexPagePacker {
 public:
  // What stands in the head of the page besides.
  struct Head {
    PageNumber owner = 0;
    std::uint8_t height = 0;  // 0 for a leaf
    PageNumber previous = 0;  // leaves
    PageNumber next = 0;
    PageNumber last_child = 0;  // nodes
  };

  // False when the page has no room for the entry. Only entries of leaves may share a beginning.
  bool TryAdd(std::string_view entry, bool may_share);

  std::size_t Size() const { return ends_.size(); }
  std::string_view Last() const { return At(Size() - 1); }
  void RemoveLast();

  PageBuffer Pack(const Head& head) const;
  void Clear();

 private:
  std::string_view At(std::size_t entry) const;

  std::string bytes_;              // of whole entries
  std::vector<std::size_t> ends_;  // of the entries in them
  std::size_t prefix_ = 0;         // 0 while the page holds its entries whole
};

// An entry taken apart; both views live as long as its bytes.
struct IndexEntry {
  std::string_view key;
  RowPointer row;

  // Of a leaf's entry, or of a node's without its child.
  static IndexEntry FromLeaf(std::string_view entry);
};

}  // namespace jet::file
