#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "jet/file/index_page.h"
#include "jet/file/page_set.h"
#include "jet/file/page_sink.h"

namespace jet::file {

// Builds the tree of an index from the leaves up.
class IndexBuilder {
 public:
  // Owner: the table's definition page. The root's page has been reserved. The sink must outlive
  // the builder.
  IndexBuilder(PageSink& sink, PageNumber owner, PageNumber root);

  // Entries (key, then row pointer) come in their order; one must fit a page, see
  // limits::kIndexKeyLength.
  void Add(std::string_view entry);

  // Writes what is left. Nothing may be added afterwards.
  void Finish();

  const PageSet& Pages() const { return pages_; }

  // Keys that differ from the one before them.
  std::uint32_t DistinctKeys() const { return distinct_keys_; }

 private:
  // The page of one height that is being filled.
  struct Level {
    IndexPagePacker entries;
    PageNumber page = 0;        // leaves: reserved already, for the one before names it
    PageNumber previous = 0;    // leaves
    PageNumber last_child = 0;  // nodes: not among the entries yet
    std::string last_entry;     // the greatest entry below that child
  };

  PageNumber Reserve();
  void CloseLeaf(PageNumber page, PageNumber next);
  void AddChild(std::size_t height, PageNumber child, std::string_view greatest);
  void CloseNode(std::size_t height, PageNumber page);

  PageSink* sink_;
  PageNumber owner_;
  PageNumber root_;
  PageSet pages_;
  std::vector<Level> levels_{1};
  std::string last_key_;
  std::uint32_t distinct_keys_ = 0;
};

}  // namespace jet::file
