#include <gtest/gtest.h>

#include "tests/jet/statement_table.h"

namespace {

using tests::StatementCase;

class QueriesTest : public tests::DatabaseTest {
 protected:
  void SetUp() override {
    for (const char* const statement :
         {"create table Люди ([№] long primary key, Имя text(20), Город text(20), Рост double)",
          "insert into Люди values (1, 'Анна', 'Омск', 1.6)",
          "insert into Люди values (2, 'Борис', 'омск', 1.8)"}) {
      ASSERT_EQ(Run(statement), 0) << statement;
    }
  }
};

TEST_F(QueriesTest, SelectsGiveTheirRows) {
  const StatementCase cases[] = {
      {"select [№], Имя from Люди", "1|Анна;2|Борис"},
      {"select Имена from Люди", "#3061"},
      {"delete * from Люди where [№] = 1 -> select count(*) from Люди", "1"},
  };
  tests::CheckStatements(*engine, *db, cases);
}

}  // namespace
