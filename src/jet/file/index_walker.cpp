#include "jet/file/index_walker.h"

namespace jet::file {

IndexWalker::IndexWalker(PageSource& source, const TableLayout& table, const IndexLayout& index)
    : source_(&source), owner_(table.page), pages_left_(source.PageCount()) {
  Descend(index.root, table.page);
}

void IndexWalker::Descend(PageNumber page, PageNumber from) {
  for (;;) {
    // A tree has no more pages than the file.
    if (pages_left_ == 0 || levels_.size() > limits::kTreeDepth)
      throw Damage(from, texts::kDeepIndex);
    --pages_left_;
    const PageView view = source_->Read(page, from);
    IndexPage taken(view);
    view.ExpectOwner(owner_);
    if (taken.IsLeaf()) {
      leaf_.emplace(taken);
      next_entry_ = 0;
      return;
    }
    levels_.push_back({taken.Children(), 0});
    if (levels_.back().children.empty()) view.Fail(texts::kBadIndexPage);
    from = page;
    page = levels_.back().children[levels_.back().next++];
  }
}

bool IndexWalker::NextLeaf() {
  while (!levels_.empty() && levels_.back().next == levels_.back().children.size())
    levels_.pop_back();
  if (levels_.empty()) return false;
  Level& level = levels_.back();
  Descend(level.children[level.next++], leaf_->Page().Page());
  return true;
}

bool IndexWalker::Next() {
  while (next_entry_ == leaf_->Size()) {
    if (!NextLeaf()) return false;
  }
  entry_ = leaf_->Entry(next_entry_++);
  return true;
}

}  // namespace jet::file
