#include <gtest/gtest.h>

#include "ports/database.h"
#include "ports/ports.h"
#include "publish/checker.h"
#include "publish/rehearsal_report.h"
#include "tests/fakes/hand_clock.h"
#include "tests/publish/sample.h"
#include "tests/support/scoped_ports.h"

namespace tests {
namespace {

using Lines = std::vector<std::string>;

// A release whose user table has grown since the version of the user's database.
class RehearsalTest : public testing::Test {
 protected:
  RehearsalTest() {
    ports->clock = &clock;
    sample.Execute("alter table Документы add column Дата datetime");
    sample.Execute("alter table Документы add column Кто text(9) not null");
    sample.Execute("create unique index Даты on Документы (Дата)");
    ports->database->CreateDatabase(sandbox.Path("old.mdb"))->Close();
    Execute("old.mdb",
            {"create table DBVersion (MajorVersion long, MinorVersion long, "
             "BuildNumber long)",
             "insert into DBVersion values (3, 5, 0)", "create table Ставки (Ид long primary key)",
             "insert into Ставки values (9)",
             "create table Документы (Ид counter primary key, Сумма currency, Дата long)",
             "insert into Документы (Сумма, Дата) values (1, 9)", "create table Мои (a long)",
             "insert into Документы (Сумма) values (2)"});
    Script("1.xml", "3.5.0", "3.5.7", "update Документы set Сумма = Сумма * 2; drop table Нет",
           " SuppressErrors=\"yes\"");
  }

  void Execute(const std::string& name, const Lines& statements) const {
    const auto database = ports->database->OpenDatabase(sandbox.Path(name), true, false);
    for (const std::string& sql : statements)
      database->Execute(sql, true);
    database->Close();
  }

  // An equal statement stands in a comment before the real ones.
  void Script(const std::string& name, const std::string& from, const std::string& to,
              const std::string& statements, const std::string& attributes = {}) const {
    sandbox.Write("scripts/" + name,
                  "<?xml version=\"1.0\"?>\n<TMW_Database_Update "
                  "db_version_from=\"" +
                      from + "\" db_version_to=\"" + to + "\"><!-- " + statements +
                      " -->\n<Action type=\"sql\"" + attributes + ">\n" + statements +
                      "</Action></TMW_Database_Update>");
  }

  // Publishes with a rehearsal and returns the report and the faults.
  std::string Publish(const std::string& database) {
    sample.options.tries = {sandbox.Path(database)};
    sample.options.may_replace = true;
    sandbox.Write("release.xml", sample.description);
    tools::Progress progress(false);
    publish::Faults faults;
    const auto made = publish::Publish(sample.options, progress, faults);
    std::string text;
    for (const publish::Fault& fault : faults.All())
      text += fault.text + "\n";
    for (const publish::TriedDatabase& tried : made.tried)
      text += publish::WordsOf(tried);
    return text;
  }

  ScopedPorts ports;
  HandClock clock;
  Sandbox sandbox;
  Sample sample{sandbox};
};

TEST_F(RehearsalTest, SaysWhatTheUserGetsAndWhatAScriptForgot) {
  Script(
      "2.xml", "3.5.7", "3.6.0",
      "delete from Документы where Сумма &gt; 2;\n alter table Документы add column Кто text(5)");
  const std::string before = sandbox.Read("old.mdb");
  const std::string report = Publish("old.mdb");
  for (const char* const line :
       {"in a way that matters: 3 (", "old.mdb: 3.5.0 -> 3.6.0\n",
        "  script 1.xml (3.5.0 -> 3.5.7): statements: 2, rows: 2, 0.00 s\n"
        "    passed over in line 4: \"drop table Нет\": ",
        "  script 2.xml (3.5.7 -> 3.6.0): statements: 2, rows: 1, 0.00 s\n",
        "  dictionaries replaced: 1, up to date: 0\n", "  rows of all tables: 4 -> 4\n",
        "      Документы  2       1\n      Ставки     1       2\n",
        "    !  Документы.Дата           DATETIME", "                            LONG\n",
        "TEXT(9) NOT NULL ALLOW ZERO LENGTH                  TEXT(5) ALLOW ZERO LENGTH",
        "    !  index Даты of Документы  CREATE UNIQUE INDEX [Даты] ON [Документы] ([Дата])",
        "       table Мои                -  "})
    EXPECT_NE(report.find(line), std::string::npos) << line << "\n" << report;
  EXPECT_EQ(report.find("COUNTER"), std::string::npos) << "no text of a table carries it" << report;
  EXPECT_FALSE(sandbox.Has("server/TMW_version.dat"));
  EXPECT_TRUE(sandbox.Read("old.mdb") == before);
  sample.options.tries.clear();
  ASSERT_EQ(sample.Publish(), Lines{});
  publish::CheckOptions options;
  options.tries = {sandbox.Path("old.mdb")};
  tools::Progress progress(false);
  publish::Faults faults;
  const auto checked = publish::CheckRelease(sandbox.Path("server"), options, progress, faults);
  EXPECT_TRUE(report.ends_with(publish::WordsOf(checked.tried.at(0)))) << "a check finds the same";
}

TEST_F(RehearsalTest, AFailingUpdateIsNamedAndNothingIsAnnounced) {
  const struct {
    const char* change;  // of the user's database
    const char* statements;
    const char* fault;
  } cases[] = {
      {"", "select 1", "script 2.xml, line 4, statement \"select 1\": "},
      {"", "drop table Документы;\nupdate Докум\n set Ид = '&lt;'",
       "script 2.xml, line 7, statement \"update Докум  set Ид = '<'\": "},
      {"", "delete from Ставки",
       "The dictionary Ставки has 2 rows in the reference database, and its user would have 0: "},
      {"update DBVersion set MinorVersion = 7", "",
       "It is of version 3.7.0, newer than the release's 3.6.0: "},
      {"update DBVersion set MinorVersion = 4", "", "Отсутствует сценарий обновления базы данных"},
      {"delete from DBVersion", "", "Its version cannot be read: "},
      {"alter table Документы add constraint С foreign key (Дата) references Ставки (Ид)",
       "delete from Мои", "Связь \"С\" таблицы"},
  };
  for (const auto& c : cases) {
    Script("2.xml", "3.5.7", "3.6.0", c.statements);
    sandbox.Write("changed.mdb", sandbox.Read("old.mdb"));
    if (*c.change != '\0') Execute("changed.mdb", {c.change});
    const std::string report = Publish("changed.mdb");
    EXPECT_NE(report.find(c.fault), std::string::npos) << c.fault << "\n" << report;
  }
  sandbox.Write("none.mdb", "no database");
  EXPECT_NE(Publish("none.mdb").find("It cannot be opened: "), std::string::npos);
  EXPECT_FALSE(sandbox.Has("server/TMW_version.dat"));
}

}  // namespace
}  // namespace tests
