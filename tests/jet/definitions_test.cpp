#include <gtest/gtest.h>

#include <string>

#include "foundation/text.h"
#include "tests/jet/database_fixture.h"

namespace {

using ports::DataType;
using ports::RecordsetType;
using tests::DatabaseTest;
using tests::ErrorOf;

class DefinitionTest : public DatabaseTest {
 protected:
  std::string Fields(const std::string& table) const {
    std::string text;
    for (const auto& field : db->Table(table).fields) {
      text += field.name + " " + std::to_string(static_cast<int>(field.type)) + "/" +
              std::to_string(field.size) + (field.required ? " required" : "") +
              (field.allow_zero_length ? " zero" : "") +
              ((field.attributes & ports::kAutoIncrementField) != 0 ? " counter" : "") + "; ";
    }
    return text;
  }

  std::string Indexes(const std::string& table) const {
    std::string text;
    for (const auto& index : db->Table(table).indexes) {
      text += index.name + (index.primary ? " primary" : "") + (index.unique ? " unique" : "") +
              (index.required ? " required" : "") + (index.ignore_nulls ? " ignore" : "") + "(";
      for (const auto& field : index.fields)
        text += field.name + (field.descending ? "-" : "+");
      text += ") ";
    }
    return text;
  }
};

TEST_F(DefinitionTest, EveryTypeWordMakesItsField) {
  const struct {
    const char* words;
    const char* field;
  } cases[] = {
      {"TEXT|char|character|string|alphanumeric", "f 10/255 zero; "},
      {"varchar(7)|text(7)", "f 10/7 zero; "},
      {"memo|longtext|longchar|note", "f 12/0 zero; "},
      {"byte|tinyint|integer1", "f 2/1; "},
      {"short|smallint|integer2", "f 3/2; "},
      {"int|integer|long|integer4", "f 4/4; "},
      {"counter|autoincrement|identity|counter(1, 1)", "f 4/4 counter; "},
      {"money|currency", "f 5/8; "},
      {"real|single|float4|ieeesingle", "f 6/4; "},
      {"double|double precision|float|float8|number|numeric(10, 2)|ieeedouble", "f 7/8; "},
      {"datetime|date|time|timestamp", "f 8/8; "},
      {"bit|yesno|logical|logical1|boolean", "f 1/1; "},
      {"binary(3)|varbinary(3)", "f 9/3; "},
      {"oleobject|longbinary|long binary|image|general", "f 11/0; "},
      {"guid|uniqueidentifier", "f 15/16; "},
      {"long not null|long constraint К not null", "f 4/4 required; "},
  };
  for (const auto& c : cases) {
    for (const std::string& word : tmw::Split(c.words, "|")) {
      ASSERT_EQ(Run("create table T (f " + word + ")"), 0) << word;
      EXPECT_EQ(Fields("T"), c.field) << word;
      EXPECT_EQ(Run("drop table t"), 0);
    }
  }
}

TEST_F(DefinitionTest, TablesFieldsAndIndexesAreMadeChangedAndRefused) {
  const struct {
    const char* statement;
    std::int32_t error;
  } cases[] = {
      {"create table A (Ид long constraint Ключ primary key, Имя text(5) not null, Д datetime)", 0},
      {"create table a (x long)", 3010},
      {"create table MSysObjects (x long)", 3010},
      {"create table B (x long, X text)", 3191},
      {"create table B ([a.b] long)", 3125},
      {"create table B (x decimals)", 3292},
      {"create table B (x decimal(29))", 3001},
      {"create table B (x text(300))", 3163},
      {"create table B (x counter, y counter)", 3259},
      {"create table B", 3290},
      {"alter table A add column Ещё text(3)", 0},
      {"alter table A add ещё long", 3380},
      {"alter table Нет add x long", 3376},
      {"alter table A drop column Ид", 3280},
      {"alter table A drop column Нет", 3381},
      {"create unique index ПоДате on A (Д desc, Имя) with ignore null", 0},
      {"create index поДате on A (Имя)", 3284},
      {"create index И on A (Нет)", 3409},
      {"create index И on A (Имя) with primary", 3283},
      {"create index И on A", 3291},
      {"insert into A (Ид, Имя) values (1, null)", 3314},
      {"insert into A (Имя) values ('x')", 3058},
      {"insert into A (Ид, Имя) values (1, 'a')", 0},
      {"insert into A (Ид, Имя) values (1, 'b')", 3022},
      {"insert into A (Ид, Имя) values (2, 'b')", 0},
      {"create unique index Дубль on A (Ещё)", 0},
      {"create index НеНуль on A (Ещё) with disallow null", 3058},
      {"alter table A drop constraint Дубль", 0},
      {"alter table A drop constraint Дубль", 3371},
      {"drop index Нет on A", 3372},
      {"alter table A add constraint Второй unique (Имя, Ещё)", 0},
      {"alter table A drop column Д", 3280},
      {"drop index ПоДате on A", 0},
      {"alter table A drop column Д", 0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Run(c.statement), c.error) << c.statement;
  EXPECT_EQ(Fields("A"), "Ид 4/4; Имя 10/5 required zero; Ещё 10/3 zero; ");
  EXPECT_EQ(Indexes("a"), "Второй unique(Имя+Ещё+) Ключ primary unique required(Ид+) ");
}

TEST_F(DefinitionTest, AFieldTakesAnotherTypeWithItsValuesAndIndexes) {
  ASSERT_EQ(
      Run("create table A (Ид counter primary key, Имя text(9) not null, Ц currency, Д date)"), 0);
  ASSERT_EQ(Run("create unique index ПоИмени on A (Имя desc, Ид)"), 0);
  db->SetFieldProperty("A", "Имя", "Caption", DataType::kText, std::string("Имя его"));
  ASSERT_EQ(Run("insert into A (Имя, Ц, Д) values ('12', 1.5, #1/2/2001#)"), 0);
  ASSERT_EQ(Run("insert into A (Имя, Ц) values ('7', '900000000000,1234')"), 0);
  const struct {
    const char* statement;
    std::int32_t error;
    const char* rows;
  } cases[] = {
      {"alter column Имя long", 0, "Long 12, Currency 1.5; Long 7, Currency 900000000000.1234"},
      {"alter column Имя text(1)", 3163,
       "Long 12, Currency 1.5; Long 7, Currency 900000000000.1234"},
      {"alter Имя text(2)", 0, "Text 12, Currency 1.5; Text 7, Currency 900000000000.1234"},
      {"alter column Ц text(20)", 0, "Text 12, Text 1,5; Text 7, Text 900000000000,1234"},
      {"alter column Ц currency", 0, "Text 12, Currency 1.5; Text 7, Currency 900000000000.1234"},
      {"alter column Нет long", 3381, "Text 12, Currency 1.5; Text 7, Currency 900000000000.1234"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Run(std::string("alter table A ") + c.statement), c.error) << c.statement;
    EXPECT_EQ(Query("select Имя, Ц from A order by Ид"), c.rows) << c.statement;
  }
  EXPECT_EQ(Fields("A"), "Ид 4/4 counter; Имя 10/2 required zero; Ц 5/8; Д 8/8; ");
  EXPECT_EQ(Indexes("A"), "PrimaryKey primary unique required(Ид+) ПоИмени unique(Имя-Ид+) ");
  EXPECT_EQ(tests::Words(*db->FieldProperty("A", "Имя", "Caption")), "Text Имя его");
  EXPECT_EQ(Run("alter table A alter column Ид long"), 0);
  EXPECT_EQ(Run("insert into A (Ид, Имя) values (1, 'x')"), 3022);
  EXPECT_EQ(Run("alter table A alter column Ид counter"), 3259) << "there are rows";
  EXPECT_EQ(Run("alter table A add column Счёт counter"), 0);
  EXPECT_EQ(Run("insert into A (Ид, Имя) values (5, 'x')"), 0);
  EXPECT_EQ(Query("select Счёт from A order by Ид"), "Long 1; Long 2; Long 3");
  ASSERT_EQ(Run("create table Б (Ид long)"), 0);
  EXPECT_EQ(Run("alter table Б alter column Ид counter"), 0);
  EXPECT_EQ(Run("alter table Б add column Счёт counter"), 3259) << "a table counts once";
}

TEST_F(DefinitionTest, TablesAreListedByNameWithTheSystemsOwn) {
  for (const char* const name : {"Я", "а", "DBVersion"})
    ASSERT_EQ(Run(std::string("create table [") + name + "] (x long)"), 0);
  std::string names;
  for (const auto& table : db->Tables())
    names += table.name + ((table.attributes & 0x80000003U) != 0 ? "! " : " ");
  EXPECT_EQ(names, "DBVersion MSysACEs! MSysObjects! MSysQueries! MSysRelationships! а Я ");
  EXPECT_EQ(ErrorOf([&] { db->DeleteTable("msysobjects"); }), 3219);
  EXPECT_EQ(ErrorOf([&] { db->DeleteTable("Нет"); }), ports::kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { db->Table("Нет"); }), ports::kItemNotFound);
}

// Definitions change through the port and through statements by turns.
TEST_F(DefinitionTest, WhatStatementsChangedIsSeenByTheNextCall) {
  const auto set = [&](const char* field) {
    return ErrorOf([&] {
      db->SetFieldProperty("Т", field, "Caption", DataType::kText, std::string("подпись"));
    });
  };
  db->CreateTable({"Т", 0, {{"я", DataType::kLong, 0, 0, false, false, ""}}, {}});
  EXPECT_EQ(Fields("Т"), "я 4/4; ");
  ASSERT_EQ(Run("alter table Т add column б text(9)"), 0);
  EXPECT_EQ(set("б"), 0);
  ASSERT_EQ(Run("alter table Т add column в long"), 0);
  db->CreateField("Т", {"а", DataType::kLong, 0, 0, false, false, ""});
  EXPECT_EQ(Fields("Т"), "я 4/4; б 10/9 zero; в 4/4; а 4/4; ") << "the last one made is the last";
  ASSERT_EQ(Run("alter table Т drop column б"), 0);
  EXPECT_EQ(set("б"), ports::kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { db->FieldProperty("Т", "б", "Caption"); }), ports::kItemNotFound);
  ASSERT_EQ(Run("create index И on Т (в)"), 0);
  db->CreateIndex("Т", {"Ключ", true, false, false, false, false, {{"я", true}}});
  EXPECT_EQ(Indexes("Т"), "И(в+) Ключ primary unique required(я-) ");
  ASSERT_EQ(Run("drop table Т"), 0);
  ASSERT_EQ(Run("create table т (г long)"), 0);
  EXPECT_EQ(Fields("Т"), "г 4/4; ");
  EXPECT_EQ(set("г"), 0);
  db->DeleteTable("Т");
  EXPECT_EQ(ErrorOf([&] { db->CreateField("Т", {}); }), ports::kItemNotFound);
}

TEST_F(DefinitionTest, DefaultsFillNewRowsAndPropertiesAreKept) {
  ports::TableDefinition table;
  table.name = "Д";
  table.fields.push_back({"Ид", DataType::kLong, 0, ports::kAutoIncrementField, false, false, {}});
  table.fields.push_back({"Т", DataType::kText, 10, 0, true, false, "\"нет\""});
  table.fields.push_back({"Ч", DataType::kDouble, 0, 0, false, false, "2.5"});
  table.fields.push_back({"Дата", DataType::kDate, 0, 0, false, false, "#04/19/2001#"});
  table.fields.push_back({"Л", DataType::kBoolean, 0, 0, false, false, "True"});
  db->CreateTable(table);
  EXPECT_EQ(Run("insert into Д (Ч) values (null)"), 0);
  EXPECT_EQ(Run("alter table Д alter column Т text(9)"), 0);
  EXPECT_EQ(Run("insert into Д (Т) values ('')"), 3315);
  const auto rows = db->OpenRecordset("Д", RecordsetType::kTable);
  rows->AddNew();
  EXPECT_EQ(tests::Words(rows->Value(1)), "Text нет");
  rows->SetValue(2, std::int32_t{7});
  rows->Update();
  EXPECT_EQ(Query("Д"),
            "Long 1, Text нет, Null, Date 37000, True; "
            "Long 2, Text нет, Double 7, Date 37000, True");
  table.name = "Е";
  table.fields[1].default_value = "нет кавычки\"";
  EXPECT_NE(ErrorOf([&] { db->CreateTable(table); }), 0);

  db->SetFieldProperty("Д", "Т", "Description", DataType::kText, std::string("Слова"));
  db->SetFieldProperty("Д", "Т", "UnicodeCompression", DataType::kBoolean, true);
  EXPECT_EQ(tests::Words(*db->FieldProperty("д", "т", "description")), "Text Слова");
  EXPECT_EQ(tests::Words(*db->FieldProperty("Д", "Т", "UnicodeCompression")), "True");
  EXPECT_FALSE(db->FieldProperty("Д", "Т", "Caption"));
}

TEST_F(DefinitionTest, WhatAFileCannotHoldIsRefusedWhenItIsDefined) {
  std::string fields = "П0";
  ASSERT_EQ(Run("create table Т (П0 long)"), 0);
  for (int i = 1; i < 11; ++i) {
    const std::string name = "П" + std::to_string(i);
    fields += ", " + name;
    ASSERT_EQ(Run("alter table Т add column " + name + " long"), 0);
  }
  EXPECT_EQ(Run("create index Составной on Т (" + fields + ")"), 3277);
  for (int i = 0; i < 32; ++i)
    ASSERT_EQ(Run("create index И" + std::to_string(i) + " on Т (П0)"), 0) << i;
  EXPECT_EQ(Run("create index Лишний on Т (П1)"), 3626);
  // The ends of relations count, on both sides.
  ASSERT_EQ(Run("create table Н (Н long, С long, constraint К primary key (Н))"), 0);
  for (int i = 0; i < 31; ++i) {
    ASSERT_EQ(Run("create table Д" + std::to_string(i) + " (Н long references Н)"), 0) << i;
  }
  EXPECT_EQ(Run("create index Лишний on Н (С)"), 3626);
  EXPECT_EQ(Run("create table Д (Н long references Н)"), 3626);
  EXPECT_EQ(Run("alter table Н add constraint Сам foreign key (С) references Н"), 3626);
  EXPECT_EQ(Run("alter table Т add constraint Р foreign key (П1) references Н"), 3626);
  // Characters that take up four bytes of a key; the last one could not be stored in any form.
  ASSERT_EQ(Run("create table Ш (А text(255), Б text(255), В text(255), Г memo)"), 0);
  ASSERT_EQ(Run("create index И on Ш (А, Б, В, Г)"), 0);
  ASSERT_EQ(Run("insert into Ш (А) values (String(255, ChrW(20013)))"), 0);
  ASSERT_EQ(Run("update Ш set Б = А, В = А, Г = String(100, ChrW(20013))"), 0);
  EXPECT_EQ(Run("update Ш set Г = А"), 3047);
  ASSERT_EQ(Run("drop index И on Ш"), 0);
  ASSERT_EQ(Run("update Ш set Г = А"), 0);
  EXPECT_EQ(Run("create index И on Ш (А, Б, В, Г)"), 3047);
  EXPECT_EQ(Run("update Ш set Г = ChrW(65279) & 'я'"), 0);
  EXPECT_EQ(Run("update Ш set Г = ChrW(65279) & ChrW(1024)"), 3421);
  db->Close();
}

}  // namespace
