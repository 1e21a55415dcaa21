#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "database/db_version.h"
#include "database/structure_difference.h"
#include "database/wu_table_node.h"
#include "publish/faults.h"
#include "publish/manifest.h"
#include "publish/release_source.h"
#include "tools/progress.h"

// Builds the databases of a release from a user's database, as the updater will.
namespace publish {

// A statement that a script allows to fail, and that has failed.
struct PassedOver {
  std::size_t line = 0;  // 0: not known
  std::string sql;
  std::string error;
};

// A script that has run, if only in part.
struct ScriptRun {
  std::string file;  // name without folder
  std::string from;
  std::string to;
  std::size_t statements = 0;
  std::int64_t rows = 0;  // changed
  std::int64_t milliseconds = 0;
  std::vector<PassedOver> passed_over;
};

// A table that has another number of rows afterwards; -1: there is no such table.
struct RowChange {
  std::string table;
  bool is_dictionary = false;
  std::int64_t before = -1;
  std::int64_t after = -1;
};

// A difference between the reference database (left) and what the user gets (right).
struct Deviation {
  tmw::StructureDifference difference;
  // The user's database lacks something or has it otherwise, so that the product may fail. Else it
  // has more than the reference database, or its fields in another order.
  bool is_fault = false;
};

// What a user of one database will get.
struct TriedDatabase {
  std::string file;         // as it was given
  std::string old_version;  // empty if it cannot be read
  std::string new_version;  // empty if the update fails
  std::string failure;      // why it does
  std::int64_t reference_milliseconds = 0;
  std::int64_t working_milliseconds = 0;
  std::vector<std::string> replaced;  // dictionaries
  std::size_t kept = 0;               // dictionaries that are up to date
  std::vector<ScriptRun> scripts;     // in the order in which they ran
  std::vector<RowChange> rows;
  std::int64_t rows_before = 0;  // of all tables together
  std::int64_t rows_after = 0;
  std::vector<Deviation> deviations;
};

// A release's part for the database, in temporary folders.
class Rehearsal {
 public:
  // Unpacks dictionaries, scripts and structures into the scratch folder. What cannot be had is a
  // fault. The source's folder ends with "/" or is empty.
  Rehearsal(ReleaseSource& source, const std::string& folder, const Manifest& manifest,
            std::string scratch, tools::Progress& progress, Faults& faults);

  // Builds the reference and the working database from a copy; the file itself is only read. A
  // failure of the update is a fault, and so is everything that the user would lack afterwards.
  TriedDatabase Try(const std::string& file, tools::Progress& progress, Faults& faults);

 private:
  class Run;

  std::string scratch_;
  tmw::DbVersion target_{};
  std::vector<tmw::WuTableNode> tables_;
};

// Tries several databases, unless there are faults already.
std::vector<TriedDatabase> TryDatabases(const std::vector<std::string>& files,
                                        ReleaseSource& source, const std::string& folder,
                                        const Manifest& manifest, const std::string& scratch,
                                        tools::Progress& progress, Faults& faults);

}  // namespace publish
