#include <algorithm>

#include "jet/errors.h"
#include "jet/file/index_walker.h"
#include "jet/file/packed_text.h"
#include "tests/jet/file/written_file.h"
#include "tests/support/sandbox.h"

// Files whose trees and maps are large, and disks that are too small.
namespace {

using namespace tests;
using namespace jet::file;
namespace flags = definition::real_index;

// The height of the tree's root.
int HeightOf(DatabaseReader& reader, const IndexLayout& index) {
  return reader.Pages().Read(index.root).Get(index::kHeight);
}

TEST(JetLargeFiles, KeysOf255CharactersAndSharedBeginningsMakeDeepTreesInOrder) {
  NewTable table =
      TableOf("T", {Column("К", ColumnType::kText, 510), Column("Д", ColumnType::kLong)});
  AddIndex(table.layout, "Вверх", {{0, false}, {1, false}}, 0);
  AddIndex(table.layout, "Вниз", {{0, true}, {1, true}}, flags::kUnique, true);
  Dice dice(7);
  for (std::int32_t i = 0; i < 3000; ++i) {
    // The beginnings that rows share are long, short, or the whole text.
    const std::size_t differing = dice.Below(200);
    const std::string text = std::string(255 - differing, 'x') + std::string(differing, 'y');
    table.rows.push_back({PackText(text, true), StoredNumber(i)});
  }
  const std::string bytes = Written({table});
  ExpectSound(bytes);
  DatabaseReader reader = OpenWritten(bytes);
  const TableLayout layout = reader.Definition(*reader.FindTable("T"));
  for (const IndexLayout& index : layout.indexes) {
    EXPECT_GE(HeightOf(reader, index), 2);
    IndexWalker walker(reader.Pages(), layout, index);
    std::string last;
    std::size_t count = 0;
    for (; walker.Next(); ++count) {
      EXPECT_LT(last, walker.Entry().key);
      last = walker.Entry().key;
    }
    EXPECT_EQ(count, table.rows.size());
    EXPECT_EQ(index.entry_statistics, table.rows.size());
  }
}

// A row fills a page.
NewTable WideTable(std::size_t rows) {
  std::vector<ColumnLayout> columns;
  for (int i = 0; i < 8; ++i)
    columns.push_back(Column("B" + std::to_string(i), ColumnType::kBinary, 500));
  NewTable table = TableOf("Широкая", columns);
  StoredRow row(8, std::string(490, '\7'));
  table.rows.assign(rows, row);
  return table;
}

TEST(JetLargeFiles, MapsReachOverEveryPageOfSmallAndLargeFiles) {
  // Around the borders of a map in its first length, one that has grown, and one of references.
  for (const std::size_t pages : {480U, 512U, 513U, 8170U, 8192U, 8200U}) {
    NewTable small = TableOf("Малая", {Column("M", ColumnType::kMemo)});
    AddIndex(small.layout, "И", {{0, false}}, 0);
    small.rows = {{PackMemo(std::string(5000, 'm'), false)}};
    NewTable wide = WideTable(pages - 30);
    for (std::size_t i = pages - 30; i <= pages + 2; i += 4) {
      wide.rows.resize(i, wide.rows.front());
      const std::string bytes = Written({wide, small});
      ExpectSound(bytes);
      DatabaseReader reader = OpenWritten(bytes);
      EXPECT_EQ(RowsOf(reader, "Малая"), small.rows);
      if (pages > 1000) break;
    }
  }
}

TEST(JetLargeFiles, AFileOfMoreThan32736PagesIsSound) {
  const std::string bytes = Written({WideTable(32800)});
  EXPECT_GT(bytes.size() / kPageSize, 32736U);
  ExpectSound(bytes);
}

TEST(JetLargeFiles, AWriteThatFailsLeavesNoDatabase) {
  const std::vector<NewTable> tables = {WideTable(200)};
  const std::string whole = Written(tables);
  std::size_t failures = 0;
  for (std::size_t operations = 0;; ++operations) {
    const auto target = std::make_shared<MemoryPageFile>();
    target->operations_left = operations;
    const std::int32_t error = ErrorOf([&] { WriteTo(target, tables); });
    if (error == 0) {
      EXPECT_EQ(target->bytes, whole);
      break;
    }
    EXPECT_EQ(error, jet::kDiskError);
    ++failures;
    // The last operation only brings to the disk what is complete already.
    if (target->bytes == whole) continue;
    EXPECT_EQ(ErrorOf([&] { OpenWritten(target->bytes); }), jet::kUnknownFormat);
  }
  EXPECT_GT(failures, 4U);

  const auto full = std::make_shared<MemoryPageFile>();
  full->writable_bytes = whole.size() / 2;
  EXPECT_EQ(ErrorOf([&] { WriteTo(full, tables); }), jet::kDiskFull);
}

TEST(JetLargeFiles, SortsMoreKeysThanFitIntoMemory) {
  const Sandbox sandbox;
  ScratchFile scratch(sandbox.Path("keys"));
  KeySorter sorter(20000, scratch);
  Dice dice(3);
  std::vector<std::string> keys;
  for (int i = 0; i < 5000; ++i) {
    keys.push_back("\x7F\x80" + dice.Bytes(dice.Below(12)));
    sorter.Add(keys.back());
  }
  EXPECT_TRUE(sandbox.Has("keys"));
  sorter.Sort();
  std::sort(keys.begin(), keys.end());
  std::string_view key;
  for (const std::string& expected : keys) {
    ASSERT_TRUE(sorter.Next(key));
    EXPECT_EQ(key, expected);
  }
  EXPECT_FALSE(sorter.Next(key));
}

}  // namespace
