#include <algorithm>
#include <sstream>

#include "foundation/encodings.h"
#include "jet/file/packed_text.h"
#include "jet/file/relation_indexes.h"
#include "tests/jet/file/written_file.h"
#include "tests/packages/judge.h"
#include "tests/support/sandbox.h"

// What an independent reader makes of the files written here.
namespace {

using namespace tests;
using namespace jet::file;
namespace flags = definition::real_index;

class Mdbtools : public testing::Test {
 protected:
  void SetUp() override {
    if (Judge("mdb-tables --version").first != 0) GTEST_SKIP() << "mdbtools is not installed";
  }

  // The answer of one of its programs about the file.
  std::string Ask(const std::string& program, const std::string& arguments = {}) const {
    const auto [status, answer] =
        Judge(program + " " + InQuotes(sandbox_.Path("file.mdb")) + " " + arguments);
    EXPECT_EQ(status, 0) << answer;
    return answer;
  }

  void Write(const std::vector<NewTable>& tables,
             const std::vector<Relation>& relations = {}) const {
    sandbox_.Write("file.mdb", Written(tables, relations));
  }

 private:
  Sandbox sandbox_;
};

std::string Utf16(std::string_view text) {
  return tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
}

// Every type, and a row of Nulls.
NewTable TypesTable() {
  NewTable table = TableOf(
      "Типы", {Column("Да", ColumnType::kBoolean), Column("Байт", ColumnType::kByte),
               Column("Целое", ColumnType::kInteger), Column("Длинное", ColumnType::kLong),
               Column("Деньги", ColumnType::kCurrency), Column("Дробное", ColumnType::kDouble),
               Column("Дата", ColumnType::kDate), Column("Текст", ColumnType::kText, 100),
               Column("Memo", ColumnType::kMemo), Column("OLE", ColumnType::kOle)});
  table.rows.push_back({std::string(1, '\1'), std::string(1, '\xFF'),
                        StoredNumber(std::int16_t{-32768}), StoredNumber(2147483647),
                        StoredNumber(std::int64_t{-12345678}), StoredNumber(0.125),
                        StoredNumber(38000.25), PackText("Ёлка \"и\" [скобки]", true),
                        PackMemo("memo", true), std::string("ole")});
  table.rows.push_back({std::string(1, '\0')});
  table.rows.back().resize(table.layout.columns.size());
  return table;
}

TEST_F(Mdbtools, ListsTablesAndReadsEveryValue) {
  Write({TypesTable(), TableOf("Таблица [с] \"кавычками\"", {Column("A", ColumnType::kLong)})});
  EXPECT_EQ(Ask("mdb-tables -1"), "Типы\nТаблица [с] \"кавычками\"\n");
  EXPECT_EQ(Ask("mdb-export -D '%Y-%m-%d' -T '%Y-%m-%d %H:%M'", "Типы"),
            "Да,Байт,Целое,Длинное,Деньги,Дробное,Дата,Текст,Memo,OLE\n"
            "1,255,-32768,2147483647,-1234.5678,0.125,\"2004-01-14 06:00\","
            "\"Ёлка \"\"и\"\" [скобки]\",\"memo\",\"ole\"\n"
            "0,,,,,,,,,\n");
}

TEST_F(Mdbtools, ReadsLongTextsOfEveryForm) {
  NewTable table = TableOf("T", {Column("N", ColumnType::kLong), Column("M", ColumnType::kMemo)});
  std::string expected = "N,M\n";
  for (const std::size_t length : {1U, 32U, 33U, 1908U, 1909U, 2036U, 2037U, 20000U}) {
    for (const char* letter : {"x", "ж"}) {
      std::string text;
      for (std::size_t i = 0; i < length; ++i)
        text += letter;
      table.rows.push_back({StoredNumber(static_cast<std::int32_t>(length)), PackMemo(text, true)});
      expected += std::to_string(length) + ",\"" + text + "\"\n";
    }
  }
  Write({table});
  EXPECT_TRUE(Ask("mdb-export", "T") == expected);
}

TEST_F(Mdbtools, FindsIndexesRelationsAndProperties) {
  NewTable parent = TableOf("Parent", {Column("Id", ColumnType::kLong)});
  parent.layout.page = 0x700001;
  AddIndex(parent.layout, "PrimaryKey", {{0, false}}, flags::kUnique | flags::kRequired, true);
  NewTable child = TableOf(
      "Child", {Column("ParentId", ColumnType::kLong), Column("Name", ColumnType::kText, 100)});
  child.layout.page = 0x700002;
  AddIndex(child.layout, "ByName", {{1, true}, {0, false}}, flags::kUnique);
  child.properties = {{properties::kOfColumn,
                       "Name",
                       {{"Caption", 10, 0, Utf16("Имя")}, {"Required", 1, 1, "\1"}}}};
  const Relation relation{
      "ParentChild", relation_flags::kCascadesDeletions, "Child", "Parent", {{"ParentId", "Id"}}};
  AddRelationIndexes(child.layout, parent.layout, relation);
  Write({parent, child}, {relation});

  const std::string schema = Ask("mdb-schema", "mysql");
  for (const char* part :
       {"`ParentId`\t\t\tint", "ALTER TABLE `Parent` ADD PRIMARY KEY (`Id`)",
        "ALTER TABLE `Child` ADD UNIQUE INDEX `ByName` (`Name` DESC, `ParentId`)",
        "FOREIGN KEY (`ParentId`) REFERENCES `Parent`(`Id`) ON DELETE CASCADE"})
    EXPECT_NE(schema.find(part), std::string::npos) << part << "\n" << schema;
  const std::string properties = Ask("mdb-prop", "Child");
  EXPECT_NE(properties.find("Caption: Имя"), std::string::npos) << properties;
  EXPECT_NE(properties.find("Required: yes"), std::string::npos) << properties;
}

}  // namespace
