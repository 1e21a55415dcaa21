#include "database/imp_table.h"

#include <gtest/gtest.h>

#include <string>

#include "database/table_export.h"
#include "database/transaction.h"
#include "foundation/program_error.h"
#include "ports/ports.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"

namespace {

class ImpTableTest : public testing::Test {
 protected:
  std::string Export(const std::string& table, ports::Database& from) const {
    return tmw::ExportTableToString(table, false, &from);
  }

  std::string Reimported(const std::string& table) const {
    const auto other = ports::CurrentPorts().database->CreateDatabase(
        sandbox.Path("копия" + std::to_string(++copies)));
    tmw::ImpTable importer;
    importer.SetTableName(table);
    importer.ImportFromString(Export(table, *db), *other);
    return Export(table, *other);
  }

  tests::Sandbox sandbox;
  mutable int copies = 0;
  std::unique_ptr<ports::Database> db =
      ports::CurrentPorts().database->CreateDatabase(sandbox.Path("b.mdb"));
};

TEST_F(ImpTableTest, EveryTypeValueAndIndexComesBackTheSame) {
  for (const char* const sql :
       {"create table Всё (Ид long not null, Да bit, Б byte, К short, Ц currency, О single, "
        "Д double, Дата datetime, Т text(255), М memo, Г guid, Файл oleobject, Дв binary(4))",
        "create index Ключ on Всё (Ид) with primary", "create index А on Всё (Дата desc, Т)",
        "create unique index Б on Всё (Т, Д desc) with ignore null",
        "create index ExportOrder on Всё (Т desc, Ид)",
        "insert into Всё (Ид, Да, Б, К, Ц, О, Д, Дата, Т, М, Г) values (-2147483647, yes, 255, "
        "-32768, '922337203685.5807', 3.4e38, 1.7e308, #12/31/9999 23:59:59#, 'Ёлка №1', '', "
        "'{01234567-89AB-CDEF-0123-456789abcdef}')",
        "insert into Всё (Ид, Ц, О, Д, Дата, Т) values (2, -0.0001, 0.1, 1e-300, #1/1/0100#, '')",
        "insert into Всё (Ид, Дата, Т) values (3, #10:20:30#, 'я')",
        "insert into Всё (Ид) values (4)", "insert into Всё (Ид, Дата, Т) values (5, 0, 'Я')"}) {
    db->Execute(sql, true);
  }
  const auto rows = db->OpenRecordset("Всё", ports::RecordsetType::kTable);
  rows->Edit();
  std::string memo = "начало ^1^|\r\n\r\r\n\n\t\u00A0конец";
  for (int i = 0; i < 40000; ++i)
    memo += "Слова и строки\r\n";
  rows->SetValue(rows->FieldPosition("М"), memo);
  rows->SetValue(rows->FieldPosition("Ц"), ports::CurrencyValue{9223372036854775807});
  rows->Update();
  const std::string text = Export("Всё", *db);
  EXPECT_GT(text.size(), 1000000U);
  EXPECT_NE(text.find("|922337203685477.5807|"), std::string::npos);
  EXPECT_EQ(Reimported("Всё"), text);
}

TEST_F(ImpTableTest, TwoHundredAndFiftyFiveFieldsAndTheirDefaultsComeBack) {
  ports::TableDefinition table;
  table.name = "Широкая";
  const char* const defaults[] = {"", "\"а|б\"", "2.5", "#04/19/2001 12:00:00#", "True"};
  for (int i = 0; i < 255; ++i) {
    ports::FieldDefinition field;
    field.name = "Поле " + std::to_string(i);
    field.type = ports::DataType::kText;
    field.size = i + 1;
    field.allow_zero_length = i % 2 == 0;
    field.required = i % 3 == 0;
    field.default_value = defaults[i % 5];
    table.fields.push_back(field);
  }
  db->CreateTable(table);
  EXPECT_EQ(Reimported("Широкая"), Export("Широкая", *db));
}

TEST_F(ImpTableTest, FilesReplaceTheTableInBothEncodings) {
  db->Execute("create table Т (а long)", true);
  db->Execute("insert into Т values (1)", true);
  const std::string text = "Table:Т\r\nField:б|Text|5\r\nRows\r\nSда\r\nEndRows\r\nEndTable\r\n";
  tmw::ImpTable().ImportFromFile(sandbox.Write("Т.table", "\xEF\xBB\xBF" + text), *db);
  EXPECT_EQ(Export("Т", *db), text);
  const std::string ansi =
      "Table:\xD2\r\nField:\xE1|Text|5\r\nRows\r\nS\xED\xE5\xF2\r\nEndRows\r\nEndTable\r\n";
  tmw::ImpTable().ImportFromFile(sandbox.Write("Т.table", ansi), *db);
  EXPECT_NE(Export("Т", *db).find("Sнет"), std::string::npos);
  tmw::ImpTable().ImportFromFile(
      sandbox.Write("Т.tablestruct", "Table:\xD2\r\nField:\xE1|Long|4\r\nEndTable\r\n"), *db);
  EXPECT_EQ(Export("Т", *db), "Table:Т\r\nField:б|Long|4\r\nRows\r\nEndRows\r\nEndTable\r\n");
}

TEST_F(ImpTableTest, AFaultyTextNamesItsPlaceAndCanBeTakenBack) {
  const std::string old = "Table:T\r\nField:a|Long|4\r\nRows\r\n7\r\nEndRows\r\nEndTable\r\n";
  tmw::ImpTable importer;
  importer.SetTableName("T");
  importer.ImportFromString(old, *db);
  const std::string a = "Table:T\r\nField:a|Long|4\r\n";
  const std::string ab = a + "Field:b|Text|3|NotNull\r\n";
  const struct {
    std::string text;
    const char* place;
    const char* reason;  // how it begins
  } cases[] = {
      {"", " (строка 1)", "Текст обрывается: нет строки \"Table:\"."},
      {"Tables:T\r\n", " (строка 1)", "Ожидалась строка \"Table:\", а стоит \"Tables:T\"."},
      {"Table:U\r\nField:a|Long|4\r\nEndTable\r\n", " (строка 2)",
       "Файл описывает таблицу \"U\" вместо таблицы \"T\"."},
      {"Table:T\r\nEndTable\r\n", " (строка 2)", "Ожидалась строка \"Field:\""},
      {"Table:T\r\nField:a|Long\r\n", " (строка 2)", "Ошибочное описание поля"},
      {"Table:T\r\nField:a|Long|-4\r\n", " (строка 2)", "Ошибочное описание поля"},
      {"Table:T\r\nField:a|Long|4|AllowZero|NotNull\r\n", " (строка 2)", "Ошибочное описание поля"},
      {"Table:T\r\nField:a|U13|4\r\n", " (строка 2)", "Неизвестный тип поля \"U13\"."},
      {"Table:T\r\nField:a|Long|4|Default:x\r\n", " (строка 2)", "Unrecognizing value in DBString"},
      {a + "Index:i|Fields:a\r\n", " (строка 3)", "Ошибочное описание индекса"},
      {a + "Index:i|IgnoreNulls|Unique|Fields:a;\r\n", " (строка 3)", "Ошибочное описание индекса"},
      {a + "EndTable\r\n", " (строка 2)", "В файле нет строк таблицы"},
      {a + "Rows\r\n1\r\n", " (строка 5)", "Текст обрывается: нет строки \"EndRows\"."},
      {a + "Rows\r\n1\r\nEndRows\r\n", " (строка 6)", "Текст обрывается: нет строки \"EndTable\"."},
      {a + "Rows\r\n1\r\nEndRows\r\nEndTable\r\nx", " (строка 7)", "После конца таблицы"},
      {a + "Rows\r\n1\nEndRows\r\nEndTable\r\n", " (строка 4)",
       "Внутри строки стоит одиночный знак конца строки."},
      {a + "Rows\r\n1|2\r\n", " (строка 4)", "В строке таблицы значений 2, а полей 1."},
      {a + "Rows\r\n\r\nEndRows\r\nEndTable\r\n", " (строка 4)", "Пустое значение (Null)"},
      {ab + "Rows\r\n5\r\n", " (строка 5)", "В строке таблицы значений 1, а полей 2."},
      {ab + "Rows\r\n5|? (0x2011)\r\n", " (строка 5)", "Unrecognizing value in DBString"},
      {ab + "Rows\r\n5|Sабвг\r\n", " (строка 5)", "Поле слишком мало"},
      {ab + "Rows\r\n5|S\r\n", " (строка 5)", "Поле \"b\" не может быть пустой строкой."},
      {ab + "Rows\r\n5|\r\n", " (строка 5)", "Поле \"b\" обязательное"},
      {ab + "Rows\r\nSx|Sx\r\n", " (строка 5)", "Ошибка преобразования"},
      {a + "Index:i|Primary|Fields:a;\r\nRows\r\n1\r\n1\r\nEndRows\r\nEndTable\r\n", " (строка 3)",
       "Изменения не сохранены"},
      {a + "Index:i|Fields:b;\r\nRows\r\nEndRows\r\nEndTable\r\n", " (строка 3)",
       "Недопустимое поле \"b\""},
      {"Table:T\r\nField:a|Dec|4\r\nRows\r\nEndRows\r\nEndTable\r\n", " (строка 3)",
       "Недопустимый тип поля"},
  };
  for (const auto& c : cases) {
    const tmw::ProgramError error = tests::Caught([&] {
      const tmw::Transaction transaction;
      importer.ImportFromString(c.text, *db);
    });
    EXPECT_TRUE(error.Description.starts_with("Ошибка в файле таблицы \"T\"" +
                                              std::string(c.place) + ":\r\n" + c.reason))
        << error.Description << "\n"
        << c.text;
    EXPECT_NE(error.Source.find("::ImpTable.ImportFromString]"), std::string::npos);
    EXPECT_EQ(Export("T", *db), old);
  }
  const std::string file = sandbox.Write("T.tablestruct", old);
  const tmw::ProgramError error = tests::Caught([&] { importer.ImportFromFile(file, *db); });
  EXPECT_EQ(error.Description,
            "Ошибка в файле таблицы \"" + file +
                "\" (строка 3):\r\nВ файле структуры таблицы есть строки таблицы.");
  EXPECT_EQ(Export("T", *db), old);
}

}  // namespace
