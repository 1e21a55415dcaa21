#pragma once

#include <string>

#include "jet/file/page_census.h"
#include "jet/file/row_set.h"
#include "jet/file/table_layout.h"

namespace jet::file {

// The long values of one column: every piece is part of exactly one value.
class LongValueCheck {
 public:
  LongValueCheck(CheckContext& context, std::string name, PageNumber definition);

  // Claims the pages that the column's map names and notes the pieces on them.
  void Collect(const LongColumnMaps& maps);

  // Follows one reference of a record.
  void Use(ByteView stored);

  // Reports pieces that no value uses.
  void Finish();

 private:
  void CollectPage(PageNumber page);

  CheckContext& context_;
  std::string name_;
  PageNumber definition_;
  PageCensus::Owner owner_;
  RowSet pieces_;
};

}  // namespace jet::file
