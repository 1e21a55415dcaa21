#include <gtest/gtest.h>

#include <string>

#include "tests/jet/database_fixture.h"

namespace {

using ports::RecordsetType;
using tests::DatabaseTest;
using tests::ErrorOf;
using tests::Words;

class EngineTest : public DatabaseTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(Run("create table T (Ид long primary key, Имя text(20), Кол long)"), 0);
    ASSERT_EQ(Run("create index ПоИмени on T (Имя desc)"), 0);
    ASSERT_EQ(Run("create index Редкий on T (Кол) with ignore null"), 0);
    const char* const names[] = {"яма", "ёж", "еж", "Ель", "A"};
    for (int i = 0; i < 5; ++i) {
      ASSERT_EQ(Run("insert into T values (" + std::to_string(9 - i) + ", '" + names[i] + "', " +
                    (i == 2 ? "2" : "null") + ")"),
                0);
    }
  }

  static std::string Column(ports::DatabaseRecordset& rows, std::size_t position) {
    std::string text;
    for (; !rows.AtEnd(); rows.MoveNext())
      text += Words(rows.Value(position)).substr(5) + " ";
    return text;
  }
};

TEST_F(EngineTest, ATableComesInStorageOrderOrInThatOfItsIndex) {
  const auto rows = db->OpenRecordset("T", RecordsetType::kTable);
  EXPECT_EQ(Column(*rows, 1), "яма ёж еж Ель A ");
  rows->SetIndex("primarykey");
  EXPECT_EQ(Column(*rows, 1), "A Ель еж ёж яма ");
  rows->SetIndex("ПоИмени");
  EXPECT_EQ(Column(*rows, 1), "яма Ель ёж еж A ");
  rows->SetIndex("Редкий");
  EXPECT_EQ(Column(*rows, 1), "еж ");
  EXPECT_EQ(ErrorOf([&] { rows->SetIndex("Нет"); }), 3015);
  EXPECT_EQ(ErrorOf([&] { db->OpenRecordset("Нет", RecordsetType::kDynaset); }), 3078);
  EXPECT_EQ(ErrorOf([&] { db->OpenRecordset("T", RecordsetType::kDynaset)->SetIndex("x"); }), 3251);
}

TEST_F(EngineTest, ARecordsetMovesEditsAddsAndDeletes) {
  const auto rows = db->OpenRecordset("select Имя, Ид, Кол + 1 as Сумма from T where Ид > 5",
                                      RecordsetType::kDynaset);
  EXPECT_EQ(rows->FieldPosition("сумма"), 2U);
  EXPECT_EQ(ErrorOf([&] { rows->FieldPosition("нет"); }), ports::kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { rows->SetValue(0, std::string("x")); }), 3020);
  rows->Edit();
  EXPECT_EQ(ErrorOf([&] { rows->SetValue(0, std::string(21, 'x')); }), 3163);
  EXPECT_EQ(ErrorOf([&] { rows->SetValue(1, std::string("x")); }), 3421);
  EXPECT_EQ(ErrorOf([&] { rows->SetValue(2, std::int32_t{1}); }), 3164);
  rows->SetValue(0, std::string("нора"));
  rows->Update();
  EXPECT_EQ(Words(rows->Value(0)), "Text нора");
  rows->MoveNext();
  rows->Delete();
  EXPECT_EQ(ErrorOf([&] { rows->Value(0); }), 3167);
  rows->MoveNext();
  EXPECT_EQ(Words(rows->Value(2)), "Long 3");
  rows->AddNew();
  rows->SetValue(1, std::int32_t{9});
  EXPECT_EQ(ErrorOf([&] { rows->Update(); }), 3022);
  rows->SetValue(1, std::int32_t{20});
  rows->Update();
  EXPECT_EQ(Words(rows->Value(1)), "Long 7") << "the current row is the one before AddNew";
  rows->MoveLast();
  EXPECT_EQ(Words(rows->Value(1)), "Long 20");
  rows->MoveNext();
  EXPECT_TRUE(rows->AtEnd());
  EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), ports::kNoCurrentRecord);
  EXPECT_EQ(ErrorOf([&] { rows->Value(0); }), ports::kNoCurrentRecord);
  rows->MovePrevious();
  rows->MovePrevious();
  EXPECT_EQ(Words(rows->Value(1)), "Long 6");
  EXPECT_EQ(Query("select Ид, Имя from T"),
            "Long 9, Text нора; Long 7, Text еж; Long 6, Text Ель; Long 5, Text A; Long 20, Null");

  const auto none = db->OpenRecordset("select * from T where false", RecordsetType::kDynaset);
  EXPECT_TRUE(none->AtEnd() && none->AtBeginning());
  EXPECT_EQ(ErrorOf([&] { none->MoveFirst(); }), ports::kNoCurrentRecord);
}

TEST_F(EngineTest, TransactionsNestToFiveAndTakeDefinitionsBack) {
  EXPECT_EQ(ErrorOf([&] { engine->CommitTrans(); }), 3034);
  EXPECT_EQ(ErrorOf([&] { engine->Rollback(); }), 3034);
  for (int level = 1; level <= 5; ++level) {
    engine->BeginTrans();
    ASSERT_EQ(Run("update T set Кол = " + std::to_string(level)), 0);
  }
  EXPECT_EQ(ErrorOf([&] { engine->BeginTrans(); }), 3003);
  engine->Rollback();
  engine->CommitTrans();
  ASSERT_EQ(Run("create table Новая (x counter)"), 0);
  ASSERT_EQ(Run("insert into Новая (x) values (41)"), 0);
  ASSERT_EQ(Run("alter table T add column Y long"), 0);
  ASSERT_EQ(Run("drop index ПоИмени on T"), 0);
  engine->Rollback();
  engine->CommitTrans();
  engine->CommitTrans();
  EXPECT_EQ(Query("select Кол from T where Ид = 9"), "Long 2");
  EXPECT_EQ(Query("select * from Новая"), "error 3078");
  EXPECT_EQ(Query("select Y from T"), "error 3061");
  EXPECT_EQ(db->Table("T").indexes.size(), 3U);

  engine->BeginTrans();
  ASSERT_EQ(Run("delete from T"), 0);
  db->Close();
  engine->CommitTrans();
  db = engine->OpenDatabase(path, true, false);
  EXPECT_EQ(Query("select count(*) from T"), "Long 5") << "closing takes an open change back";
}

TEST_F(EngineTest, LocksAnswerWithTheirNumbers) {
  const auto open = [&](bool exclusive, bool read_only) {
    return ErrorOf([&] { engine->OpenDatabase(path, exclusive, read_only); });
  };
  EXPECT_EQ(open(false, false), 3356);
  EXPECT_EQ(open(true, false), 3356);
  EXPECT_EQ(ErrorOf([&] { engine->CompactDatabase(path, sandbox.Path("b")); }), 3356);
  const auto rows = db->OpenRecordset("T", RecordsetType::kTable);
  db->Close();
  EXPECT_EQ(Run("delete from T"), 3420);
  EXPECT_EQ(ErrorOf([&] { rows->MoveNext(); }), 3420);
  EXPECT_EQ(ErrorOf([&] { db->Tables(); }), 3420);
  const auto first = engine->OpenDatabase(path, false, false);
  const auto second = engine->OpenDatabase(path, false, true);
  EXPECT_EQ(open(true, false), ports::kFileAlreadyInUse);
  EXPECT_EQ(ErrorOf([&] { second->Execute("delete from T", true); }), 3027);
  const auto create = [&] { first->Execute("create table Новая (x long)", true); };
  EXPECT_EQ(ErrorOf(create), ports::kFileAlreadyInUse) << "somebody else reads the file";
  EXPECT_EQ(open(true, false), ports::kFileAlreadyInUse) << "and it is shared as before";
  second->Close();
  create();
  EXPECT_EQ(open(false, true), ports::kOpenedExclusively);
  first->Close();
  EXPECT_EQ(open(true, false), 0);
  EXPECT_EQ(engine->OpenDatabase(path, false, true)->Table("Новая").fields.size(), 1U);
  EXPECT_EQ(ErrorOf([&] { engine->OpenDatabase(sandbox.Path("нет.mdb"), true, false); }), 3024);
  const std::string text = sandbox.Write("текст.mdb", std::string(5000, 'x'));
  EXPECT_EQ(ErrorOf([&] { engine->OpenDatabase(text, true, false); }), 3343);
  EXPECT_EQ(ErrorOf([&] { engine->CreateDatabase(path); }), 3204);
}

TEST_F(EngineTest, CompactionKeepsEverythingInKeyOrder) {
  ASSERT_EQ(Run("create table Ч (Н counter, x long)"), 0);
  ASSERT_EQ(Run("insert into Ч (x) values (1)"), 0);
  ASSERT_EQ(Run("insert into Ч (x) values (2)"), 0);
  ASSERT_EQ(Run("delete from Ч where x = 2"), 0);
  db->SetFieldProperty("T", "Имя", "Caption", ports::DataType::kText, std::string("Имя его"));
  db->Close();
  const std::string copy = sandbox.Path("сжатая.mdb");
  engine->CompactDatabase(path, copy);
  EXPECT_EQ(ErrorOf([&] { engine->CompactDatabase(path, copy); }), 3204);
  EXPECT_EQ(ErrorOf([&] { engine->CompactDatabase(sandbox.Path("нет"), sandbox.Path("b")); }),
            3024);
  EXPECT_FALSE(sandbox.Has("b"));
  db = engine->OpenDatabase(copy, true, false);
  EXPECT_EQ(Column(*db->OpenRecordset("T", RecordsetType::kTable), 0), "5 6 7 8 9 ");
  EXPECT_EQ(db->Table("T").indexes.size(), 3U);
  EXPECT_EQ(Run("insert into T values (5, 'x', 1)"), 3022);
  EXPECT_EQ(Run("insert into Ч (x) values (3)"), 0);
  EXPECT_EQ(Query("select Н from Ч where x = 3"), "Long 2");
  EXPECT_EQ(Words(*db->FieldProperty("T", "Имя", "Caption")), "Text Имя его");
}

}  // namespace
