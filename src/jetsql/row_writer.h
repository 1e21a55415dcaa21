#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/string_accumulator.h"
#include "ports/database.h"
#include "tools/command_line.h"

namespace jetsql {

enum class Mode {
  kTable,      // aligned columns
  kTabs,       // tabs between the values; tabs, line breaks and "\" in them as \t, \n, \r and "\\"
  kCsv,        // RFC 4180; Null is nothing, an empty text ""
  kJson,       // an array of objects
  kLines,      // a line for each value, a blank one between rows
  kTableText,  // values as table texts have them, tabs between them
};

struct RowFormat {
  Mode mode = Mode::kTabs;
  bool has_header = true;
};

// The options that choose a format, and what they choose: without them a table on a terminal, tabs
// elsewhere; --json is the mode json.
const tools::Option& ModeOption();
const tools::Option& HeaderOption();
const tools::Option& NoHeaderOption();
RowFormat FormatOf(const tools::Arguments& arguments);
std::optional<Mode> ModeOf(const tools::Arguments& arguments);

// Writes rows one by one. Begin comes first, End last, also when there are no rows.
class RowWriter {
 public:
  virtual ~RowWriter() = default;
  virtual void Begin(const std::vector<std::string>& names) = 0;
  virtual void Row(const std::vector<ports::DatabaseValue>& values) = 0;
  virtual void End() {}
};

std::unique_ptr<RowWriter> MakeRowWriter(const RowFormat& format, tmw::StringAccumulator& text);

// All rows; returns their number.
std::uint64_t WriteRows(ports::DatabaseRecordset& rows, RowWriter& writer);

}  // namespace jetsql
