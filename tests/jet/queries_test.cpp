#include <gtest/gtest.h>

#include "tests/jet/statement_table.h"

namespace {

using tests::CheckStatements;
using tests::StatementCase;

class QueriesTest : public tests::DatabaseTest {
 protected:
  void SetUp() override {
    for (const char* const statement :
         {"create table Люди ([№] counter primary key, Имя text(20), Город text(20), Рост double, "
          "Оклад currency, Код guid)",
          "insert into Люди (Имя, Город, Рост, Оклад) values ('Анна', 'Омск', 1.6, 100.5)",
          "insert into Люди (Имя, Город, Рост, Оклад) values ('Борис', 'омск ', 1.8, 200.25)",
          "insert into Люди (Имя, Город, Рост) values ('Ёлка', 'Тверь', 1.7)",
          "insert into Люди (Имя, Оклад, Код) values "
          "('Вера', 200.25, '{00000000-0000-0000-0000-0000000000A1}')",
          "create table Счета (Ид long primary key, Чей long, Сумма currency, Вид text(5))",
          "insert into Счета values (10, 1, 5, 'а')", "insert into Счета values (11, 1, 7.5, 'б')",
          "insert into Счета values (12, 2, 900000000000.1234, 'А')",
          "insert into Счета values (13, 9, 1, null)",
          "create table Города (Имя text(20) primary key, Край text(20))",
          "insert into Города values ('ОМСК', 'Сибирь')",
          "insert into Города values ('Псков', 'Запад')",
          "create table Письма ([№] long, Текст memo, Вид longbinary)",
          "insert into Письма ([№], Текст) values (1, 'анна')"})
      ASSERT_EQ(Run(statement), 0) << statement;
  }
};

TEST_F(QueriesTest, JoinsMatchRowsByTheSortOrder) {
  const StatementCase cases[] = {
      {"select Люди.Имя, Край from Люди inner join Города on Люди.Город = Города.Имя",
       "Анна|Сибирь;Борис|Сибирь"},
      {"select 1 from Люди inner join Письма on Люди.Имя = Письма.Текст", "#3118"},
      {"select 1 from Письма a left join Письма b on a.[№] = b.[№] and not (b.Вид > a.Вид)",
       "#3118"},
      {"select Имя from Люди inner join Письма on Люди.Имя = Письма.Текст & ''", "Анна"},
      {"select Люди.Имя, Края.Край from Люди left join Города as Края on Люди.Город = Края.Имя",
       "Анна|Сибирь;Борис|Сибирь;Ёлка|Null;Вера|Null"},
      {"select Л.Имя, г.Имя from Люди Л right join Города Г on Л.Город = Г.Имя",
       "Анна|ОМСК;Борис|ОМСК;Null|Псков"},
      {"select * from Города right outer join (select Имя, Город from Люди where [№] = 3) as х on "
       "х.Город = Города.Имя",
       "Null|Null|Ёлка|Тверь"},
      {"select Имя, Ид from (Люди inner join Счета on Люди.[№] = Счета.Чей) where Вид = 'А'",
       "Анна|10;Борис|12"},
      {"select Л.Имя, С.Ид, Г.Край from (Люди as Л left join Счета as С on Л.[№] = С.Чей) "
       "left join Города as Г on Л.Город = Г.Имя order by Л.Имя desc, С.Ид desc",
       "Ёлка|Null|Null;Вера|Null|Null;Борис|12|Сибирь;Анна|11|Сибирь;Анна|10|Сибирь"},
      {"select Г.Имя, Л.Имя, С.Ид from Города Г left join (Люди Л inner join Счета С on "
       "Л.[№] = С.Чей) on Г.Имя = Л.Город order by 1, 3",
       "ОМСК|Анна|10;ОМСК|Анна|11;ОМСК|Борис|12;Псков|Null|Null"},
      {"select Л.Имя, С.Ид from Города Г inner join (Люди Л inner join Счета С on Л.[№] = С.Чей) "
       "on Г.Имя = Л.Город where С.Ид > 10 order by С.Ид",
       "Анна|11;Борис|12"},
      {"select a.[№], b.[№] from Люди a, Люди b where a.Город = b.Город and a.[№] < b.[№]", "1|2"},
      {"select count(*) from Люди, Счета, Города", "32"},
      {"select Л.Имя from Люди Л inner join Счета С on Л.[№] = С.Чей and С.Сумма > 6 or С.Ид = 13 "
       "where Л.[№] < 3 order by Л.Имя, С.Ид",
       "Анна;Анна;Борис;Борис"},
      {"select Имя from Люди inner join Города on Люди.Город = Города.Имя", "#3079"},
      {"select 1 from Люди inner join Люди on true", "#3081"},
      {"select 1 from Города, Люди inner join Счета on Города.Имя = Счета.Вид", "#3082"},
      {"select 1 from Люди inner join Счета", "#3135"},
      {"select 1 from Люди inner join Нет on true", "#3078"},
      {"select Люди.Имя from Люди as Л", "#3061"},
      {"select 1 from Люди in 'другая.mdb'", "#3251"},
      {"select 1 from Люди inner join Счета on Люди.Имя = Счета.Ид", "#3464"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(QueriesTest, SubSelectsAreValuesListsAndTables) {
  const StatementCase cases[] = {
      {"select Имя from Люди where Город in (select Имя from Города)", "Анна;Борис"},
      {"select Имя from Люди where Город not in (select Имя from Города)", "Ёлка"},
      {"select Имя from Люди where [№] not in (select Чей from Счета union select null from Счета)",
       ""},
      {"select Имя from Люди where exists (select * from Счета where Чей = Люди.[№])",
       "Анна;Борис"},
      {"select Имя from Люди as Л where not exists (select Ид from Счета where Чей = Л.[№])",
       "Ёлка;Вера"},
      {"select Имя, (select sum(Сумма) from Счета where Чей = [№]) from Люди where [№] <> 2",
       "Анна|12.5;Ёлка|Null;Вера|Null"},
      {"select (select Ид from Счета where Чей = Люди.[№]) as И from Люди where [№] = 2", "12"},
      {"select (select Ид from Счета where Чей = Люди.[№]) from Люди", "#3354"},
      {"select (select Ид, Чей from Счета) from Люди", "#3306"},
      {"select 1 from Люди where Имя in (select * from Города)", "#3306"},
      {"select Ид from Счета where Сумма > all (select Оклад from Люди where Оклад is not null)",
       "12"},
      {"select Ид from Счета where Сумма > all (select Оклад from Люди)", ""},
      {"select Ид from Счета where Сумма > all (select Оклад from Люди where false)",
       "10;11;12;13"},
      {"select Ид from Счета where not (Ид < any (select Ид from Счета))", "13"},
      {"select Ид from Счета where Ид = some (select 10 + [№] from Люди)", "11;12;13"},
      {"select Ид from Счета where Вид <> all (select 'Б' from Люди)", "10;12"},
      {"select х.Имя & '!' from (select Имя from Люди where [№] < 3) as х where х.Имя > 'б'",
       "Борис!"},
      {"select х.Сколько, Город from [select Город, count(*) as Сколько from Люди group by Город]. "
       "as х where Город = 'ОМСК'",
       "2|Омск"},
      {"select * from [select Имени from Люди]. as х", "#3061"},
      {"select * from (select Имя from Люди where) as х", "#3075"},
      {"select х.К from (select Код as К from Люди) as х inner join Люди on х.К = Люди.Код",
       "{guid {00000000-0000-0000-0000-0000000000A1}}"},
      {"select count(*) from (select * from Люди) as а, (select * from Люди) as б "
       "where а.Оклад = б.Оклад",
       "5"},
      {"select Имя from Люди where [№] in (select Чей from Счета where Имя > 'б')", "Борис"},
      {"select (select max(Люди.[№]) from Счета) from Люди", "#3251"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(QueriesTest, GroupsHaveTotalsAndNothingElse) {
  const StatementCase cases[] = {
      {"select Город, count(*), sum(Оклад) from Люди group by Город order by Город",
       "Null|1|200.25;Омск|2|300.75;Тверь|1|Null"},
      {"select count(Город), count(*), min(Имя), max(Имя), avg(Рост) from Люди",
       "3|4|Анна|Ёлка|1.7"},
      {"select count(*), sum(Рост), min(Имя) from Люди where false", "0|Null|Null"},
      {"select sum(Сумма), sum(Сумма * 2 + 0) from Счета", "900000000013.6234|1800000000027.2468"},
      {"select first(Имя), last(Имя) from Люди", "Анна|Вера"},
      {"select Оклад, first(Имя), last(Имя) from Люди where Оклад > 1 group by Оклад",
       "100.5|Анна|Анна;200.25|Борис|Вера"},
      {"select stdev([№]), var([№]), stdevp([№]), varp([№]) from Люди where [№] < 4",
       "1|1|0.816496580927726|0.666666666666667"},
      {"select Город, count(*) from Люди group by Город having count(*) > 1", "Омск|2"},
      {"select sum([№]) / count(*) & ' руб.' from Люди", "2,5 руб."},
      {"select Имя & 1 as Буква from Люди where [№] = 1 group by Имя & 1", "Анна1"},
      {"select [№] mod 2 + 10, count(*) from Люди group by [№] mod 2", "10|2;11|2"},
      {"select Чей, sum(Сумма) as Итог from Счета group by Чей order by sum(Сумма) desc",
       "2|900000000000.1234;1|12.5;9|1"},
      {"select 5 as Пять, count(*) from Люди group by 5", "5|4"},
      {"select Город from Люди group by Город, -7 order by 1 desc", "Тверь;Омск;Null"},
      {"select Имя, count(*) from Люди", "#3122"},
      {"select Город from Люди group by Город having Рост > 1", "#3122"},
      {"select Город from Люди group by Город order by Рост", "#3122"},
      {"select Город, (select count(*) from Счета where Чей = [№]) from Люди group by Город",
       "#3122"},
      {"select * from Люди group by Город", "#3121"},
      {"select Имя from Люди where count(*) > 1", "#3096"},
      {"select sum(count(*)) from Люди", "#3096"},
      {"select sum(Имя) from Люди", "#3464"},
      {"select distinct count(*) from Люди group by Город", "1;2"},
      {"select top 1 Город, sum([№]) from Люди group by Город order by sum([№]) desc", "Null|4"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(QueriesTest, RowsAreOrderedCountedAndUnited) {
  const StatementCase cases[] = {
      {"select Имя from Люди order by Имя", "Анна;Борис;Вера;Ёлка"},
      {"select Имя, Рост * 10 as р from Люди order by р desc",
       "Борис|18;Ёлка|17;Анна|16;Вера|Null"},
      {"select [№], * from Города, Люди where Край = 'Запад' order by 3 desc, 1",
       "1|Псков|Запад|1|Анна|Омск|1.6|100.5|Null;2|Псков|Запад|2|Борис|омск |1.8|200.25|Null;"
       "3|Псков|Запад|3|Ёлка|Тверь|1.7|Null|Null;4|Псков|Запад|4|Вера|Null|Null|200.25|"
       "{guid {00000000-0000-0000-0000-0000000000A1}}"},
      {"select Имя from Люди order by 2", "#3138"},
      {"select Рост * 10 as р, р + 1 as т from Люди where [№] = 1", "16|17"},
      {"select т as р, р as т from Люди", "#3103"},
      {"select top 1 Имя from Люди order by Оклад desc", "Борис;Вера"},
      {"select top 2 Имя, Оклад & '' from Люди order by Город desc, [№]", "Ёлка|;Анна|100,5"},
      {"select top 30 percent Имя from Люди order by [№]", "Анна;Борис"},
      {"select top 1 Ид from Счета inner join Люди on Чей = [№] order by Люди.[№]", "10;11"},
      {"select top 0 Имя from Люди", "#3141"},
      {"select distinct Город from Люди order by Город", "Null;Омск;Тверь"},
      {"select distinct top 2 Город from Люди order by Город desc", "Тверь;Омск"},
      {"select distinct Город from Люди order by Имя", "#3093"},
      {"select distinctrow Имя from Люди inner join Счета on [№] = Чей", "Анна;Борис"},
      {"select distinctrow Имя, Ид from Люди inner join Счета on [№] = Чей",
       "Анна|10;Анна|11;Борис|12"},
      {"select all 1 as один", "1"},
      {"select *", "#3067"},
      {"select count(*) from (select Имя from Города union select Город from Люди) as х", "4"},
      {"select Имя from Города union select Имя from Люди where [№] < 3 order by Имя desc",
       "Псков;ОМСК;Борис;Анна"},
      {"select 1 as а from Города union all select 2 from Города union select 1 from Города",
       "1;2"},
      {"select [№] as а from Люди where [№] < 3 union select 'я' from Города order by а", "1;2;я"},
      {"select Оклад as а from Люди where [№] = 1 union all select Сумма from Счета where Ид = 12",
       "100.5;900000000000.1234"},
      {"(select top 1 Имя from Люди) union all table Города", "#3307"},
      {"select Имя, Город from Люди where [№] = 1 union table Города order by 2",
       "Псков|Запад;Анна|Омск;ОМСК|Сибирь"},
      {"select Имя from Города union select Город from Люди order by Край", "#3351"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(QueriesTest, ActionsReachThroughJoinsAndSubSelects) {
  const StatementCase cases[] = {
      {"update Люди inner join Города on Люди.Город = Города.Имя set Люди.Имя = Край, Рост = 2 -> "
       "select Имя, Рост from Люди order by [№]",
       "Сибирь|2;Сибирь|2;Ёлка|1.7;Вера|Null"},
      // if several rows match, the last one wins
      {"update Люди, Счета set Оклад = Сумма where [№] = Чей -> select Оклад from Люди",
       "7.5;900000000000.1234;Null;200.25"},
      {"update Счета inner join Люди on Чей = [№] set Люди.Имя = Вид, Счета.Вид = Имя -> "
       "select Имя, Вид from Люди left join Счета on [№] = Чей order by [№], Ид",
       "б|Анна;б|Анна;А|Борис;Ёлка|Null;Вера|Null"},
      {"update Люди left join Города on Город = Города.Имя set Рост = iif(Край is null, 0, 1) -> "
       "select Рост from Люди",
       "1;1;0;0"},
      // a row missing from an outer join is inserted
      {"update Люди left join Счета on [№] = Чей set Ид = [№], Чей = [№], Вид = 'н' where Ид is "
       "null "
       "-> select * from Счета order by Ид",
       "3|3|Null|н;4|4|Null|н;10|1|5|а;11|1|7.5|б;12|2|900000000000.1234|А;13|9|1|Null"},
      {"update Люди inner join Счета on [№] = Чей set Имя = 'двадцать одна букваааа'", "#3163"},
      {"update Люди inner join Счета on [№] = Чей set Ид = 5", "#3022"},
      {"update Люди inner join Счета on [№] = Чей set [№] = 5", "#3164"},
      {"update Люди inner join Счета on [№] = Чей set Чей = Имя", "#3464"},
      {"update Люди inner join (select Чей, sum(Сумма) as и from Счета group by Чей) as с on "
       "[№] = с.Чей set Оклад = с.и",
       "#3073"},
      {"update Люди set Рост = (select max(Сумма) from Счета)", "#3073"},
      {"update Люди set Рост = 1 where [№] in (select Чей from Счета) -> "
       "select Рост from Люди order by [№]",
       "1;1;1.7;Null"},
      {"update Города Г left join (Люди Л inner join Счета С on Л.[№] = С.Чей) on Г.Имя = Л.Город "
       "set С.Вид = left(Край, 2) where С.Ид > 10 -> select Вид from Счета order by Ид",
       "а;Си;Си;Null"},
      {"update Люди set Рост = 1, Рост = 2", "#3191"},
      {"update Люди as Л inner join Люди as М on Л.Город = М.Город and Л.[№] < М.[№] "
       "set Л.Имя = М.Имя -> select Имя from Люди order by [№]",
       "Борис;Борис;Ёлка;Вера"},
      {"delete Люди.* from Люди inner join Счета on [№] = Чей -> select Имя from Люди",
       "Ёлка;Вера"},
      {"delete distinctrow Счета.* from Люди right join Счета on [№] = Чей where [№] is null -> "
       "select Ид from Счета",
       "10;11;12"},
      {"delete * from Люди where exists (select 1 from Счета where Чей = [№])", "2"},
      {"delete * from Люди inner join Счета on [№] = Чей", "#3128"},
      {"delete Люди.*, Ид, Счета.Чей from Люди inner join Счета on [№] = Чей where Ид = 12 -> "
       "select Имя from Люди",
       "Анна;Ёлка;Вера"},
      {"delete Люди.*, Счета.* from Люди inner join Счета on [№] = Чей", "#3251"},
      {"delete х.* from (select distinct Город from Люди) as х", "#3086"},
      {"insert into Люди (Имя, Рост) select Вид & Чей, Ид from Счета order by Ид desc -> "
       "select [№], Имя, Рост from Люди where [№] > 4",
       "5|9|13;6|А2|12;7|б1|11;8|а1|10"},
      // without a list, columns are assigned by name
      {"insert into Города select Имя & '' as Край, Город & [№] as Имя from Люди where [№] < 3 -> "
       "select * from Города order by Имя",
       "ОМСК|Сибирь;омск 2|Борис;Омск1|Анна;Псков|Запад"},
      {"insert into Города select Имя as Чужое from Люди", "#3127"},
      {"insert into Города (Имя) select Имя, Город from Люди", "#3346"},
      {"insert into Города (Имя) select Город from Люди where [№] < 3", "#3022"},
      {"insert into Города (Имя) select Город from Люди where [№] > 2", "#3058"},
      {"insert into Счета (Ид, Сумма) select Ид + 100, Сумма from Счета -> "
       "select sum(Сумма), count(*) from Счета",
       "1800000000027.2468|8"},
      {"insert into Города (Имя) select Имя from Люди union select Город from Люди", "#3251"},
      {"insert into Города select * from (select Имя from Люди union select 'Уфа' from Люди) as х "
       "-> select count(*) from Города",
       "7"},
      {"select Люди.*, Вид, Рост * 2 as Двойной into Новая from Люди inner join Счета on [№] = Чей "
       "-> select * from Новая where Вид = 'б'",
       "1|Анна|Омск|1.6|100.5|Null|б|3.2"},
      {"select Имя, count(*) as Сколько into Новая from Люди group by Имя -> insert into Новая "
       "values ('', 1.6) -> select Сколько from Новая where Имя = ''",
       "2"},
      {"select [№], Имя into Новая from Люди where [№] = 2 -> insert into Новая (Имя) values ('x') "
       "-> select [№] from Новая",
       "2;3"},
      {"select Имя into Люди from Города -> select 1", "#3010"},
      {"select а.Имя, б.Имя into Новая from Люди а, Города б -> select [а_Имя] from Новая where "
       "[б_Имя] = 'псков'",
       "Анна;Борис;Ёлка;Вера"},
      {"insert into Счета (Ид) values ((select max(Ид) from Счета) + 1) -> "
       "select max(Ид) from Счета",
       "14"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(QueriesTest, ColumnsAreNamedAndTypedByTheirFields) {
  const auto rows = db->OpenRecordset(
      "select Люди.Имя, Города.Имя, Люди.Имя & '', count(*) from Люди, Города "
      "group by Люди.Имя, Города.Имя",
      ports::RecordsetType::kDynaset);
  EXPECT_EQ(rows->FieldNames(),
            (std::vector<std::string>{"Люди.Имя", "Города.Имя", "Expr1000", "Expr1001"}));
  const StatementCase cases[] = {
      {"select sum([№]), avg(Оклад), sum(Оклад), count(*), max([№]), first(Код) from Люди",
       "Double 10|Double 167|Currency 501|Long 4|Long 4|Null"},
      {"select х.с + 1, х.с from (select Сумма as с from Счета where Ид = 10) as х",
       "Currency 6|Currency 5"},
      {"select [№] as а from Люди where [№] = 1 union select 1.5 from Города",
       "Double 1;Double 1.5"},
      {"select Сумма, Ид & '' as т, Ид / 3 as д, Ид > 1 as б into Н from Счета where Ид = 10 -> "
       "select * from Н",
       "Currency 5|Text 10|Double 3.33333333333333|True"},
  };
  CheckStatements(*engine, *db, cases, tests::Kinds::kShown);
}

// The rows of a join are fixed when it is opened; it can be read in both directions.
TEST_F(QueriesTest, AJoinsRowsStayWhileTheTablesChange) {
  const auto rows = db->OpenRecordset("select Ид, Имя from Люди, Счета where Чей = [№] order by Ид",
                                      ports::RecordsetType::kDynaset);
  EXPECT_EQ(Run("delete from Счета"), 0);
  rows->MoveLast();
  EXPECT_EQ(tests::Words(rows->Value(1)), "Text Борис");
  rows->MovePrevious();
  EXPECT_EQ(tests::Words(rows->Value(0)), "Long 11");
  EXPECT_EQ(tests::ErrorOf([&] { rows->Edit(); }), 3027);
}

}  // namespace
