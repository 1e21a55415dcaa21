#pragma once

#include <optional>
#include <string>

#include "jet/file/data_page_packer.h"
#include "jet/file/page_set.h"
#include "jet/file/page_sink.h"
#include "jet/file/row_pointer.h"

namespace jet::file {

// Writes sets of pages as rows of some pages.
class UsageMapPacker {
 public:
  // With a page: the first rows go there, it must have been reserved. The sink must outlive the
  // packer.
  explicit UsageMapPacker(PageSink& sink, std::optional<PageNumber> first_page = std::nullopt);

  // A set that may come to hold any page of the file.
  RowPointer Add(const PageSet& pages);

  // The set of one page, or the empty one.
  RowPointer AddSpace(std::optional<PageNumber> page);

  // Writes the page that was filled last. Nothing may be added afterwards.
  void Finish();

 private:
  RowPointer AddRow(std::string_view row);

  PageSink* sink_;
  std::optional<PageNumber> page_;
  DataPagePacker rows_;
};

// Writes page 1 with the map of the file's free pages: none below the number of pages that the sink
// has handed out when this is done. Page 1 must have been reserved.
void PutFreePages(PageSink& sink);

}  // namespace jet::file
