#include <gtest/gtest.h>

#include <string>

#include "tests/jet/database_fixture.h"

namespace {

using tests::DatabaseTest;

class StatementTest : public DatabaseTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run("create table Товары ([№] counter primary key, Имя text(20), Кол long, "
                  "Цена currency, Вес double, Дата datetime, Есть yesno, Заметка memo, Код guid)"),
              0);
    const std::string into =
        "insert into Товары (Имя, Кол, Цена, Вес, Дата, Есть, Заметка) values ";
    ASSERT_EQ(Run(into + "('Ёлка', 5, 10.5, 0.1, #2/1/2003#, yes, 'a')"), 0);
    ASSERT_EQ(Run(into + "(\"ель\", 7, 900000000000.1234, 2, #2003-12-31 10:20:30#, no, null)"), 0);
    ASSERT_EQ(Run(into + "(null, null, null, null, null, null, '')"), 0);
  }
};

TEST_F(StatementTest, AssignmentsTakeTheFieldsTypeOrFail) {
  const struct {
    const char* assignment;
    const char* value;  // of the field afterwards
  } cases[] = {
      {"Кол = 2.5", "Long 2"},
      {"Кол = 3.5", "Long 4"},
      {"Кол = '12'", "Long 12"},
      {"Кол = 'двенадцать'", "error 3464"},
      {"Кол = 3000000000", "error 3464"},
      {"Кол = 1=1", "Long -1"},
      {"Имя = 5/2", "Text 2,5"},
      {"Имя = Дата", "Text 01.02.2003"},
      {"Имя = 'двадцать одна букваа'", "Text двадцать одна букваа"},
      {"Имя = 'двадцать одна букваааа'", "error 3163"},
      {"Имя = ''", "Text "},
      {"Цена = '900000000000,1234'", "Currency 900000000000.1234"},
      {"Цена = Цена", "Currency 10.5"},
      {"Цена = 0.00005", "Currency 0"},
      {"Вес = 'x'", "error 3464"},
      {"Дата = '05.06.2007 1:02:03'", "Date 39238.0430902778"},
      {"Дата = 1.5", "Date 1.5"},
      {"Дата = 'вчера'", "error 3464"},
      {"Есть = null", "False"},
      {"Есть = 7", "True"},
      {"Код = '{guid {01234567-89AB-CDEF-0123-456789ABCDEF}}'",
       "Text {guid {01234567-89AB-CDEF-0123-456789ABCDEF}}"},
      {"Код = 'x'", "error 3464"},
      {"[№] = 9", "error 3164"},
      {"Имена = 9", "error 3061"},
  };
  for (const auto& c : cases) {
    const std::string assignment = c.assignment;
    const std::string field = assignment.substr(0, assignment.find(' '));
    engine->BeginTrans();
    const std::int32_t error = Run("update Товары set " + assignment + " where [№] = 1");
    const std::string result = error == 0 ? Query("select " + field + " from Товары where [№] = 1")
                                          : "error " + std::to_string(error);
    EXPECT_EQ(result, c.value) << assignment;
    engine->Rollback();
  }
  EXPECT_EQ(Run("update Товары set Цена = Цена"), 0);
  EXPECT_EQ(Query("select Цена from Товары where [№] = 2"), "Currency 900000000000.1234");
}

TEST_F(StatementTest, StatementsChangeRowsOrNameWhatIsWrong) {
  const struct {
    const char* statement;
    std::int32_t error;
  } cases[] = {
      {"delete * from Товары where Имя is null;", 0},
      {"delete Товары.* from Товары where false", 0},
      {"insert into Товары values (10, 'x', 1, 1, 1, 1, 1, 'y', null)", 0},
      {"insert into Товары ([№], Имя) values (10, 'z')", 3022},
      {"insert into Товары (Имя, Имя) values ('a', 'b')", 3191},
      {"insert into Товары (Имя) values ('a', 'b')", 3346},
      {"insert into Товары (Имена) values ('a')", 3127},
      {"insert into Нет (Имя) values ('a')", 3078},
      {"update Нет set a = 1", 3078},
      {"update Товары set Имя", 3144},
      {"delete from Товары where", 3075},
      {"delete Товары", 3128},
      {"select * from Товары", 3065},
      {"select", 3075},
      {"insert Товары", 3134},
      {"drop all", 3295},
      {"чепуха", 3129},
      {"", 3129},
      {"delete from Товары; delete from Товары", 3142},
      {"PARAMETERS x long; delete from Товары", 3251},
      {"transform count(*) select 1 from Товары", 3251},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Run(c.statement), c.error) << c.statement;
  EXPECT_EQ(Query("select [№], Имя from Товары order by Имя desc"),
            "Long 2, Text ель; Long 1, Text Ёлка; Long 10, Text x");
  EXPECT_EQ(Run("insert into Товары (Имя) values ('след')"), 0);
  EXPECT_EQ(Query("select [№] from Товары where Имя = 'СЛЕД'"), "Long 11");
}

TEST_F(StatementTest, AFailedStatementIsUndoneWholeAndLeavesTheTransactionOpen) {
  engine->BeginTrans();
  EXPECT_EQ(Run("update Товары set Имя = 'все'"), 0);
  EXPECT_EQ(Run("update Товары set Кол = 100 / (Кол - 7)"), 11);
  EXPECT_EQ(Query("select Имя, Кол from Товары where [№] < 3"),
            "Text все, Long 5; Text все, Long 7");
  engine->CommitTrans();
  EXPECT_EQ(Query("select count(*) from Товары where Имя = 'все'"), "Long 3");
}

// Any text runs or fails with a number; nothing of the storage's own words or state shows.
TEST_F(StatementTest, AnyTextRunsOrFailsWithANumber) {
  const std::string words[] = {
      "select", "*",      "from",  "Товары", "where",  "(",   ")",      "Имя",  "=",      "'a",
      "'a'",    "#1/1/1", "1",     "[",      "]",      "and", "not",    "in",   ",",      "between",
      "like",   "count",  "&",     "\"",     "update", "set", "insert", "into", "values", "delete",
      "is",     "null",   "order", "by",     "^",      "-",   ".",      "!",    ";",      "iif"};
  std::uint32_t state = 12345;
  const auto next = [&state] { return (state = state * 1664525 + 1013904223) >> 16U; };
  for (int round = 0; round < 3000; ++round) {
    std::string text = round % 3 == 0 ? "select Имя from Товары where " : "";
    for (std::uint32_t i = next() % 12; i > 0; --i)
      text += words[next() % std::size(words)] + " ";
    engine->BeginTrans();
    const std::int32_t action = Run(text);
    if (action != 0) {
      const std::string rows = Query(text);
      EXPECT_NE(rows, "error 3000") << text;
    }
    EXPECT_NE(action, 3000) << text;
    engine->Rollback();
  }
}

}  // namespace
