#include <random>

#include "jet/errors.h"
#include "jet/file/checker.h"
#include "jet/file/database_reader.h"
#include "jet/file/index_walker.h"
#include "tests/jet/file/samples.h"

// Files with random faults: whatever they hold, reading and checking ends, and ends with one of the
// numbers that say so.
namespace {

using jet::file::DatabaseReader;

// What a run came to see, so that the faults are known to lie where something is read.
struct Seen {
  std::size_t rows = 0;
  std::size_t long_values = 0;
  std::size_t entries = 0;
  std::size_t refused = 0;
  std::size_t damaged = 0;
};

void ReadRows(DatabaseReader& reader, const jet::file::TableLayout& table, Seen& seen) {
  jet::file::TableRows rows = reader.Rows(table);
  while (rows.Next()) {
    ++seen.rows;
    for (const auto& column : table.columns) {
      static_cast<void>(rows.Value(column));
      if (jet::file::IsLong(column.type)) ++seen.long_values;
    }
  }
}

void WalkIndexes(DatabaseReader& reader, const jet::file::TableLayout& table, Seen& seen) {
  for (const auto& index : table.indexes) {
    try {
      jet::file::IndexWalker walker(reader.Pages(), table, index);
      while (walker.Next())
        ++seen.entries;
    } catch (const jet::file::Damage&) {
      ++seen.damaged;
    }
  }
}

// Calls what may fail with the numbers of a damaged file.
template <typename Action>
void Try(Seen& seen, Action action) {
  try {
    action();
  } catch (const ports::DatabaseError& error) {
    const bool is_refused =
        error.Number == jet::kUnknownFormat || error.Number == jet::kInvalidPassword;
    EXPECT_TRUE(is_refused || error.Number == jet::kDatabaseDamaged) << error.Description;
    ++(is_refused ? seen.refused : seen.damaged);
  }
}

void ReadEverything(const std::shared_ptr<tests::MemoryPageFile>& memory, Seen& seen) {
  Try(seen, [&] {
    DatabaseReader reader(memory, "a.mdb");
    Try(seen, [&] { static_cast<void>(reader.Relations()); });
    for (const auto& object : reader.Objects()) {
      Try(seen, [&] { static_cast<void>(reader.Properties(object)); });
      if (!jet::file::IsStoredTable(object)) continue;
      Try(seen, [&] {
        const auto table = reader.Definition(object);
        WalkIndexes(reader, table, seen);
        ReadRows(reader, table, seen);
      });
    }
    // No page is fetched for ever: tables and their indexes are a few times the file.
    EXPECT_LT(reader.Pages().ReadCount(), 200000U);
  });
  Try(seen, [&] { static_cast<void>(jet::file::CheckDatabase(memory, "a.mdb")); });
}

class JetFileDamage : public tests::JetSamples {};

TEST_F(JetFileDamage, NeverGoesOnForEver) {
  // The beginnings of pages, the slots, definitions and maps are where a fault does most.
  std::mt19937 random(20240229);
  Seen seen;
  for (const char* const name : {"common2v2003.mdb", "compindexv2000.mdb", "overflowv2003.mdb"}) {
    const std::string good = tests::SampleBytes(name);
    for (int round = 0; round < 170; ++round) {
      auto memory = std::make_shared<tests::MemoryPageFile>(good);
      const std::size_t faults = 1 + random() % 4;
      for (std::size_t i = 0; i < faults; ++i) {
        const std::size_t page = random() % (good.size() / jet::file::kPageSize);
        const std::size_t offset =
            random() % 3 == 0 ? random() % jet::file::kPageSize : random() % 96;
        memory->bytes[page * jet::file::kPageSize + offset] = static_cast<char>(random() % 256);
      }
      SCOPED_TRACE(std::string(name) + ", round " + std::to_string(round));
      ReadEverything(memory, seen);
    }
  }
  EXPECT_GT(seen.rows, 100000U);
  EXPECT_GT(seen.long_values, 1000U);
  EXPECT_GT(seen.entries, 10000U);
  EXPECT_GT(seen.refused, 20U);
  EXPECT_GT(seen.damaged, 100U);
}

TEST_F(JetFileDamage, IsNoticedWhereverTheFileIsCut) {
  const std::string good = tests::SampleBytes("compindexv2000.mdb");
  for (std::size_t length = 0; length < good.size(); length += 3001) {
    auto memory = std::make_shared<tests::MemoryPageFile>(good.substr(0, length));
    Seen seen;
    ReadEverything(memory, seen);
    bool is_clean = true;
    Try(seen, [&] { is_clean = jet::file::CheckDatabase(memory, "a.mdb").IsClean(); });
    EXPECT_TRUE(seen.refused + seen.damaged > 0 || !is_clean) << length;
  }
}

}  // namespace
