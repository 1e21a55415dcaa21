#include "database/row_counts.h"

#include "database/database_texts.h"
#include "database/table_lookup.h"
#include "services/message_boxes.h"

namespace tmw {

bool RowCounts::Check(ports::Database& database) const {
  for (const Expectation& expectation : expected_) {
    const std::int64_t found = CountRows(database, expectation.table);
    if (found == expectation.rows) continue;
    DownloadError(database_texts::RowsLost(expectation.table, expectation.rows, found),
                  FailureKind::kScript);
    return false;
  }
  return true;
}

}  // namespace tmw
