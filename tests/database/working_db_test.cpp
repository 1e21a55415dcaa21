#include "database/working_db.h"

#include <algorithm>

#include "database/etalon_db.h"
#include "database/imp_table.h"
#include "database/migrations.h"
#include "foundation/file_names.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "tests/database/build_fixture.h"
#include "tests/fakes/scripted_engine.h"
#include "tests/support/caught.h"

namespace tests {
namespace {

using WorkingDbTest = BuildTest;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";

std::string Script(const std::string& from, const std::string& to, const std::string& actions,
                   const std::string& product = "TMW") {
  return "<" + product + "_Database_Update db_version_from=\"" + from + "\" db_version_to=\"" + to +
         "\">" + actions + "</" + product + "_Database_Update>";
}

std::string Sql(const std::string& statements, const std::string& attributes = "") {
  return "<Action type=\"sql\"" + attributes + ">" + statements + "</Action>";
}

class Hundredfold final : public tmw::Migration {
  std::string Name() const override { return "ConvertPfrCitizenship"; }
  void Run(ports::Database& database) override {
    if (database.Execute("update T set Ид = Ид * 100 where Ид < 100", true) == 0)
      tmw::RaiseProgramError("строк нет");
  }
};

TEST_F(WorkingDbTest, ScriptsRunInTheOrderOfTheirVersionsOrEndTheBuild) {
  const std::string mark = Sql("insert into T values (2, '1.1')");
  const std::string last = kDeclaration + Script("1.1.0", "1.2.0", "");
  const std::string first_box = "warning|Ошибка|Ошибка загрузки файла обновления \"" +
                                tmw::JoinPath(build.ScriptsFolder, "1.xml") + "\":\r\n";
  const std::string failed =
      "warning|Ошибка|Ошибка обновления базы данных до версии \"1.1.0\":\r\n";
  const std::string migration = "<Action type=\"customscript\" Name=\"ConvertPfrCitizenship\"/>";
  tmw::SupplyMigration(std::make_unique<Hundredfold>());
  const auto first = [](const std::string& actions) {
    return kDeclaration + Script("1.0.0", "1.1.0", actions);
  };
  const struct {
    std::vector<std::string> scripts;
    std::string box;   // empty: the build succeeds
    std::string rows;  // of T then
  } cases[] = {
      {{first(mark), last}, "", "1|Sодин\r\n2|S1.1\r\n"},
      {{kDeclaration + Script("1.1.1", "2.0.0", Sql("delete from T where Ид = 1")), first(mark),
        kDeclaration + Script("1.1.0", "1.1.1", Sql("update T set Имя = Имя &amp; '!'"))},
       "",
       "2|S1.1!\r\n"},
      {{first(mark), last, kDeclaration + Script("0", "no", "", "XYZ")},
       "",
       "1|Sодин\r\n2|S1.1\r\n"},
      {{first(Sql(";\r\n insert into T values (2, 'a;\"b') ;\t\r\n insert into T ([Ид], "
                  "[Имя]) values (3, \"c';d\"); create table [к;'л] (а long);")),
        last},
       "",
       "1|Sодин\r\n2|Sa;\"b\r\n3|Sc';d\r\n"},
      {{first(Sql("insert into T values (2, 'x'); insert into Нет values (1); "
                  "insert into T values (3, 'y')",
                  " SuppressErrors=\"yes\"")),
        last},
       "",
       "1|Sодин\r\n2|Sx\r\n3|Sy\r\n"},
      {{first("<Action type=\"addfield\" Table=\"T\" FieldName=\"Имя\" Type=\"text\" Caption=\"x\" "
              "SuppressErrors=\"1\"/>" +
              mark),
        last},
       "",
       "1|Sодин\r\n2|S1.1\r\n"},
      {{last},
       "warning|Ошибка загрузки|Отсутствует сценарий обновления базы данных для версии 1.0.0.",
       ""},
      {{first(mark)},
       "warning|Ошибка загрузки|Отсутствует сценарий обновления базы данных для версии 1.1.0.",
       ""},
      {{first(mark), first("")},
       "warning|Ошибка загрузки|Имеется несколько скриптов обновления базы данных для одной и той "
       "же версии (1.0.0).",
       ""},
      {{kDeclaration + Script("1.0.0", "1.0.0", "")},
       first_box + "Конечная версия базы данных (1.0.0) не больше начальной (1.0.0).",
       ""},
      {{kDeclaration + Script("1.0", "1.1.0", "")},
       first_box + "Ошибочное значение db_version_from (1.0).",
       ""},
      {{kDeclaration + Script("1.0.0", "1.2", "")},
       first_box + "Ошибочное значение db_version_to (1.2).",
       ""},
      {{Script("1.0.0", "1.1.0", "")},
       first_box + "Корневой узел имеет неправильное имя (\"\").",
       ""},
      {{kDeclaration + "<!-- x -->" + Script("1.0.0", "1.1.0", "")},
       first_box + "Корневой узел имеет неправильное имя (\"\").",
       ""},
      {{kDeclaration + "<TMW/>"},
       first_box + "Корневой узел имеет неправильное имя (\"TMW\").",
       ""},
      {{kDeclaration + "<TMW_Database_Update db_version_to=\"1.1.0\"/>"},
       first_box + "Missing attribute /TMW_Database_Update/@db_version_from",
       ""},
      {{"<?xml"}, first_box + "   Reason: ", ""},
      {{first("<Action type=\"SQL\">x</Action>")},
       first_box + "Ошибочный тип узла Action (\"SQL\").",
       ""},
      {{first("<Action type=\"addfield\" Table=\"T\" FieldName=\"a\" Type=\"Text\"/>")},
       first_box + "Ошибочный тип создаваемого поля (\"Text\").",
       ""},
      {{first(mark + Sql("insert into Нет values (1)")), last}, failed, ""},
      {{first("<Action type=\"addfield\" Table=\"Нет\" FieldName=\"a\" Type=\"long\" "
              "SuppressErrors=\"yes\"/>")},
       failed + "Таблица \"Нет\" не найдена\r\n(при добавлении поля Нет.a)",
       ""},
      {{first(migration), last}, "", "100|Sодин\r\n"},
      {{first(migration + migration)},
       failed + "Ошибка при выполнении скрипта ConvertPfrCitizenship:\r\nстрок нет",
       ""},
      {{first("<Action type=\"customscript\" Name=\"NormalizePfrNumbers\"/>")},
       failed + "Ошибка при выполнении скрипта NormalizePfrNumbers:\r\nВ этой версии программы "
                "обновления такого преобразования данных нет.",
       ""},
      {{first("<Action type=\"customscript\" Name=\"Нет\"/>")},
       failed + "Ошибка при выполнении скрипта Нет:\r\nПрограмме обновления не известно",
       ""},
  };
  const std::string user_database = sandbox.Read("db/Tamrin.mdb");
  for (const auto& c : cases) {
    std::filesystem::remove_all(ToPath(build.ScriptsFolder));
    for (std::size_t i = 0; i < c.scripts.size(); ++i)
      sandbox.Write("DBUpdates/" + std::to_string(i + 1) + ".xml", c.scripts[i]);
    front_end.log.clear();
    const bool result = tmw::BuildWorkingDB(build, *this);
    const std::string shown = front_end.log.empty() ? "" : front_end.log[0];
    EXPECT_EQ(result, c.box.empty()) << c.scripts[0] << shown;
    EXPECT_LE(front_end.log.size(), 1U) << shown;
    EXPECT_TRUE(c.box.empty() ? shown.empty() : shown.starts_with(c.box)) << c.box << "\n" << shown;
    if (c.box.empty()) {
      EXPECT_NE(Text("DBUpdates/Tamrin.mdb", "T").find("Rows\r\n" + c.rows + "EndRows"),
                std::string::npos)
          << c.rows;
    }
    EXPECT_EQ(sandbox.Read("db/Tamrin.mdb"), user_database);
  }
  tmw::WithdrawMigration("ConvertPfrCitizenship");
}

TEST_F(WorkingDbTest, EveryAttributeOfAnAddedFieldIsInTheDatabase) {
  build.TargetVersion = {1, 1, 0};
  std::string actions;
  // The product's engines have no fields of the type "char": the word is known, the field refused.
  actions +=
      "<Action type=\"addfield\" Table=\"T\" FieldName=\"char\" Type=\"char\" "
      "SuppressErrors=\"yes\"/>";
  for (const char* const type : {"text", "date", "integer", "boolean", "byte", "currency", "double",
                                 "long", "memo", "single"}) {
    actions += "<Action type=\"addfield\" Table=\"t\" FieldName=\"" + std::string(type) +
               "\" Type=\"" + type + "\"/>";
  }
  actions +=
      "<Action type=\"addfield\" Table=\"T\" FieldName=\"Полное\" Type=\"text\" Size=\"33\" "
      "AllowZeroString=\"yes\" DefaultValue=\"&quot;да&quot;\" UnicodeCompression=\"true\" "
      "Description=\"Описание\" Caption=\"Подпись\" Format=\"@@\"/>"
      "<Action type=\"sql\">delete from T</Action>"
      "<Action type=\"addfield\" Table=\"T\" FieldName=\"Нужное\" Type=\"long\" NotNull=\"1\" "
      "DefaultValue=\"\" UnicodeCompression=\"no\"/>"
      "<Action type=\"addfield\" Table=\"T\" FieldName=\"Счёт\" Type=\"long\" Counter=\"yes\"/>";
  sandbox.Write("DBUpdates/1.xml", kDeclaration + Script("1.0.0", "1.1.0", actions));
  ASSERT_TRUE(tmw::BuildWorkingDB(build, *this)) << front_end.log[0];
  const auto database = Open("DBUpdates/Tamrin.mdb");
  const auto fields = database->Table("T").fields;
  std::string words;
  for (const auto& field : fields) {
    words += std::to_string(static_cast<int>(field.type)) + "," + std::to_string(field.size) +
             (field.required ? ",required" : "") + (field.allow_zero_length ? ",zero" : "") +
             (field.attributes & ports::kAutoIncrementField ? ",counter" : "") + " ";
  }
  EXPECT_EQ(words,
            "4,4 10,50,zero 10,255 8,8 3,2 1,1 2,1 5,8 7,8 4,4 12,0 6,4 10,33,zero 4,4,required "
            "4,4,counter ");
  EXPECT_EQ(fields[12].default_value, "\"да\"");
  const auto property = [&](const char* field, const char* name) {
    return database->FieldProperty("T", field, name);
  };
  EXPECT_EQ(property("Полное", "Description"), ports::DatabaseValue(std::string("Описание")));
  EXPECT_EQ(property("Полное", "Caption"), ports::DatabaseValue(std::string("Подпись")));
  EXPECT_EQ(property("Полное", "Format"), ports::DatabaseValue(std::string("@@")));
  EXPECT_EQ(property("Полное", "UnicodeCompression"), ports::DatabaseValue(true));
  EXPECT_EQ(property("Нужное", "UnicodeCompression"), ports::DatabaseValue(false));
  EXPECT_EQ(property("Нужное", "Caption"), std::nullopt);
}

TEST_F(WorkingDbTest, ACancelEndsTheBuildAtEachQuestion) {
  tables = {{true, "T", "", 0, "", false}, {false, "С", "", 0, "", true}};
  sandbox.Write("DBStruct/T.tablestruct", "\xEF\xBB\xBFTable:T\r\nField:Ид|Long|4\r\nEndTable\r\n");
  sandbox.Write("Loaded/С.table",
                "\xEF\xBB\xBFTable:С\r\nField:а|Long|4\r\nRows\r\n5\r\nEndRows\r\nEndTable\r\n");
  sandbox.Write("DBUpdates/1.xml", kDeclaration + Script("1.0.0", "1.2.0", ""));
  const std::string user_database = sandbox.Read("db/Tamrin.mdb");
  int cancelled = 0;
  for (const auto& step : {tmw::BuildEtalonDB, tmw::BuildWorkingDB}) {
    questions_left = cancelled = 0;
    for (; !step(build, *this); questions_left = ++cancelled) {
      ASSERT_LT(cancelled, 20);
      EXPECT_EQ(main_action + sub_action, "");
      EXPECT_EQ(sandbox.Read("db/Tamrin.mdb"), user_database);
    }
    EXPECT_GE(cancelled, 5);
  }
  EXPECT_EQ(front_end.log, std::vector<std::string>{});
  EXPECT_EQ(Text("DBStruct/Tamrin_LastVer.mdb", "С"), Text("DBUpdates/Tamrin.mdb", "С"));
}

TEST_F(WorkingDbTest, AVersionThatIsNoWholeNumberEndsTheBuild) {
  Change("db/Tamrin.mdb", {"update DBVersion set BuildNumber = 0.5"});
  EXPECT_EQ(Caught([&] { (void)tmw::BuildWorkingDB(build, *this); }).Description,
            "В таблице DBVersion вместо номера версии стоит другое значение.");
}

TEST_F(WorkingDbTest, WhatTheMachineLacksIsNeverSuppressed) {
  sandbox.Write("DBUpdates/1.xml", kDeclaration + Script("1.0.0", "1.2.0",
                                                         Sql("insert into T values (5, 'x')",
                                                             " SuppressErrors=\"yes\"")));
  ScriptedEngine engine(*ports->database);
  ports->database = &engine;
  for (const std::int32_t number : {3022, 3078, 3314}) {
    engine.statement_failures = {number};
    EXPECT_TRUE(tmw::BuildWorkingDB(build, *this)) << number;
  }
  for (const std::int32_t number : {3014, 3026, 3035, 3036, 3037, 3040, 3043, 3048, 3049, 3052,
                                    3183, 3343, static_cast<std::int32_t>(0x8007000E)}) {
    engine.statement_failures = {number};
    EXPECT_FALSE(tmw::BuildWorkingDB(build, *this)) << number;
  }
}

TEST_F(WorkingDbTest, DictionariesThatStayAreCarriedOverWithTheirContent) {
  Change("db/Tamrin.mdb",
         {"create table А (Ид long constraint Ключ primary key, Имя text(20))",
          "insert into А values (2, 'ё|^')", "insert into А values (1, null)",
          "create table Б (Ид long, Сумма currency)", "insert into Б values (1, 0.0001)"});
  for (const char* const name : {"А", "Б"}) {
    tables.push_back({false, name, "", 0, "", false});
  }
  std::vector<std::string> actions;
  const std::string user = tmw::JoinPath(sandbox.Path("db"), "Tamrin.mdb");
  const std::string reference = tmw::JoinPath(sandbox.Path("DBStruct"), "Tamrin_LastVer.mdb");
  ScriptedEngine engine(*ports->database);
  on_sub_action = [&, &own = *ports->database](const std::string& text) {
    actions.push_back(text);
    if (text != "Удаление устаревших таблиц...") return;  // the copy is ready by then
    const auto database = own.OpenDatabase(user, true, false);
    database->Execute("insert into Б values (2, 7)", true);
    database->Close();
  };
  ports->database = &engine;
  ASSERT_TRUE(tmw::BuildEtalonDB(build, *this));
  EXPECT_EQ(engine.log,
            (std::vector<std::string>{"compact " + user, "open " + reference, "open " + user,
                                      "idle 8", "idle 1", "compact " + reference}))
      << "the user database is opened once";
  EXPECT_EQ(actions[4], "Перенос справочника А ...");
  EXPECT_EQ(actions[5], "Перенос справочника Б ...");
  for (const char* const name : {"А", "Б"}) {
    EXPECT_EQ(Text("DBStruct/Tamrin_LastVer.mdb", name), Text("db/Tamrin.mdb", name));
  }
  EXPECT_NE(Text("DBStruct/Tamrin_LastVer.mdb", "А").find("\r\n1|\r\n2|Sё^2^1\r\n"),
            std::string::npos);
}

TEST_F(WorkingDbTest, ADifferentNumberOfRowsEndsTheBuild) {
  on_sub_action = [this](const std::string& text) {
    if (text != "Открытие базы данных...") return;
    const auto user = Open("db/Tamrin.mdb");
    user->Execute("insert into T values (9, 'девять')", true);
    user->Close();
  };
  EXPECT_FALSE(tmw::BuildWorkingDB(build, *this));
  on_sub_action = nullptr;
  const std::string reference = sandbox.Write("copy.mdb", sandbox.Read("db/Tamrin.mdb"));
  tables = {{true, "T", "", 0, "", false}};
  sandbox.Write("DBStruct/T.tablestruct", "\xEF\xBB\xBFTable:T\r\nField:Ид|Long|4\r\nEndTable\r\n");
  const auto copy = Open("copy.mdb");
  tmw::HeldRelations relations(*copy);
  on_progress = [&](std::int32_t) { copy->Execute("insert into T values (9)", true); };
  EXPECT_FALSE(tmw::CreateTablesInEtalonDB(build, *this, *copy, relations));
  const std::string rest = ". Обновление прервано, рабочая база данных не изменена.";
  EXPECT_EQ(
      front_end.log,
      (std::vector<std::string>{
          "warning|Ошибка загрузки|В новой базе данных в таблице \"T\" строк 1, а должно быть 2" +
              rest,
          "warning|Ошибка загрузки|В новой базе данных в таблице \"T\" строк 1, а должно быть 0" +
              rest}));
}

TEST_F(WorkingDbTest, TwoHundredThousandRowsComeThroughValueForValue) {
  std::string text =
      "Table:Д\r\nField:Ид|Long|4\r\nField:Имя|Text|60\r\nField:Сумма|Curr|8\r\n"
      "Field:Дата|Date|8\r\nIndex:Ключ|Primary|Fields:Ид;\r\nRows\r\n";
  for (int i = 1; i <= 200000; ++i) {
    const std::string n = std::to_string(i);
    text += n + (i % 3 == 0 ? "|" : "|SЁлка ^2 ^3№" + n) + "|" + n + ".0001|d" + n + "\r\n";
  }
  const auto user = Open("db/Tamrin.mdb");
  tmw::ImpTable().ImportFromString(text + "EndRows\r\nEndTable\r\n", *user);
  user->Close();
  sandbox.Write("DBUpdates/1.xml", kDeclaration + Script("1.0.0", "1.2.0", Sql("delete from T")));
  const std::string before = Text("db/Tamrin.mdb", "Д");
  ASSERT_EQ(std::count(before.begin(), before.end(), '\n'), 200000 + 9);
  ASSERT_TRUE(tmw::BuildWorkingDB(build, *this)) << front_end.log[0];
  EXPECT_TRUE(Text("DBUpdates/Tamrin.mdb", "Д") == before);
}

}  // namespace
}  // namespace tests
