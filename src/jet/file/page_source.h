#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "jet/file/limits.h"
#include "jet/file/page_view.h"
#include "ports/page_file.h"

namespace jet::file {

// The pages of a file by number, through a small cache. Knows nothing of what is on them.
class PageSource {
 public:
  // 3343 for what cannot be a file of pages, 3043 when the file cannot be read.
  explicit PageSource(std::shared_ptr<ports::PageFile> file);

  // Whole pages that the file had when it was opened.
  PageNumber PageCount() const { return page_count_; }

  // Whether bytes follow the last whole page.
  bool HasTornEnd() const { return has_torn_end_; }

  // Throws Damage, reported for the page from, when the file has no such page; 3043 when it cannot
  // be read.
  PageView Read(PageNumber number, PageNumber from = 0);

  // Pages fetched so far, from the cache or not: a measure of work that needs no clock.
  std::uint64_t ReadCount() const { return read_count_; }

 private:
  struct Entry {
    PageNumber number = 0;
    std::uint64_t last_use = 0;
    std::shared_ptr<const PageBytes> bytes;
  };
  static constexpr std::size_t kWays = 4;
  static constexpr std::size_t kSets = limits::kCachedPages / kWays;

  std::shared_ptr<const PageBytes> Fetch(PageNumber number);

  std::shared_ptr<ports::PageFile> file_;
  PageNumber page_count_ = 0;
  bool has_torn_end_ = false;
  std::uint64_t read_count_ = 0;
  std::array<std::array<Entry, kWays>, kSets> cache_;
};

}  // namespace jet::file
