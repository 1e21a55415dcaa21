#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/windows/dao/dao_database.h"
#include "platform/windows/dao/dao_engine.h"
#include "platform/windows/dao/dao_values.h"
#include "tests/platform/windows/dao_model.h"

namespace platform {
namespace {

using Log = std::vector<std::string>;
using tests::DaoModelObject;

std::int32_t ErrorOf(const std::function<void()>& call) {
  try {
    call();
    return 0;
  } catch (const ports::DatabaseError& error) {
    return error.Number;
  }
}

ports::FieldDefinition Field(const char* name, ports::DataType type) {
  ports::FieldDefinition field;
  field.name = name;
  field.type = type;
  return field;
}

class DaoObjectsTest : public testing::Test {
 protected:
  ~DaoObjectsTest() override { EXPECT_TRUE(model.IsAllGivenBack()); }

  // What was called since the last time; reading is not noted, refreshing is of no interest.
  Log Calls() {
    Log calls = std::exchange(model.log, {});
    std::erase_if(calls, [](const std::string& call) { return call.ends_with(".Refresh()"); });
    return calls;
  }

  DaoModelObject& Table(const char* name) {
    return *model.database->objects["TableDefs"]->Find(name);
  }

  std::string FieldNames(const char* table) {
    std::string names;
    for (const DaoModelObject* const field : Table(table).objects["Fields"]->items)
      names += field->Name() + " ";
    return names;
  }

  tests::DaoModel model;
};

TEST_F(DaoObjectsTest, TheEnginesCallsHaveTheirArgumentsInOrder) {
  DaoEngine engine(model.engine->Own());
  engine.OpenDatabase("a.mdb", true, false);
  engine.OpenDatabase("a.mdb", false, true);
  engine.CreateDatabase("b.mdb");
  engine.CompactDatabase("from.mdb", "to.mdb");
  engine.Idle(ports::IdleOption::kRefreshCache);
  engine.Idle(ports::IdleOption::kFreeLocks);
  engine.BeginTrans();
  engine.BeginTrans();
  engine.CommitTrans();
  engine.Rollback();
  EXPECT_EQ(Calls(),
            (Log{"DBEngine.OpenDatabase(a.mdb, True, False)", "Database.Close()",
                 "DBEngine.OpenDatabase(a.mdb, False, True)", "Database.Close()",
                 "DBEngine.CreateDatabase(b.mdb, ;LANGID=0x0409;CP=1252;COUNTRY=0, 64)",
                 "Database.Close()", "DBEngine.CompactDatabase(from.mdb, to.mdb)",
                 "DBEngine.Idle(8)", "DBEngine.Idle(1)", "DBEngine.BeginTrans()",
                 "DBEngine.BeginTrans()", "DBEngine.CommitTrans()", "DBEngine.Rollback()"}));
  model.failures["DBEngine.CommitTrans"] = 3034;
  EXPECT_EQ(ErrorOf([&] { engine.CommitTrans(); }), 3034);
}

TEST_F(DaoObjectsTest, ATableIsMadeOfItsPartsAndReadBack) {
  DaoDatabase dao(model.database->Own());
  ports::TableDefinition definition;
  definition.name = "Дела";
  definition.fields = {Field("Ящик", ports::DataType::kLong), Field("Имя", ports::DataType::kText),
                       Field("Дело", ports::DataType::kDate)};
  definition.fields[0].attributes = ports::kAutoIncrementField;
  definition.fields[1].required = definition.fields[1].allow_zero_length = true;
  definition.fields[1].default_value = "\"нет\"";
  definition.indexes.push_back({"Ключ", true, false, false, false, false, {{"Имя", true}}});
  definition.indexes.push_back(
      {"Два", false, true, true, true, false, {{"Ящик", false}, {"Дело", false}}});
  dao.CreateTable(definition);
  EXPECT_EQ(Calls(), (Log{"Database.CreateTableDef(Дела)",
                          "TableDef.CreateField(Ящик, 4)",
                          "Field.Attributes = 16",
                          "Field.OrdinalPosition = 0",
                          "Field.Required = False",
                          "Fields.Append(Ящик)",
                          "TableDef.CreateField(Имя, 10, 255)",
                          "Field.OrdinalPosition = 1",
                          "Field.Required = True",
                          "Field.AllowZeroLength = True",
                          "Field.DefaultValue = \"нет\"",
                          "Fields.Append(Имя)",
                          "TableDef.CreateField(Дело, 8)",
                          "Field.OrdinalPosition = 2",
                          "Field.Required = False",
                          "Fields.Append(Дело)",
                          "TableDef.CreateIndex(Ключ)",
                          "Index.Primary = True",
                          "Index.CreateField(Имя)",
                          "Field.Attributes = 1",
                          "Fields.Append(Имя)",
                          "Indexes.Append(Ключ)",
                          "TableDef.CreateIndex(Два)",
                          "Index.Unique = True",
                          "Index.Required = True",
                          "Index.IgnoreNulls = True",
                          "Index.CreateField(Ящик)",
                          "Fields.Append(Ящик)",
                          "Index.CreateField(Дело)",
                          "Fields.Append(Дело)",
                          "Indexes.Append(Два)",
                          "TableDefs.Append(Дела)"}));
  EXPECT_EQ(FieldNames("Дела"), "Ящик Имя Дело ");
  EXPECT_EQ(ErrorOf([&] { dao.CreateTable(definition); }), 3010);

  const ports::TableDefinition read = dao.Table("дела");
  ASSERT_EQ(read.fields.size(), 3U);
  EXPECT_EQ(read.fields[0].attributes, ports::kAutoIncrementField);
  EXPECT_EQ(read.fields[1].type, ports::DataType::kText);
  EXPECT_EQ(read.fields[1].size, 255);
  EXPECT_TRUE(read.fields[1].required && read.fields[1].allow_zero_length);
  EXPECT_EQ(read.fields[1].default_value, definition.fields[1].default_value);
  ASSERT_EQ(read.indexes.size(), 2U) << "in the collection's order";
  EXPECT_TRUE(read.indexes[0].unique && read.indexes[0].required && read.indexes[0].ignore_nulls);
  EXPECT_EQ(read.indexes[0].fields[1].name, "Дело");
  EXPECT_TRUE(read.indexes[1].primary && read.indexes[1].fields[0].descending);
}

TEST_F(DaoObjectsTest, WhatStatementsMadeIsSeenAtEveryCall) {
  DaoDatabase dao(model.database->Own());
  model.AddTable("Дела", {"Ящик", "Имя"}).values["Attributes"] = std::int32_t{-2147483646};
  const std::vector<ports::TableSummary> list = dao.Tables();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].attributes, ports::kSystemObject);
  model.AddTable("Б", {"б"});
  EXPECT_EQ(dao.Table("Б").fields.size(), 1U);
  model.AddTable("В", {"я", "в"});
  dao.CreateField("В", Field("а", ports::DataType::kLong));
  EXPECT_EQ(FieldNames("В"), "я в а ") << "an added field comes last";
  model.AddTable("Г", {"г"});
  dao.CreateIndex("Г", {"Ключ", true, false, false, false, false, {{"г", false}}});
  EXPECT_EQ(dao.Table("Г").indexes.size(), 1U);
  model.AddTable("Д", {"д"});
  EXPECT_EQ(dao.FieldProperty("Д", "д", "Caption"), std::nullopt);
  model.AddTable("Е", {"е"});
  dao.DeleteTable("Е");
  EXPECT_EQ(ErrorOf([&] { dao.DeleteTable("Е"); }), ports::kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { dao.Table("Е"); }), ports::kItemNotFound);
  EXPECT_EQ(ErrorOf([&] { dao.CreateField("Е", Field("а", ports::DataType::kLong)); }),
            ports::kItemNotFound);
}

TEST_F(DaoObjectsTest, RelationsGoOverWithTheirFieldsAndAttributes) {
  DaoDatabase dao(model.database->Own());
  for (const char* const table : {"Группы", "Товары"})
    model.AddTable(table, {"Ид", "Имя"});
  Calls();
  const std::int32_t attributes = ports::kRelationUnique | ports::kRelationUpdateCascade |
                                  ports::kRelationDeleteCascade | ports::kRelationLeft;
  dao.CreateRelation({"Связь", "Группы", "Товары", attributes, {{"Ид", "Группа"}, {"Имя", "Имя"}}});
  EXPECT_EQ(
      Calls(),
      (Log{"Database.CreateRelation(Связь, Группы, Товары, 16781569)", "Relation.CreateField(Ид)",
           "Field.ForeignName = Группа", "Fields.Append(Ид)", "Relation.CreateField(Имя)",
           "Field.ForeignName = Имя", "Fields.Append(Имя)", "Relations.Append(Связь)"}));
  dao.CreateRelation({"А", "Группы", "Группы", 2, {{"Ид", "Имя"}}});
  const std::vector<ports::RelationDefinition> list = dao.Relations();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].name + list[1].name, "АСвязь");
  EXPECT_EQ(list[1].table + " " + list[1].foreign_table, "Группы Товары");
  EXPECT_EQ(list[1].attributes, attributes);
  ASSERT_EQ(list[1].fields.size(), 2U);
  EXPECT_EQ(list[1].fields[0].name + " " + list[1].fields[0].foreign_name, "Ид Группа");
  EXPECT_EQ(ErrorOf([&] { dao.CreateRelation(list[0]); }), 3012);
  EXPECT_EQ(ErrorOf([&] { dao.DeleteTable("Группы"); }), 3281);
  EXPECT_EQ(ErrorOf([&] { dao.DeleteTable("Товары"); }), 3281);
  dao.DeleteRelation("связь");
  dao.DeleteTable("Товары");
  EXPECT_EQ(ErrorOf([&] { dao.DeleteRelation("Связь"); }), ports::kItemNotFound);
}

TEST_F(DaoObjectsTest, PropertiesAreSetOrMadeAndMissingOnesAreNone) {
  DaoDatabase dao(model.database->Own());
  model.AddTable("Дела", {"Имя"});
  const auto set = [&](const char* text) {
    dao.SetFieldProperty("Дела", "Имя", "Format", ports::DataType::kText, std::string(text));
  };
  EXPECT_EQ(dao.FieldProperty("Дела", "Имя", "Format"), std::nullopt);
  set("0.00");
  set("@@");
  EXPECT_EQ(Calls(), (Log{"Field.CreateProperty(Format, 10, 0.00)", "Properties.Append(Format)",
                          "Property.Value = @@"}));
  EXPECT_EQ(dao.FieldProperty("Дела", "Имя", "Format"), ports::DatabaseValue(std::string("@@")));
  model.failures["Properties.Item"] = 3033;
  EXPECT_EQ(ErrorOf([&] { dao.FieldProperty("Дела", "Имя", "Format"); }), 3033);
  EXPECT_EQ(ErrorOf([&] { set("0"); }), 3033);
}

TEST_F(DaoObjectsTest, StatementsAndRowsGoOverWithTheirOptions) {
  model.database->values["RecordsAffected"] = std::int32_t{3};
  model.recordset->values["EOF"] = true;
  DaoModelObject& field = model.Make("Field");
  field.values["Name"] = std::string("Имя");
  field.values["Value"] = ports::CurrencyValue{15000};
  model.recordset->objects["Fields"]->items.push_back(&field);
  {
    DaoDatabase dao(model.database->Own());
    EXPECT_EQ(dao.Execute("delete from Дела", true), 3);
    EXPECT_EQ(dao.Execute("delete from Дела", false), 3);
    const auto rows = dao.OpenRecordset("Дела", ports::RecordsetType::kTable);
    rows->SetIndex("Ключ");
    EXPECT_TRUE(rows->AtEnd() && !rows->AtBeginning());
    EXPECT_EQ(rows->FieldPosition("имя"), 0U);
    EXPECT_EQ(rows->Value(0), ports::DatabaseValue(ports::CurrencyValue{15000}));
    rows->AddNew();
    for (const ports::DatabaseValue& value : std::vector<ports::DatabaseValue>{
             ports::NullValue{}, ports::EmptyValue{}, std::int32_t{0}, std::string()})
      rows->SetValue(0, value);
    rows->Update();
    rows->Edit();
    rows->Delete();
    model.failures["Recordset.MoveFirst"] = ports::kNoCurrentRecord;
    EXPECT_EQ(ErrorOf([&] { rows->MoveFirst(); }), ports::kNoCurrentRecord);
    rows->MoveLast();
    rows->MovePrevious();
    rows->MoveNext();
    dao.OpenRecordset("select 1", ports::RecordsetType::kDynaset);
  }
  EXPECT_EQ(Calls(), (Log{"Database.Execute(delete from Дела, 128)",
                          "Database.Execute(delete from Дела)",
                          "Database.OpenRecordset(Дела, 1)",
                          "Recordset.Index = Ключ",
                          "Recordset.AddNew()",
                          "Field.Value = Null",
                          "Field.Value = Empty",
                          "Field.Value = 0",
                          "Field.Value = ",
                          "Recordset.Update()",
                          "Recordset.Edit()",
                          "Recordset.Delete()",
                          "Recordset.MoveFirst()",
                          "Recordset.MoveLast()",
                          "Recordset.MovePrevious()",
                          "Recordset.MoveNext()",
                          "Database.OpenRecordset(select 1, 2)",
                          "Recordset.Close()",
                          "Recordset.Close()",
                          "Database.Close()"}));
}

// The model itself: what is not as documented fails.
TEST_F(DaoObjectsTest, WhatIsNotAsDocumentedIsRefused) {
  const DaoObject engine = model.engine->Own();
  const DaoObject database = model.database->Own();
  const struct {
    std::function<void()> call;
    HRESULT error;
  } cases[] = {
      {[&] { engine.Call(L"Compact", {}); }, DISP_E_UNKNOWNNAME},
      {[&] { database.Get(L"TableDef"); }, DISP_E_UNKNOWNNAME},
      {[&] { engine.Call(L"CompactDatabase", {std::string("a")}); }, DISP_E_BADPARAMCOUNT},
      {[&] { engine.Call(L"BeginTrans", {std::int32_t{1}}); }, DISP_E_BADPARAMCOUNT},
      {[&] { engine.Call(L"Idle", {std::string("8")}); }, DISP_E_TYPEMISMATCH},
      {[&] { engine.Call(L"Idle", {ports::NullValue{}}); }, DISP_E_TYPEMISMATCH},
      {[&] { engine.Call(L"Idle", {ports::EmptyValue{}}); }, DISP_E_TYPEMISMATCH},
      {[&] {
         engine.CallObject(L"OpenDatabase", {std::string("a"), std::int32_t{0}});
       },
       DISP_E_TYPEMISMATCH},
      {[&] { database.Put(L"Name", std::string("a")); }, DISP_E_MEMBERNOTFOUND},
      {[&] { database.Call(L"TableDefs"); }, DISP_E_MEMBERNOTFOUND},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ErrorOf(c.call), static_cast<std::int32_t>(c.error)) << &c - cases;
  EXPECT_EQ(ErrorOf([&] { engine.Call(L"Idle", {std::int32_t{2}}); }), 3001);
  EXPECT_EQ(ErrorOf([&] {
              database.Call(L"Execute", {std::string("a"), std::int32_t{256}});
            }),
            3001);
}

}  // namespace
}  // namespace platform
