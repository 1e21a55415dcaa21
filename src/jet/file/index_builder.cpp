#include "jet/file/index_builder.h"

#include <utility>

namespace jet::file {
namespace {

std::string NodeEntry(std::string_view greatest, PageNumber child) {
  std::string entry(greatest);
  AppendBig(entry, child);
  return entry;
}

}  // namespace

IndexBuilder::IndexBuilder(PageSink& sink, PageNumber owner, PageNumber root)
    : sink_(&sink), owner_(owner), root_(root) {
  pages_.Add(root);
}

PageNumber IndexBuilder::Reserve() {
  const PageNumber page = sink_->Reserve();
  pages_.Add(page);
  return page;
}

void IndexBuilder::Add(std::string_view entry) {
  Level& leaf = levels_.front();
  if (!leaf.entries.TryAdd(entry, true)) {
    if (leaf.page == 0) leaf.page = Reserve();
    const PageNumber page = leaf.page;
    const PageNumber next = Reserve();
    const std::string greatest(leaf.entries.Last());
    CloseLeaf(page, next);
    // May make levels_ grow: the leaf is not used afterwards.
    AddChild(1, page, greatest);
    levels_.front().entries.TryAdd(entry, true);
  }
  const std::string_view key = entry.substr(0, entry.size() - index::kPointerWidth);
  if (distinct_keys_ == 0 || key != last_key_) {
    ++distinct_keys_;
    last_key_ = key;
  }
}

void IndexBuilder::CloseLeaf(PageNumber page, PageNumber next) {
  Level& leaf = levels_.front();
  IndexPagePacker::Head head;
  head.owner = owner_;
  head.previous = leaf.previous;
  head.next = next;
  sink_->Put(page, leaf.entries.Pack(head));
  leaf.entries.Clear();
  leaf.previous = page;
  leaf.page = next;
}

void IndexBuilder::AddChild(std::size_t height, PageNumber child, std::string_view greatest) {
  if (levels_.size() == height) levels_.emplace_back();
  Level* node = &levels_[height];
  if (node->last_child != 0) {
    const std::string entry = NodeEntry(node->last_entry, node->last_child);
    if (!node->entries.TryAdd(entry, false)) {
      // The full node's last entry becomes its rightmost child, so that the next node has two.
      std::string full_greatest = std::exchange(node->last_entry, {});
      const bool has_two = node->entries.Size() > 1;
      if (has_two) {
        const std::string_view last = node->entries.Last();
        const std::size_t end = last.size() - index::kPointerWidth;
        full_greatest = last.substr(0, end);
        node->last_child = LoadBig<PageNumber>(last.data() + end);
        node->entries.RemoveLast();
      }
      const PageNumber page = Reserve();
      CloseNode(height, page);
      AddChild(height + 1, page, full_greatest);
      node = &levels_[height];
      if (has_two) node->entries.TryAdd(entry, false);
    }
  }
  node->last_child = child;
  node->last_entry = greatest;
}

void IndexBuilder::CloseNode(std::size_t height, PageNumber page) {
  Level& node = levels_[height];
  IndexPagePacker::Head head;
  head.owner = owner_;
  head.height = static_cast<std::uint8_t>(height);
  head.last_child = node.last_child;
  sink_->Put(page, node.entries.Pack(head));
  node.entries.Clear();
}

void IndexBuilder::Finish() {
  if (levels_.size() == 1) {
    CloseLeaf(root_, 0);
    return;
  }
  const PageNumber leaf = levels_.front().page;
  const std::string greatest(levels_.front().entries.Last());
  CloseLeaf(leaf, 0);
  AddChild(1, leaf, greatest);
  for (std::size_t height = 1; height + 1 < levels_.size(); ++height) {
    const PageNumber page = Reserve();
    const std::string last_entry = levels_[height].last_entry;
    CloseNode(height, page);
    AddChild(height + 1, page, last_entry);
  }
  CloseNode(levels_.size() - 1, root_);
}

}  // namespace jet::file
