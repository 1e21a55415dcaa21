#include <algorithm>
#include <set>

#include "jet/errors.h"
#include "jet/file/layout_limits.h"
#include "jet/file/packed_text.h"
#include "jet/file/relation_indexes.h"
#include "tests/jet/file/written_file.h"

namespace {

using namespace tests;
using namespace jet::file;
namespace flags = definition::real_index;

// Bytes before compression, around the borders between the three ways of storing a long value.
constexpr std::size_t kLongLengths[] = {0,    2,    62,   64,   66,   1024, 3814, 3816, 3818,
                                        3980, 4072, 4074, 4076, 8144, 8146, 8152, 30000};

std::string RandomValue(Dice& dice, const ColumnLayout& column) {
  switch (column.type) {
    case ColumnType::kBoolean:
      return std::string(1, static_cast<char>(dice.Below(2)));
    case ColumnType::kText:
      return PackText(dice.Text(dice.Below(column.size / 2U + 1)), dice.OneIn(2));
    case ColumnType::kMemo:
      return PackMemo(dice.Text(dice.Of(kLongLengths) / 2), dice.OneIn(2));
    case ColumnType::kOle:
      return dice.Bytes(dice.Of(kLongLengths) + dice.Below(2));
    case ColumnType::kBinary:
      return dice.Bytes(dice.Below(column.size + std::size_t{1}));
    case ColumnType::kNumeric:
      return std::string(1, static_cast<char>(dice.OneIn(2) ? 0x80 : 0)) + dice.Bytes(16);
    default:
      return dice.Bytes(column.size);
  }
}

NewTable RandomTable(Dice& dice, const std::string& name, std::size_t row_count) {
  static constexpr ColumnType kTypes[] = {
      ColumnType::kBoolean,  ColumnType::kByte,   ColumnType::kInteger, ColumnType::kLong,
      ColumnType::kCurrency, ColumnType::kSingle, ColumnType::kDouble,  ColumnType::kDate,
      ColumnType::kBinary,   ColumnType::kText,   ColumnType::kOle,     ColumnType::kMemo,
      ColumnType::kGuid,     ColumnType::kNumeric};
  std::vector<ColumnLayout> columns;
  const std::size_t column_count = 1 + dice.Below(20);
  for (std::size_t i = 0; i < column_count; ++i)
    columns.push_back(Column("Поле " + std::to_string(i), dice.Of(kTypes),
                             static_cast<std::uint16_t>(2 + 2 * dice.Below(60))));
  NewTable table = TableOf(name, columns);
  for (std::size_t i = dice.Below(4); i > 0; --i) {
    std::vector<KeyColumn> key;
    for (std::size_t k = 1 + dice.Below(3); k > 0; --k) {
      const ColumnLayout& column =
          dice.OneIn(2) ? columns.front() : columns[dice.Below(columns.size())];
      const auto place = static_cast<std::uint16_t>(&column - columns.data());
      if (column.type != ColumnType::kOle) key.push_back({place, dice.OneIn(2)});
    }
    if (key.empty()) continue;
    AddIndex(table.layout, "Индекс " + std::to_string(i), key,
             dice.OneIn(2) ? flags::kIgnoreNulls : std::uint8_t{0});
  }
  for (std::size_t i = 0; i < row_count; ++i) {
    StoredRow row;
    for (const ColumnLayout& column : columns) {
      const bool is_null = column.type != ColumnType::kBoolean && dice.OneIn(4);
      row.push_back(is_null ? std::nullopt : std::optional(RandomValue(dice, column)));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

TEST(JetFileWriter, RandomTablesComeBackAsTheyWereWritten) {
  for (unsigned seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    std::vector<NewTable> tables;
    for (const std::size_t row_count : {std::size_t{0}, std::size_t{1}, 20 + dice.Below(150)})
      tables.push_back(RandomTable(dice, "Таблица " + std::to_string(row_count), row_count));
    const std::string bytes = Written(tables);
    ExpectSound(bytes);
    DatabaseReader reader = OpenWritten(bytes);
    for (const NewTable& table : tables)
      EXPECT_TRUE(RowsOf(reader, table.name) == table.rows) << table.name;
    const std::string copy = Copied(reader, Copying::kAsItStands);
    ExpectSound(copy);
    DatabaseReader copied = OpenWritten(copy);
    for (const NewTable& table : tables)
      EXPECT_TRUE(RowsOf(copied, table.name) == table.rows) << table.name;
    EXPECT_TRUE(Copied(copied, Copying::kAsItStands) == copy);
  }
}

TEST(JetFileWriter, TheWayOfALongValueFollowsItsLengthBeforeCompression) {
  struct Case {
    std::size_t length;  // of the text in UTF-16
    LongValueForm form;
  };
  constexpr Case kCases[] = {
      {0, LongValueForm::kInline},     {64, LongValueForm::kInline},
      {66, LongValueForm::kSingleRow}, {3816, LongValueForm::kSingleRow},
      {3818, LongValueForm::kChain},   {4072, LongValueForm::kChain},
      {4074, LongValueForm::kChain},   {8152, LongValueForm::kChain},
  };
  for (const bool may_compress : {false, true}) {
    NewTable table = TableOf("T", {Column("M", ColumnType::kMemo)});
    for (const Case& each : kCases)
      table.rows.push_back({PackMemo(std::string(each.length / 2, 'x'), may_compress)});
    const std::string bytes = Written({table});
    ExpectSound(bytes);
    DatabaseReader reader = OpenWritten(bytes);
    const TableLayout layout = reader.Definition(*reader.FindTable("T"));
    TableCursor cursor(reader.Pages(), layout);
    for (const Case& each : kCases) {
      ASSERT_TRUE(cursor.Next());
      const ByteView stored(0, *cursor.Row().Stored(layout.columns[0]));
      EXPECT_EQ(LongValueReference::Parse(stored).form, each.form) << each.length;
      const std::string value = ReadLongValue(reader.Pages(), stored);
      const bool is_compressed = value.starts_with("\xFF\xFE");
      EXPECT_EQ(is_compressed, may_compress && each.length > 0 && each.length <= 3816);
    }
  }
}

TEST(JetFileWriter, ATableOfBooleansKeepsItsBitsAndNoMoreThan255RowsAPage) {
  for (const std::size_t count :
       {std::size_t{1}, std::size_t{8}, std::size_t{9}, std::size_t{255}}) {
    std::vector<ColumnLayout> columns;
    for (std::size_t i = 0; i < count; ++i)
      columns.push_back(Column("B" + std::to_string(i), ColumnType::kBoolean));
    NewTable table = TableOf("T", columns);
    for (std::size_t row = 0; row < 600; ++row) {
      table.rows.emplace_back();
      for (std::size_t i = 0; i < count; ++i)
        table.rows.back().emplace_back(std::string(1, static_cast<char>((row >> (i % 10)) & 1U)));
    }
    const std::string bytes = Written({table});
    ExpectSound(bytes);
    DatabaseReader reader = OpenWritten(bytes);
    EXPECT_TRUE(RowsOf(reader, "T") == table.rows) << count;
  }
}

TEST(JetFileWriter, RefusesWhatTheFormatsOwnEngineWouldNotOpen) {
  const auto judged = [](NewTable table) {
    return ErrorOf([&table] { JudgeLayout(table.name, table.layout); });
  };
  const auto named = [](const std::string& table, const std::string& column) {
    return TableOf(table, {Column(column, ColumnType::kLong)});
  };
  const std::string longest(64, 'n');
  EXPECT_EQ(judged(named(longest, longest)), 0);
  EXPECT_EQ(judged(named(longest + "n", "C")), jet::kInvalidName);
  EXPECT_EQ(judged(named("T", longest + "n")), jet::kInvalidName);
  EXPECT_EQ(judged(named("T", "")), jet::kInvalidName);

  const auto columns = [](std::size_t count, ColumnType type, std::uint16_t size) {
    std::vector<ColumnLayout> made;
    for (std::size_t i = 0; i < count; ++i)
      made.push_back(Column("C" + std::to_string(i), type, size));
    return TableOf("T", made);
  };
  EXPECT_EQ(judged(columns(255, ColumnType::kByte, 0)), 0);
  EXPECT_EQ(judged(columns(256, ColumnType::kByte, 0)), jet::kTooManyFields);
  EXPECT_EQ(judged(columns(1, ColumnType::kText, 510)), 0);
  EXPECT_EQ(judged(columns(1, ColumnType::kText, 512)), jet::kFieldTooSmall);
  EXPECT_EQ(judged(columns(1, ColumnType::kBinary, 510)), 0);
  EXPECT_EQ(judged(columns(1, ColumnType::kBinary, 511)), jet::kFieldTooSmall);
  // 2 for the count, 4 where variable columns would be described, 1 for the null mask.
  EXPECT_EQ(judged(columns(1, ColumnType::kWideBinary, 4060 - 7)), 0);
  EXPECT_EQ(judged(columns(1, ColumnType::kWideBinary, 4061 - 7)), jet::kRecordTooLong);

  const auto indexed = [&columns](std::size_t indexes, std::size_t parts) {
    NewTable table = columns(12, ColumnType::kLong, 0);
    std::vector<KeyColumn> key;
    for (std::size_t i = 0; i < parts; ++i)
      key.push_back({static_cast<std::uint16_t>(i), false});
    for (std::size_t i = 0; i < indexes; ++i)
      AddIndex(table.layout, "I" + std::to_string(i), key, 0);
    return table;
  };
  EXPECT_EQ(judged(indexed(32, 10)), 0);
  EXPECT_EQ(judged(indexed(1, 11)), jet::kTooManyIndexFields);
  EXPECT_EQ(judged(indexed(33, 1)), jet::kTooManyIndexes);

  // Values may make a record too long although its table is not too wide.
  const auto written = [&columns](std::size_t more) {
    NewTable table = columns(8, ColumnType::kBinary, 510);
    // 2 for the count, 8 offsets with their end and count, 1 for the null mask.
    constexpr std::size_t kOverhead = 2 + 2 * 10 + 1;
    table.rows.push_back(StoredRow(8, std::string(500, 'b')));
    table.rows[0][0] = std::string(4060 - kOverhead - 7 * 500 + more, 'b');
    return ErrorOf([&table] { Written({table}); });
  };
  EXPECT_EQ(written(0), 0);
  EXPECT_EQ(written(1), jet::kRecordTooLong);
}

Relation RelationOf(const std::string& name, const std::string& table, const std::string& column,
                    std::uint32_t relation_flags = 0) {
  return {name, relation_flags, table, "Отделы", {{column, "Код"}}};
}

TEST(JetFileWriter, RelationsStandAtBothEnds) {
  NewTable departments =
      TableOf("Отделы", {Column("Код", ColumnType::kLong), Column("Старший", ColumnType::kLong)});
  departments.layout.page = 0x700001;
  AddIndex(departments.layout, "Ключ", {{0, false}}, flags::kUnique | flags::kRequired, true);
  departments.rows = {{StoredNumber(1), std::nullopt}, {StoredNumber(2), StoredNumber(1)}};
  NewTable staff = TableOf("Люди", {Column("Отдел", ColumnType::kLong)});
  staff.layout.page = 0x700002;
  staff.rows = {{StoredNumber(2)}, {StoredNumber(2)}};
  using namespace relation_flags;
  const auto own = RelationOf("СамНаСебя", "Отделы", "Старший");
  const auto other = RelationOf("ЛюдиОтдела", "Люди", "Отдел", kCascadesUpdates);
  AddRelationIndexes(departments.layout, departments.layout, own);
  AddRelationIndexes(staff.layout, departments.layout, other);
  EXPECT_EQ(departments.layout.indexes.size(), 2U) << "the key serves both hidden indexes";

  // The table that is referred to comes last: its place is not known before.
  const std::string bytes = Written({staff, departments}, {own, other});
  ExpectSound(bytes);
  DatabaseReader reader = OpenWritten(bytes);
  EXPECT_EQ(reader.Relations().size(), 2U);
  const TableLayout layout = reader.Definition(*reader.FindTable("Люди"));
  ASSERT_EQ(layout.logical_indexes.size(), 1U);
  const auto& end = layout.logical_indexes[0].relation;
  ASSERT_TRUE(end);
  EXPECT_EQ(end->other_table, reader.FindTable("Отделы")->id);
  EXPECT_TRUE(end->cascades_updates);
  EXPECT_FALSE(end->cascades_deletions);
  const std::string copy = Copied(reader, Copying::kAsItStands);
  ExpectSound(copy);
  EXPECT_EQ(OpenWritten(copy).Relations(), reader.Relations());

  TableLayout without = reader.Definition(*reader.FindTable("Отделы"));
  RemoveRelationIndexes(without);
  EXPECT_EQ(without.logical_indexes.size(), 1U);
  EXPECT_EQ(without.indexes.size(), 1U) << "the tree that only the relation needed";

  EXPECT_EQ(ErrorOf([&] {
              AddRelationIndexes(staff.layout, without,
                                 {"R", 0, "Люди", "Отделы", {{"Отдел", "Старший"}}});
            }),
            jet::kNoUniqueReference);
}

TEST(JetFileWriter, RefusesASourceWithAFormInIt) {
  NewTable table = TableOf("Отделы", {Column("Код", ColumnType::kLong)});
  std::string bytes = Written({table}, {RelationOf("Форма", "Отделы", "Код")});
  {
    DatabaseReader reader = OpenWritten(bytes);
    const auto place = reader.Objects().back().place;
    const DataPage page(reader.Pages().Read(place.page));
    // The type stands behind two numbers of four bytes.
    const std::size_t type = page.At(place.row).offset + record::kFixedPart + 8;
    StoreLittle(bytes.data() + place.page * kPageSize + type, object_type::kForm);
  }
  DatabaseReader source = OpenWritten(bytes);
  EXPECT_EQ(ErrorOf([&] { Copied(source, Copying::kAsItStands); }), jet::kUnknownFormat);
}

TEST(JetFileWriter, TablesOfTheUserDoNotShareThePagesOfTheirMaps) {
  const std::vector<ColumnLayout> columns = {Column("A", ColumnType::kMemo)};
  DatabaseReader reader = OpenWritten(Written({TableOf("T1", columns), TableOf("T2", columns)}));
  std::set<PageNumber> pages;
  for (const char* name : {"T1", "T2"}) {
    const TableLayout layout = reader.Definition(*reader.FindTable(name));
    EXPECT_TRUE(pages.insert(layout.rows_map.page).second);
    EXPECT_EQ(layout.columns[0].long_maps->space.page, layout.rows_map.page);
  }
}

TEST(JetFileWriter, CompactingOrdersRowsByTheKeyAndTakesUnusedNumbersBack) {
  NewTable table = TableOf("T", {Column("Код", ColumnType::kLong), Column("M", ColumnType::kMemo)});
  table.layout.columns[0].flags |= definition::column::kAutonumber;
  AddIndex(table.layout, "Ключ", {{0, false}}, flags::kUnique, true);
  table.layout.last_autonumber = 5000;
  for (std::int32_t i = 600; i > 0; --i)
    table.rows.push_back({StoredNumber(i), std::string(static_cast<std::size_t>(i), 'm')});
  DatabaseReader source = OpenWritten(Written({table}));
  EXPECT_EQ(source.Definition(*source.FindTable("T")).last_autonumber, 5000U);
  const std::string bytes = Copied(source, Copying::kCompacted);
  ExpectSound(bytes);
  DatabaseReader reader = OpenWritten(bytes);
  EXPECT_EQ(reader.Definition(*reader.FindTable("T")).last_autonumber, 600U);
  std::reverse(table.rows.begin(), table.rows.end());
  EXPECT_EQ(RowsOf(reader, "T"), table.rows);
}

TEST(JetFileWriter, ATableMayBeChangedWhileTheRestIsCarried) {
  NewTable first = TableOf("Первая", {Column("A", ColumnType::kLong)});
  first.rows = {{StoredNumber(1)}};
  first.properties = {{properties::kOfColumn, "A", {{"Caption", 10, 0, "x"}}}};
  NewTable second = TableOf("Вторая", {Column("B", ColumnType::kLong)});
  second.rows = {{StoredNumber(2)}};
  DatabaseReader source = OpenWritten(Written({first, second}));

  const auto target = std::make_shared<MemoryPageFile>();
  DatabaseWriter writer({target, "unused"}, source);
  const std::vector<StoredRow> changed = {{StoredNumber(7)}, {StoredNumber(8)}};
  for (const auto& object : source.Objects()) {
    if (object.name == "Первая") {
      RowsAtHand rows(changed);
      auto properties = first.properties;
      properties[0].properties[0].value = "y";
      writer.WriteTable({object.name, source.Definition(object), properties, 46000, &object}, rows);
    } else if (object.name == "Вторая") {
      writer.CopyTable(object, Copying::kAsItStands);
    } else {
      writer.CarryObject(object);
    }
  }
  NewTable third = TableOf("Третья", {Column("C", ColumnType::kLong)});
  RowsAtHand none(third.rows);
  writer.WriteTable({third.name, third.layout, {}, 46000}, none);
  writer.Finish();

  ExpectSound(target->bytes);
  DatabaseReader reader = OpenWritten(target->bytes);
  EXPECT_EQ(RowsOf(reader, "Первая"), changed);
  EXPECT_EQ(RowsOf(reader, "Вторая"), second.rows);
  EXPECT_TRUE(RowsOf(reader, "Третья").empty());
  const auto properties = reader.Properties(*reader.FindTable("Первая"));
  ASSERT_EQ(properties.size(), 1U);
  EXPECT_EQ(properties[0].properties[0].value, "y");
}

}  // namespace
