#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "jet/file/checker.h"
#include "ports/file_lock.h"
#include "services/processes.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/fakes/faulty_page_files.h"
#include "tests/jet/database_fixture.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace {

using ports::RecordsetType;
using tests::ErrorOf;
using tests::ToPath;
using tests::Words;

// A database that has been closed and is opened again: its tables lie in the file.
class ContainerTest : public tests::DatabaseTest {
 protected:
  void SetUp() override {
    for (const char* const sql :
         {"create table Папки (Ид long constraint Ключ primary key, Имя text(20))",
          "insert into Папки values (1, 'первая')", "insert into Папки values (2, 'вторая')",
          "create table Бумаги (Ид counter constraint Ключ primary key, Папка long constraint Связь"
          " references Папки (Ид) on update cascade on delete cascade, Текст memo)",
          "insert into Бумаги (Папка, Текст) values (1, 'а')",
          "insert into Бумаги (Папка, Текст) values (2, 'б')",
          "insert into Бумаги (Папка, Текст) values (2, '')"})
      ASSERT_EQ(Run(sql), 0) << sql;
    Reopen();
  }

  void Reopen() {
    db->Close();
    db = engine->OpenDatabase(path, true, false);
  }

  void ExpectClean() const {
    auto file = ports::CurrentPorts().page_files->Open(path, ports::PageFileMode::kRead);
    ASSERT_TRUE(file);
    const auto report = jet::file::CheckDatabase(std::move(file.value), path);
    EXPECT_TRUE(report.IsClean()) << report.findings.Kept().front().Text();
  }
};

TEST_F(ContainerTest, WhatNobodyChangedIsNotWritten) {
  const auto before = ports::CurrentPorts().page_files->IdentityOf(path);
  EXPECT_EQ(Query("select Имя from Папки where Ид = 2"), "Text вторая");
  EXPECT_EQ(Run("insert into Папки values (2, 'ещё одна')"), 3022);
  engine->BeginTrans();
  EXPECT_EQ(Run("delete from Папки"), 0);
  engine->Rollback();
  Reopen();
  EXPECT_EQ(ports::CurrentPorts().page_files->IdentityOf(path).value, before.value);
  EXPECT_EQ(Run("update Папки set Имя = 'третья' where Ид = 2"), 0);
  Reopen();
  EXPECT_NE(ports::CurrentPorts().page_files->IdentityOf(path).value, before.value);
  EXPECT_EQ(Query("select * from Папки"), "Long 1, Text первая; Long 2, Text третья");
}

TEST_F(ContainerTest, TablesThatACascadeReachesAreWrittenToo) {
  EXPECT_EQ(Run("insert into Бумаги (Папка) values (9)"), 3201);
  EXPECT_EQ(Run("update Папки set Ид = 5 where Ид = 1"), 0);
  Reopen();
  EXPECT_EQ(Query("select Ид, Папка, Текст from Бумаги order by Ид"),
            "Long 1, Long 5, Text а; Long 2, Long 2, Text б; Long 3, Long 2, Text ");
  ExpectClean();
  EXPECT_EQ(Run("delete from Папки where Ид = 2"), 0);
  Reopen();
  EXPECT_EQ(Query("select Ид from Бумаги"), "Long 1");
  EXPECT_EQ(Run("delete from Бумаги"), 0);
  Reopen();
  EXPECT_EQ(Query("select count(*) from Бумаги"), "Long 0");
  EXPECT_EQ(Run("insert into Бумаги (Папка) values (5)"), 0);
  EXPECT_EQ(Query("select Ид from Бумаги"), "Long 4") << "numbering goes on";
  ExpectClean();
}

TEST_F(ContainerTest, RowsThatATransactionLoadedOutliveIt) {
  engine->BeginTrans();
  const auto rows = db->OpenRecordset("Папки", RecordsetType::kTable);
  EXPECT_EQ(Run("create table Новая (Ид long)"), 0);
  engine->Rollback();
  rows->MoveNext();
  EXPECT_EQ(Words(rows->Value(1)), "Text вторая");
  rows->Edit();
  rows->SetValue(1, std::string("иная"));
  rows->Update();
  Reopen();
  EXPECT_EQ(Query("select Имя from Папки"), "Text первая; Text иная");
}

std::string Repeated(const std::string& text, int count) {
  std::string result;
  while (count-- > 0)
    result += text;
  return result;
}

TEST_F(ContainerTest, ARowThatTheFileCannotHoldIsRefusedWhenItIsMade) {
  std::string fields;
  std::string values;
  for (int i = 0; i < 8; ++i) {
    fields += (i == 0 ? "Т" : ", Т") + std::to_string(i) + " text(255)";
    values += (i == 0 ? "'" : ", '") + Repeated("я", 252) + "'";
  }
  ASSERT_EQ(Run("create table Широкая (" + fields + ")"), 0);
  EXPECT_EQ(Run("insert into Широкая values (" + values + ")"), 0) << "8 * 504 + 23 bytes";
  EXPECT_EQ(Run("update Широкая set Т0 = Т0 & 'яяя'"), 3047) << "4060 at most";
  ASSERT_EQ(Run("alter table Широкая add column М memo"), 0);
  EXPECT_EQ(Run("update Широкая set М = 'длинное значение'"), 3047);
  EXPECT_EQ(Run("update Широкая set Т0 = 'кратко', М = '" + Repeated("д", 5000) + "'"), 0);
  Reopen();
  EXPECT_EQ(Query("select Т0, len(М) from Широкая"), "Text кратко, Long 5000");
  EXPECT_EQ(Run("update Широкая set Т0 = Т1"), 3047);
  ExpectClean();
}

// A table that nobody has used is read from the file, until something changes.
TEST_F(ContainerTest, ATablesRowsAreReadOnWhereTheyLieAfterAChange) {
  ASSERT_EQ(Run("create table Ряд (Н long, И text(9))"), 0);
  for (const char* const row : {"3, 'c'", "1, 'b'", "4, null", "2, 'a'", "5, 'b'"})
    ASSERT_EQ(Run(std::string("insert into Ряд values (") + row + ")"), 0);
  ASSERT_EQ(Run("create index Вниз on Ряд (И desc)"), 0);
  const struct {
    const char* index;  // empty: as the rows lie
    const char* change;
    const char* rows;  // the change is made at the second one
  } cases[] = {
      {"", "", "31425"},
      {"Вниз", "", "31524"},
      {"", "delete from Ряд where Н = 3 or Н = 4", "3125"},
      {"Вниз", "delete from Ряд where Н = 1", "3.524"},
      {"Вниз", "update Ряд set Н = Н + 5", "36079"},
      {"", "insert into Ряд values (7, 'я')", "31425"},
  };
  for (const auto& c : cases) {
    Reopen();
    const auto rows = db->OpenRecordset("ряд", ports::RecordsetType::kTable);
    if (*c.index != '\0') rows->SetIndex(c.index);
    std::string read;
    for (int i = 0; !rows->AtEnd(); rows->MoveNext(), ++i) {
      engine->BeginTrans();
      if (i == 1 && *c.change != '\0') {
        EXPECT_EQ(Run(c.change), 0);
      }
      std::int32_t number = 0;
      const std::int32_t error =
          ErrorOf([&] { number = std::get<std::int32_t>(rows->Value(0)) % 10; });
      engine->CommitTrans();
      read += error == 3167 ? "." : std::to_string(number);
    }
    EXPECT_EQ(read, c.rows) << c.index << ": " << c.change;
    rows->MoveFirst();
    EXPECT_FALSE(rows->AtBeginning());
    rows->MovePrevious();
    EXPECT_TRUE(rows->AtBeginning());
    EXPECT_EQ(ErrorOf([&] { rows->Value(0); }), 3021);
    db->Close();
    EXPECT_EQ(ErrorOf([&] { rows->MoveLast(); }), 3420);
    db = engine->OpenDatabase(path, true, false);
    ASSERT_EQ(Run("delete from Ряд"), 0);
    for (const char* const row : {"3, 'c'", "1, 'b'", "4, null", "2, 'a'", "5, 'b'"})
      ASSERT_EQ(Run(std::string("insert into Ряд values (") + row + ")"), 0);
  }
}

// Whichever writing of the new file fails, the old one is as it was and the database still open.
TEST_F(ContainerTest, AFailureToWriteLeavesTheOldFile) {
  const tests::ScopedPorts scoped;
  tests::FaultyPageFiles pages(*scoped->page_files);
  tests::FaultyFileSystem files(*scoped->files);
  scoped->page_files = &pages;
  scoped->files = &files;
  Reopen();
  ASSERT_EQ(Run("update Бумаги set Текст = Текст & 'я'"), 0);
  const std::string old = sandbox.Read("база.mdb");
  const auto expect_refused = [&](std::int32_t error) {
    EXPECT_TRUE(error == ports::kDiskFull || error == ports::kDiskError) << error;
    EXPECT_EQ(sandbox.Read("база.mdb"), old);
    EXPECT_EQ(Query("select count(*) from Бумаги"), "Long 3");
  };
  for (std::size_t changes = 0; changes < 2; ++changes) {
    files.changes_left = changes;  // rights, then the name
    expect_refused(ErrorOf([&] { db->Close(); }));
    files.changes_left.reset();
    std::filesystem::remove(ToPath(path + ".writing"));
  }
  std::size_t failures = 0;
  for (;; ++failures) {
    pages.operations_left = failures;
    const std::int32_t error = ErrorOf([&] { db->Close(); });
    pages.operations_left.reset();
    if (error == 0) break;
    expect_refused(error);
    EXPECT_FALSE(sandbox.Has("база.mdb.writing"));
  }
  EXPECT_GE(failures, 4U) << "the pages and then the first one, each with a flush";
  db = engine->OpenDatabase(path, true, false);
  EXPECT_EQ(Query("select Текст from Бумаги where Ид = 3"), "Text я");
  ExpectClean();
}

TEST_F(ContainerTest, AnotherWriterOfTheNewFileIsRespected) {
  ASSERT_EQ(Run("delete from Бумаги"), 0);
  sandbox.Write("база.mdb.writing", "left over");
  sandbox.Write("база.mdb.writing.keys", "left over");
  {
    const auto held = ports::CurrentPorts().file_locks->TryLock(path + ".writing",
                                                                ports::FileLockMode::kExclusive);
    EXPECT_EQ(ErrorOf([&] { db->Close(); }), ports::kOpenedExclusively);
  }
  EXPECT_EQ(sandbox.Read("база.mdb.writing"), "left over");
  Reopen();
  EXPECT_FALSE(sandbox.Has("база.mdb.writing"));
  EXPECT_FALSE(sandbox.Has("база.mdb.writing.keys"));
  EXPECT_EQ(Query("select count(*) from Бумаги"), "Long 0");
}

// Another process changes the database after this one has opened the file and before it locks it.
// Windows exchanges no file that is open: there the other process is refused.
TEST_F(ContainerTest, AnOpenerFollowsTheNameToTheFileThatHasIt) {
  db->Close();
  const tests::ScopedPorts scoped;
  tests::FaultyPageFiles pages(*scoped->page_files);
  scoped->page_files = &pages;
  const bool is_exchanged = scoped->files->Separator() == '/';
  pages.after_opening = [this, is_exchanged] {
    const std::string words = " execute \"" + path + "\" \"insert into Папки values (3, 'чужая')\"";
    EXPECT_EQ(tmw::RunProcess("", "\"" + tests::ChildProgram() + "\"" + words, "", true, 0),
              is_exchanged ? 0 : 3);
  };
  db = engine->OpenDatabase(path, true, false);
  EXPECT_EQ(Run("insert into Папки values (4, 'своя')"), 0);
  db->Close();
  db = engine->OpenDatabase(path, true, false);
  EXPECT_EQ(Query("select Имя from Папки where Ид > 2 order by Ид"),
            is_exchanged ? "Text чужая; Text своя" : "Text своя");
}

}  // namespace
