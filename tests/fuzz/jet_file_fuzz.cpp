#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "jet/errors.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/database_writer.h"
#include "tests/fakes/memory_page_file.h"

// Feeds the reader of Jet 4 files: lists a file, reads every value and checks it. A file without a
// fault is written anew, and has to be without one again, with as many rows in each table.
namespace {

namespace file = jet::file;
using tests::MemoryPageFile;

// Nothing but the numbers of a damaged or foreign file may come out.
void Expect(const ports::DatabaseError& error) {
  const bool is_known = error.Number == jet::kUnknownFormat ||
                        error.Number == jet::kInvalidPassword ||
                        error.Number == jet::kDatabaseDamaged;
  if (!is_known) __builtin_trap();
}

void ReadTable(file::DatabaseReader& reader, const file::CatalogueObject& object) {
  try {
    static_cast<void>(reader.Properties(object));
    const file::TableLayout table = reader.Definition(object);
    file::TableRows rows = reader.Rows(table);
    while (rows.Next()) {
      for (const file::ColumnLayout& column : table.columns)
        static_cast<void>(rows.Value(column));
    }
  } catch (const ports::DatabaseError& error) {
    Expect(error);
  }
}

void Rewrite(file::DatabaseReader& reader, const file::CheckReport& report) {
  if (!reader.ForeignObjects().empty()) return;
  const auto target = std::make_shared<MemoryPageFile>();
  try {
    file::DatabaseWriter writer({target, "/tmp/jet_file_fuzz"}, reader);
    writer.CopyAll(file::Copying::kAsItStands);
    writer.Finish();
  } catch (const ports::DatabaseError&) {
    return;  // what a reader believes may exceed what is ever written
  }
  const file::CheckReport again = file::CheckDatabase(target, "b.mdb");
  if (!again.IsClean()) __builtin_trap();
  std::size_t matched = 0;
  for (const file::CheckedTable& table : report.tables) {
    for (const file::CheckedTable& copy : again.tables) {
      if (table.is_system || copy.name != table.name) continue;
      if (copy.row_count != table.row_count) __builtin_trap();
      ++matched;
      break;
    }
    if (table.is_system) ++matched;
  }
  if (matched != report.tables.size()) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto memory =
      std::make_shared<MemoryPageFile>(std::string(reinterpret_cast<const char*>(data), size));
  try {
    file::DatabaseReader reader(memory, "a.mdb");
    for (const file::CatalogueObject& object : reader.Objects()) {
      if (file::IsStoredTable(object)) ReadTable(reader, object);
    }
    static_cast<void>(reader.Relations());
    const file::CheckReport report = file::CheckDatabase(memory, "a.mdb");
    if (report.IsClean()) Rewrite(reader, report);
  } catch (const ports::DatabaseError& error) {
    Expect(error);
  }
  return 0;
}
