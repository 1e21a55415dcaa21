#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "ports/ports.h"
#include "tests/jet/database_fixture.h"
#include "tests/support/processes.h"

namespace {

using ports::RecordsetType;
using tests::DatabaseTest;
using tests::ErrorOf;
using tests::Words;

// Pseudo-random numbers, the same in every run.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : state_(seed) {}
  std::uint32_t Below(std::uint32_t limit) {
    state_ = state_ * 1664525 + 1013904223;
    return (state_ >> 8U) % limit;
  }

 private:
  std::uint32_t state_;
};

// Applies the same changes to a database and to a map, which must stay equal. Changes are made by
// statements and recordsets, within nested transactions that are committed or rolled back.
class ModelTest : public DatabaseTest {
 protected:
  using Model = std::map<int, std::string>;

  void SetUp() override {
    ASSERT_EQ(Run("create table T (Ид long primary key, Имя text(10))"), 0);
    ASSERT_EQ(Run("create index ПоИмени on T (Имя desc, Ид)"), 0);
  }

  void ChangeByStatement(Dice& dice, Model& model) const {
    const int key = static_cast<int>(dice.Below(40));
    const std::string name = kNames[dice.Below(static_cast<std::uint32_t>(kNames.size()))];
    const bool has = model.contains(key);
    const std::string number = std::to_string(key);
    switch (dice.Below(4)) {
      case 0:
        EXPECT_EQ(Run("insert into T values (" + number + ", '" + name + "')"), has ? 3022 : 0);
        model.emplace(key, name);
        break;
      case 1:
        EXPECT_EQ(Run("update T set Имя = '" + name + "' where Ид = " + number), 0);
        if (has) model[key] = name;
        break;
      case 2:
        EXPECT_EQ(Run("delete from T where Ид = " + number), 0);
        model.erase(key);
        break;
      default:
        EXPECT_EQ(
            Run("update T set Имя = Имя & '!' where Ид < " + number + " and Имя like '[а-я]?'"), 0);
        for (auto& [id, text] : model) {
          if (id < key && (text == "ёж" || text == "Еж")) text += "!";
        }
    }
  }

  void ChangeByRecordset(Dice& dice, Model& model) const {
    const auto rows = db->OpenRecordset("T", RecordsetType::kTable);
    if (dice.Below(2) == 0) rows->SetIndex("ПоИмени");
    for (; !rows->AtEnd(); rows->MoveNext()) {
      const int key = std::get<std::int32_t>(rows->Value(0));
      switch (dice.Below(6)) {
        case 0:
          rows->Delete();
          model.erase(key);
          break;
        case 1:
          rows->Edit();
          rows->SetValue(1, std::string("правка"));
          rows->Update();
          model[key] = "правка";
          break;
        default:
          EXPECT_EQ(Words(rows->Value(1)), "Text " + model[key]);
      }
    }
  }

  void ExpectAlike(const Model& model) const {
    std::string expected;
    for (const auto& [key, name] : model)
      expected +=
          (expected.empty() ? "" : "; ") + ("Long " + std::to_string(key)) + ", Text " + name;
    EXPECT_EQ(Query("select * from T order by Ид"), expected);
    const auto rows = db->OpenRecordset("T", RecordsetType::kTable);
    rows->SetIndex("ПоИмени");
    std::size_t count = 0;
    for (; !rows->AtEnd(); rows->MoveNext())
      ++count;
    EXPECT_EQ(count, model.size()) << "every row stands in the index";
  }

  const std::vector<std::string> kNames = {"ёж", "Еж", "ежи", "", "co-op", "coop", "яма"};
};

TEST_F(ModelTest, TheDatabaseAndAMapStayAlike) {
  Dice dice(7);
  std::vector<Model> levels(1);
  for (int step = 0; step < 600; ++step) {
    const std::uint32_t kind = dice.Below(10);
    if (kind == 0 && levels.size() < 6) {
      engine->BeginTrans();
      levels.push_back(levels.back());
    } else if (kind == 1 && levels.size() > 1) {
      const Model ended = levels.back();
      levels.pop_back();
      if (dice.Below(2) == 0) {
        engine->CommitTrans();
        levels.back() = ended;
      } else {
        engine->Rollback();
      }
    } else if (kind == 2) {
      ChangeByRecordset(dice, levels.back());
    } else {
      ChangeByStatement(dice, levels.back());
    }
    if (step % 5 == 0) ExpectAlike(levels.back());
    ASSERT_FALSE(HasFailure()) << "step " << step;
  }
  const Model last = levels.back();
  for (; levels.size() > 1; levels.pop_back())
    engine->CommitTrans();
  db->Close();
  const std::string copy = sandbox.Path("копия.mdb");
  engine->CompactDatabase(path, copy);
  db = engine->OpenDatabase(copy, true, false);
  ExpectAlike(last);
}

TEST_F(ModelTest, ARecordsetOfThousandsOfRowsReadsThemAllAndSeesChanges) {
  engine->BeginTrans();
  auto rows = db->OpenRecordset("T", RecordsetType::kTable);
  for (std::int32_t i = 0; i < 3000; ++i) {
    rows->AddNew();
    rows->SetValue(0, (i * 7919) % 3001);
    rows->SetValue(1, "и" + std::to_string(i));
    rows->Update();
  }
  engine->CommitTrans();
  rows = db->OpenRecordset("T", RecordsetType::kTable);
  rows->SetIndex("PrimaryKey");
  std::int32_t last = -1;
  int count = 0;
  for (; !rows->AtEnd(); rows->MoveNext()) {
    const std::int32_t key = std::get<std::int32_t>(rows->Value(0));
    ASSERT_GT(key, last);
    last = key;
    ++count;
    // A row that has already been read ahead is changed or deleted.
    if (key == 500) {
      EXPECT_EQ(Run("update T set Имя = 'новое' where Ид = 501"), 0);
    }
    if (key == 501) {
      EXPECT_EQ(Words(rows->Value(1)), "Text новое");
      engine->BeginTrans();
      EXPECT_EQ(Run("update T set Имя = 'иное' where Ид in (502, 503)"), 0);
    }
    if (key == 502) {
      EXPECT_EQ(Words(rows->Value(1)), "Text иное");
      engine->Rollback();
      EXPECT_NE(Words(rows->Value(1)), "Text иное");
      EXPECT_EQ(Run("delete from T where Ид = 503"), 0);
    }
    ASSERT_NE(key, 503);
  }
  EXPECT_EQ(count, 2999);
}

TEST_F(ModelTest, AProcessThatDiesInMidTransactionLeavesTheOldRowsAndNoLock) {
  for (int i = 0; i < 200; ++i)
    ASSERT_EQ(Run("insert into T values (" + std::to_string(i) + ", 'строка')"), 0);
  db->Close();
  const std::int32_t child =
      tests::StartChild("spoil \"" + path + "\" \"" + sandbox.Path("report") + "\" sleep 20000");
  ASSERT_EQ(tests::AwaitLine(sandbox, "report"), "spoiled 200");
  EXPECT_EQ(ErrorOf([&] { engine->OpenDatabase(path, true, false); }), 3356);
  tests::KillProcess(child);
  db.reset();
  for (int i = 0; i < 500 && !db; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    try {
      db = engine->OpenDatabase(path, true, true);
    } catch (const ports::DatabaseError& error) {
      ASSERT_EQ(error.Number, 3356);
    }
  }
  ASSERT_NE(db, nullptr);
  EXPECT_EQ(Query("select count(*) from T where Имя = 'строка'"), "Long 200");
}

}  // namespace
