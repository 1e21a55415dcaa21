#include <algorithm>

#include "database/etalon_db.h"
#include "database/imp_table.h"
#include "tests/database/build_fixture.h"

namespace tests {
namespace {

// The tables of a product that refer to each other: dictionaries, the user's own, and one that the
// release does not know.
class BuiltRelationsTest : public BuildTest {
 protected:
  void SetUp() override {
    Change(
        "db/Tamrin.mdb",
        {"create table Группы (Ид long constraint Ключ primary key, Выше long)",
         "insert into Группы values (1, null)", "insert into Группы values (2, 1)",
         "create table Ставки (Ид long constraint Ключ primary key, Группа long, Имя text(9))",
         "insert into Ставки values (1, 1, 'а')", "insert into Ставки values (2, 2, 'б')",
         "create table Папки (Ид long constraint Ключ primary key)", "insert into Папки values (5)",
         "create table Старое (Ид long constraint Ключ primary key, Папка long)",
         "insert into Старое values (7, 5)",
         "create table Бумаги (Ид long constraint Ключ primary key, Ставка long, Папка long,"
         " Старое long)",
         "insert into Бумаги values (1, 2, 5, 7)", "insert into Бумаги values (2, 2, 5, null)"});
    original = sandbox.Read("db/Tamrin.mdb");
    WriteDictionary("Группы", kGroups);
    WriteDictionary("Ставки", kRates);
    for (const char* const table : {"T", "Папки", "Бумаги"}) {
      sandbox.Write(
          "DBStruct/" + std::string(table) + ".tablestruct",
          "\xEF\xBB\xBF" + tmw::ExportTableToString(table, true, Open("db/Tamrin.mdb").get()));
    }
    SetScript("");
    tables = {{true, "T", "", 0, "", false},
              {false, "Группы", "", 0, "", true},
              {false, "Ставки", "", 0, "", true},
              {true, "Папки", "", 0, "", false},
              {true, "Бумаги", "", 0, "", false}};
  }

  void WriteDictionary(const std::string& table, const std::string& lines) {
    sandbox.Write("Loaded/" + table + ".table",
                  "\xEF\xBB\xBFTable:" + table + "\r\n" + lines + "EndRows\r\nEndTable\r\n");
  }

  void SetScript(const std::string& statements) {
    sandbox.Write("DBUpdates/1.xml",
                  "<?xml version=\"1.0\"?><TMW_Database_Update db_version_from=\"1.0.0\" "
                  "db_version_to=\"1.2.0\"><Action type=\"sql\">" +
                      statements + "</Action></TMW_Database_Update>");
  }

  // Begins anew with these statements run on the user's database.
  void Reset(const std::vector<std::string>& statements) {
    sandbox.Write("db/Tamrin.mdb", original);
    Change("db/Tamrin.mdb", statements);
    front_end.log.clear();
    sub_actions.clear();
    on_sub_action = [this](const std::string& text) { sub_actions.push_back(text); };
  }

  // What is replaced first must not matter.
  void ForBothOrders(const std::function<void()>& check) {
    check();
    std::reverse(tables.begin(), tables.end());
    check();
  }

  // "Имя: Бумаги(Ставка) -> Ставки(Ид) 256", and the plain indexes of all tables but their keys.
  std::string Relations(const std::string& path) const {
    const auto database = Open(path);
    std::string text;
    for (const ports::RelationDefinition& relation : database->Relations()) {
      text += relation.name + ": " + relation.foreign_table + "(" +
              relation.fields[0].foreign_name + ") -> " + relation.table + "(" +
              relation.fields[0].name + ") " + std::to_string(relation.attributes) + ";";
    }
    for (const ports::TableSummary& table : database->Tables()) {
      for (const ports::IndexDefinition& index : database->Table(table.name).indexes)
        text += index.foreign || index.primary ? "" : "index " + index.name + ";";
    }
    return text;
  }

  const std::string kGroups =
      "Field:Ид|Long|4\r\nField:Выше|Long|4\r\nIndex:Ключ|Primary|Fields:Ид;\r\nRows\r\n"
      "1|\r\n2|1\r\n3|1\r\n";
  const std::string kRates =
      "Field:Ид|Long|4\r\nField:Группа|Long|4\r\nField:Имя|Text|9\r\n"
      "Index:Ключ|Primary|Fields:Ид;\r\nRows\r\n1|1|Sа\r\n2|2|Sб\r\n3|3|Sв\r\n";
  std::string original;
  std::vector<std::string> sub_actions;
};

#define TO_RATES "alter table Бумаги add constraint С foreign key (Ставка) references Ставки (Ид)"

TEST_F(BuiltRelationsTest, BothDatabasesHaveTheRelationsOfTheUsersOne) {
  // DAO makes no relation that sets to Null.
  const bool sets_null = ports->database->TakesDefinitionsBack();
  const std::string among_kept =
      "А: Бумаги(Ставка) -> Ставки(Ид) 256;Б: Ставки(Группа) -> Группы(Ид) " +
      std::string(sets_null ? "8192" : "4096") +
      ";В: Группы(Выше) -> Группы(Ид) 0;Г: Бумаги(Папка) -> Папки(Ид) 0;";
  ForBothOrders([&] {
    Reset(
        {"alter table Бумаги add constraint А foreign key (Ставка) references Ставки on update "
         "cascade",
         "alter table Ставки add constraint Б foreign key (Группа) references Группы on delete " +
             std::string(sets_null ? "set null" : "cascade"),
         "alter table Группы add constraint В foreign key (Выше) references Группы",
         "alter table Бумаги add constraint Г foreign key (Папка) references Папки",
         // what the release does not know is in the working database only
         "alter table Бумаги add constraint Д foreign key (Старое) references Старое",
         "alter table Старое add constraint Е foreign key (Папка) references Папки"});
    ASSERT_TRUE(tmw::BuildEtalonDB(build, *this));
    EXPECT_EQ(Relations("DBStruct/Tamrin_LastVer.mdb"), among_kept);
    ASSERT_TRUE(tmw::BuildWorkingDB(build, *this));
    EXPECT_EQ(Relations("DBUpdates/Tamrin.mdb"),
              among_kept + "Д: Бумаги(Старое) -> Старое(Ид) 0;Е: Старое(Папка) -> Папки(Ид) 0;");
    EXPECT_EQ(front_end.log, std::vector<std::string>{});
  });
}

TEST_F(BuiltRelationsTest, AReferenceDatabaseLeavesOutWhatItsRowsDoNotAllow) {
  // The user's tables are empty there.
  Reset({"alter table Группы add constraint С foreign key (Выше) references Бумаги"});
  tables = {{false, "Группы", "", 0, "", true}, {true, "Бумаги", "", 0, "", false}};
  ASSERT_TRUE(tmw::BuildEtalonDB(build, *this));
  EXPECT_EQ(Relations("DBStruct/Tamrin_LastVer.mdb"), "");
  const std::string note =
      "Связь \"С\" таблицы \"Группы\" (поле \"Выше\") с таблицей \"Бумаги\" (поле \"Ид\") не "
      "восстановлена: в таблице \"Группы\" строк, которым ничего не соответствует в таблице "
      "\"Бумаги\": 2; первые значения: 1.";
  EXPECT_EQ(std::count(sub_actions.begin(), sub_actions.end(), note), 1);
  EXPECT_EQ(front_end.log, std::vector<std::string>{});
}

TEST_F(BuiltRelationsTest, WhatDoesNotFitIsLeftToTheScriptsAndEndsTheBuildOtherwise) {
  const std::string groups_without_two = "1|\r\n3|1\r\n";
  const std::string key = "Index:Ключ|Primary|Fields:Ид;\r\n";
  const auto rates = [&](const std::string& field, const std::string& index,
                         const std::string& rows) {
    return field + "Field:Группа|Long|4\r\n" + index + "Rows\r\n" + rows;
  };
  const std::string id = "Field:Ид|Long|4\r\n";
  const std::string few = rates(id, key, "1|1\r\n3|1\r\n");
  const std::string start =
      "warning|Ошибка загрузки|Связь \"С\" таблицы \"Бумаги\" (поле \"Ставка\") с таблицей "
      "\"Ставки\" (поле \"Ид\") "
      "не "
      "восстановлена: ";
  const std::string end = "\r\n\r\nОбновление прервано, рабочая база данных не изменена.";
  const std::string two_rows =
      "в таблице \"Бумаги\" строк, которым ничего не соответствует в таблице \"Ставки\": 2; первые "
      "значения: 2.";
  const struct {
    std::string dictionary;
    std::string script;
    std::string told;       // empty: the build succeeds
    std::string relations;  // then
  } cases[] = {
      {few, "", two_rows, ""},
      {few, "update Бумаги set Ставка = 3", "", "С: Бумаги(Ставка) -> Ставки(Ид) 0;"},
      {few, "insert into Ставки values (2, 1)", "", "С: Бумаги(Ставка) -> Ставки(Ид) 0;"},
      {few, "alter table [бумаги] drop constraint [с]", "", ""},
      {few, "drop table Бумаги", "", ""},
      {few,
       "update Бумаги set Ставка = 5; alter table Бумаги add constraint С foreign key (Ставка) "
       "references Папки",
       "", "С: Бумаги(Ставка) -> Папки(Ид) 0;"},
      {few,
       "alter table Бумаги add constraint С foreign key (Папка) references Папки; alter table "
       "Бумаги drop constraint С",
       "", ""},
      {few, "drop table Ставки", "таблицы \"Ставки\" больше нет.", ""},
      {few, "create index С on Бумаги (Ид); update Бумаги set Ставка = 3",
       "Индекс \"С\" уже существует.", ""},
      {rates("Field:Новый|Long|4\r\n", "", "1|1\r\n"), "",
       "в таблице \"Ставки\" больше нет поля \"Ид\".", ""},
      {rates("Field:Ид|Text|4\r\n", key, "S2|1\r\n"), "",
       "поля \"Ставка\" и \"Ид\" теперь разных типов.", ""},
      {rates(id, "", "2|1\r\n"), "",
       "в таблице \"Ставки\" больше нет уникального индекса по полю \"Ид\".", ""},
      {rates(id, "", "2|1\r\n"), "create unique index К on Ставки (Ид)", "",
       "С: Бумаги(Ставка) -> Ставки(Ид) 0;index К;"},
      // one that fits is there while the scripts run
      {kRates, "alter table Бумаги drop constraint С; update Бумаги set Ставка = 9", "", ""},
  };
  for (const auto& c : cases) {
    WriteDictionary("Ставки", c.dictionary);
    SetScript(c.script);
    Reset({TO_RATES});
    const std::string user_database = sandbox.Read("db/Tamrin.mdb");
    EXPECT_EQ(tmw::BuildWorkingDB(build, *this), c.told.empty()) << c.script;
    const std::string told = front_end.log.empty() ? "" : front_end.log[0];
    EXPECT_EQ(told, c.told.empty() ? "" : start + c.told + end);
    if (c.told.empty()) {
      EXPECT_EQ(Relations("DBUpdates/Tamrin.mdb"), c.relations) << c.script;
    }
    EXPECT_EQ(sandbox.Read("db/Tamrin.mdb"), user_database);
  }
  WriteDictionary("Ставки", kRates);
  SetScript("update Бумаги set Ставка = 9");
  Reset({TO_RATES});
  EXPECT_FALSE(tmw::BuildWorkingDB(build, *this));
  EXPECT_NE(front_end.log.at(0).find("нет связанной записи"), std::string::npos);
}

TEST_F(BuiltRelationsTest, AllThatDoesNotFitIsNamedAndRelationsThatOnlyJoinAlwaysFit) {
  WriteDictionary("Ставки", "Field:Ид|Long|4\r\nIndex:Ключ|Primary|Fields:Ид;\r\nRows\r\n");
  std::vector<std::string> statements;
  for (const char* const name : {"С1", "С2", "С3", "С4", "С5"}) {
    statements.push_back("alter table Бумаги add constraint " + std::string(name) +
                         " foreign key (Ставка) references Ставки");
  }
  Reset(statements);
  EXPECT_FALSE(tmw::BuildWorkingDB(build, *this));
  const std::string& told = front_end.log.at(0);
  EXPECT_NE(told.find("\"С3\""), std::string::npos);
  EXPECT_NE(told.find("\r\n\r\nНе восстановлено и других связей: 2.\r\n\r\n"), std::string::npos);
  Reset({});
  const auto user = Open("db/Tamrin.mdb");
  user->CreateRelation({"С",
                        "Ставки",
                        "Бумаги",
                        ports::kRelationDontEnforce | ports::kRelationLeft,
                        {{"Ид", "Ставка"}}});
  user->Close();
  EXPECT_TRUE(tmw::BuildWorkingDB(build, *this));
  EXPECT_EQ(Relations("DBUpdates/Tamrin.mdb"), "С: Бумаги(Ставка) -> Ставки(Ид) 16777218;");
}

TEST_F(BuiltRelationsTest, ARelationsOwnIndexIsNeitherWrittenNorMadeTwice) {
  Reset({"alter table Ставки add constraint С foreign key (Группа) references Группы"});
  const std::string text = Text("db/Tamrin.mdb", "Ставки");
  EXPECT_EQ(text.find("Index:С"), std::string::npos);
  EXPECT_NE(text.find("Index:Ключ|Primary|Fields:Ид;\r\nRows"), std::string::npos);
  // A text of an engine that lists it like any other.
  const std::string listed = kRates.substr(0, kRates.find("Rows")) + "Index:С|Fields:Группа;\r\n" +
                             kRates.substr(kRates.find("Rows"));
  WriteDictionary("Ставки", listed);
  ASSERT_TRUE(tmw::BuildWorkingDB(build, *this));
  EXPECT_EQ(Relations("DBUpdates/Tamrin.mdb"), "С: Ставки(Группа) -> Группы(Ид) 0;");
  ASSERT_TRUE(tmw::BuildEtalonDB(build, *this));
  EXPECT_EQ(Relations("DBStruct/Tamrin_LastVer.mdb"), "С: Ставки(Группа) -> Группы(Ид) 0;");
  // Without a relation of that name it is an index like any other.
  Reset({});
  ASSERT_TRUE(tmw::BuildWorkingDB(build, *this));
  EXPECT_EQ(Relations("DBUpdates/Tamrin.mdb"), "index С;");
}

}  // namespace
}  // namespace tests
