#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "tests/jet/statement_table.h"

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

TEST_F(StatementTest, StatementsChangeRowsOrNameWhatIsWrong) {
  const tests::StatementCase cases[] = {
      {"delete * from Товары where Имя is null; -> insert into Товары values "
       "(10, 'x', 1, 1, 1, 1, 1, 'y', null) -> insert into Товары (Имя) values ('след') -> "
       "select [№], Имя from Товары order by Имя desc",
       "11|след;2|ель;1|Ёлка;10|x"},
      {"insert into Товары ([№], Имя) values (2, 'z')", "#3022"},
      {"insert into Товары (Имя, Имя) values ('a', 'b')", "#3191"},
      {"insert into Товары (Имя) values ('a', 'b')", "#3346"},
      {"insert into Товары (Имена) values ('a')", "#3127"},
      {"insert into Нет (Имя) values ('a')", "#3078"},
      {"update Нет set a = 1", "#3078"},
      {"update Товары set [№] = 9", "#3164"},
      {"update Товары set Имена = 9", "#3061"},
      {"update Товары set Кол = 'двенадцать'", "#3464"},
      {"update Товары set Имя = 'двадцать одна букваааа'", "#3163"},
      {"update Товары set Цена = Цена -> select Цена from Товары where [№] = 2",
       "900000000000.1234"},
      {"update Товары set Имя", "#3144"},
      {"delete from Товары where", "#3075"},
      {"delete Товары", "#3128"},
      {"select ", "#3075"},
      {"insert Товары", "#3134"},
      {"drop all", "#3295"},
      {"чепуха", "#3129"},
      {"delete from Товары; delete from Товары", "#3142"},
      {"PARAMETERS x long; delete from Товары", "#3251"},
      {"transform count(*) select 1 from Товары", "#3251"},
  };
  CheckStatements(*engine, *db, cases);
  EXPECT_EQ(Run(""), 3129);
  EXPECT_EQ(Run("select * from Товары"), 3065);
}

TEST_F(StatementTest, DecimalsAreNumbersOfAllTheirDigits) {
  ASSERT_EQ(Run("create table Ч (Д decimal(20, 4) primary key, Ц decimal(3))"), 0);
  ASSERT_EQ(Run("insert into Ч values ('9', 2.5)"), 0);
  ASSERT_EQ(Run("insert into Ч values ('-1234567890123456.00015', 3)"), 0);
  ASSERT_EQ(Run("insert into Ч select '10,5' as Д, '-7' as Ц from Ч where Ц = 2.5 or Ц = 3"), 3022);
  const tests::StatementCase cases[] = {
      {"select Д from Ч order by Д", "-1234567890123456.0002;9"},
      {"insert into Ч values (10.5, -7) -> select Д from Ч where Д > 9 or Д = -1.5", "10.5"},
      {"insert into Ч values (10.5, 1e2) -> select max(Д), min(Ц), sum(Ц) from Ч", "10.5|3|106"},
      {"insert into Ч values (10.50, -7) -> insert into Ч values (10.5, 0)", "#3022"},
      {"update Ч set Ц = 1000", "#3464"},
      {"update Ч set Ц = 'x'", "#3464"},
      {"insert into Ч values (3, 10) -> select Ц from Ч where Ц < Д and Д in (9, 3)", "3"},
      {"insert into Ч values (2E-3, 0) -> select Д + 1 from Ч where Д between 0 and 1", "1.002"},
  };
  CheckStatements(*engine, *db, cases);
  db->Close();
  db = engine->OpenDatabase(path, true, false);
  // DAO says nothing of the scale.
  EXPECT_EQ(db->Table("Ч").fields[0].scale, engine->TakesDefinitionsBack() ? 4 : 0);
  EXPECT_EQ(Query("select * from Ч"),
            "Decimal 9, Decimal 3; Decimal -1234567890123456.0002, Decimal 3");
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

// Any text runs or fails with a numbered error that shows nothing of the storage. The texts are
// statements cut and joined at blanks, with words of other statements mixed in.
TEST_F(StatementTest, AnyTextRunsOrFailsWithANumber) {
  const char* const statements[] = {
      "select distinct Имя , count( * ) as К from Товары where Кол in ( 5 , 7 ) group by Имя "
      "having count( * ) > 0 order by Имя desc",
      "select top 2 percent a.* , iif( b.Цена is null , 'x' & Дата , #1/1/3# ) from Товары as a "
      "left join Товары as b on a.[№] = b.Кол",
      "select ( select max( Кол ) from Товары ) - - 1 ^ 2 from Товары where exists ( select * from "
      "Товары ) union all select 1 from Товары",
      "select format( Дата , 'd mmmm ; 0.00' ) , dateadd( 'm' , 1 , Дата ) , mid( Имя , 2 ) , "
      "choose( Кол , 1 , Имя ) , round( Цена , 2 ) mod 3 from Товары where not Имя like '[а-я]*'",
      "update Товары inner join Товары as b on Товары.[№] = b.[№] set Товары.Имя = b.Имя + 'x' "
      "where b.Кол between 9 and 2",
      "insert into Товары ( Имя , Кол ) select Имя , Кол \\ 2 from Товары where Есть",
      "insert into Товары ( Имя , Цена ) values ( null , '1,5' )",
      "delete Товары.* from Товары where Имя is not null imp Кол eqv 5",
      "create table Т ( а counter constraint К primary key , б text( 5 ) not null , в long "
      "references Т on delete cascade on update set null , unique ( б , в ) )",
      "alter table Товары add constraint Ф foreign key ( Кол ) references Товары ( [№] )",
      "alter table Товары alter column Имя memo",
      "create unique index И on Товары ( Имя desc , Кол ) with disallow null",
      "drop index И on Товары ; [ \" ' # ! . & <>"};
  std::vector<std::vector<std::string>> cut;
  for (const char* const statement : statements)
    cut.push_back(tmw::Split(statement, " "));
  std::uint32_t state = 12345;
  const auto below = [&state](std::size_t limit) {
    state = state * 1664525 + 1013904223;
    return (state >> 8U) % limit;
  };
  for (int round = 0; round < 4000; ++round) {
    const auto& first = cut[below(cut.size())];
    const auto& second = cut[below(cut.size())];
    std::vector<std::string> words(first.begin(), first.begin() + below(first.size() + 1));
    words.insert(words.end(), second.begin() + below(second.size()), second.end());
    if (round % 4 == 0) words = first;
    for (std::size_t changes = below(4); changes > 0 && !words.empty(); --changes) {
      const auto& donor = cut[below(cut.size())];
      words[below(words.size())] = donor[below(donor.size())];
    }
    std::string text;
    for (const std::string& word : words)
      text += word + " ";
    engine->BeginTrans();
    const std::int32_t action = Run(text);
    EXPECT_NE(action, 3000) << text;
    if (action != 0) {
      EXPECT_NE(Query(text), "error 3000") << text;
    }
    engine->Rollback();
  }
}

}  // namespace
