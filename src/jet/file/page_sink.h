#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "jet/file/limits.h"
#include "jet/file/page_buffer.h"
#include "ports/page_file.h"

namespace jet::file {

// Hands out the page numbers of a new file and takes the pages, in any order; pages that follow
// each other leave in large pieces. Every number handed out must be put before the end.
class PageSink {
 public:
  explicit PageSink(std::shared_ptr<ports::PageFile> file);

  // The next number. 3183 when the file would grow beyond what the format can address.
  PageNumber Reserve();

  // Numbers handed out so far.
  PageNumber PageCount() const { return page_count_; }

  // 3026 when the disk is full, 3043 when the file cannot be written.
  void Put(PageNumber number, const PageBuffer& page);

  // Writes everything that is still held and brings it to the disk.
  void Flush();

 private:
  static constexpr PageNumber kStretch = 64;  // pages that leave together
  static constexpr std::size_t kStretchesHeld = 16;

  struct Stretch {
    std::vector<char> bytes = std::vector<char>(kStretch * kPageSize);
    std::bitset<kStretch> present;
  };
  using Stretches = std::map<PageNumber, Stretch>;  // by page number / kStretch

  void Write(Stretches::iterator stretch);

  std::shared_ptr<ports::PageFile> file_;
  PageNumber page_count_ = 0;
  Stretches stretches_;
};

}  // namespace jet::file
