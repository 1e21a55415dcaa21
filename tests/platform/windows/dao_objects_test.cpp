#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "platform/windows/dao/dao_database.h"
#include "platform/windows/dao/dao_recordset.h"
#include "platform/windows/dao/dao_values.h"

namespace platform {
namespace {

// A scripted stand-in for an object of DAO: members have values or further objects, and every call
// is recorded as "Object.Member(arguments)".
class ScriptedObject final : public IDispatch {
 public:
  ScriptedObject(std::string name, std::vector<std::string>& log)
      : name_(std::move(name)), log_(log) {}
  virtual ~ScriptedObject() = default;

  std::map<std::string, ports::DatabaseValue> values;
  std::map<std::string, ScriptedObject*> objects;  // by member, or "Item 0", "Item Имя"
  std::map<std::string, std::int32_t> failures;    // DAO's numbers

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override {
    members_.push_back(FromWide(names[0]));
    ids[0] = static_cast<DISPID>(members_.size() - 1);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* details, UINT*) override {
    std::string member = members_[static_cast<std::size_t>(id)];
    std::string arguments;
    for (UINT i = parameters->cArgs; i > 0; --i) {
      const std::string text = TextOfArgument(parameters->rgvarg[i - 1]);
      arguments += (arguments.empty() ? "" : ", ") + text;
    }
    const bool is_put = kind == DISPATCH_PROPERTYPUT;
    EXPECT_EQ(parameters->cNamedArgs, is_put ? 1U : 0U);
    if (is_put || member == "Append" || (kind & DISPATCH_METHOD) != 0)
      Note(member, is_put ? " = " + arguments : "(" + arguments + ")", kind);
    if (member == "Item") member += " " + arguments;
    if (const auto failure = failures.find(member); failure != failures.end()) {
      details->scode =
          static_cast<HRESULT>(0x800A0000U + static_cast<std::uint32_t>(failure->second));
      return DISP_E_EXCEPTION;
    }
    if (is_put) values[member] = FromVariant(parameters->rgvarg[0]);
    if (result == nullptr) return S_OK;
    if (const auto object = objects.find(member); object != objects.end()) {
      object->second->AddRef();
      result->vt = VT_DISPATCH;
      result->pdispVal = object->second;
    } else if (const auto value = values.find(member); value != values.end()) {
      ToVariant(value->second, *result);
    }
    return S_OK;
  }

  DaoObject Own() {
    AddRef();
    ComPointer<IDispatch> pointer;
    *pointer.Out() = this;
    return DaoObject(std::move(pointer));
  }

  ULONG references = 0;

 private:
  std::string TextOfArgument(const VARIANT& argument) const {
    if (argument.vt == VT_DISPATCH) return static_cast<ScriptedObject*>(argument.pdispVal)->name_;
    const ports::DatabaseValue value = FromVariant(argument);
    if (const auto* const text = std::get_if<std::string>(&value)) return *text;
    if (const auto* const truth = std::get_if<bool>(&value)) return *truth ? "True" : "False";
    return std::to_string(LongOf(value));
  }

  // Only calls of methods are recorded, not reads of properties.
  void Note(const std::string& member, const std::string& arguments, WORD kind) {
    const bool is_read = (kind & DISPATCH_PROPERTYGET) != 0 && !member.starts_with("Create") &&
                         !member.starts_with("Open");
    if (!is_read) log_.push_back(name_ + "." + member + arguments);
  }

  std::string name_;
  std::vector<std::string>& log_;
  std::vector<std::string> members_;
};

class DaoObjectsTest : public testing::Test {
 protected:
  DaoObjectsTest() {
    database.objects = {{"TableDefs", &tables}, {"CreateTableDef", &table}};
    tables.objects = {{"Item Дела", &table}, {"Item 0", &table}};
    tables.values["Count"] = std::int32_t{1};
    table.objects = {{"Fields", &fields},
                     {"Indexes", &indexes},
                     {"CreateField", &field},
                     {"CreateIndex", &index}};
    table.values = {{"Name", std::string("Дела")}, {"Attributes", std::int32_t{-2147483646}}};
    fields.objects = {{"Item 0", &field}, {"Item Имя", &field}};
    fields.values["Count"] = std::int32_t{1};
    indexes.objects["Item 0"] = &index;
    indexes.values["Count"] = std::int32_t{1};
    field.values = {
        {"Name", std::string("Имя")},      {"Type", std::int16_t{10}}, {"Size", std::int32_t{30}},
        {"Attributes", std::int32_t{2}},   {"Required", true},         {"AllowZeroLength", false},
        {"DefaultValue", std::string("0")}};
    field.objects = {{"Properties", &properties}, {"CreateProperty", &property}};
    index.values = {
        {"Name", std::string("Ключ")}, {"Primary", true}, {"Unique", true}, {"Required", true},
        {"IgnoreNulls", false},        {"Foreign", false}};
    index.objects = {{"Fields", &index_fields}, {"CreateField", &index_field}};
    index_fields.objects["Item 0"] = &index_field;
    index_fields.values["Count"] = std::int32_t{1};
    index_field.values = {{"Name", std::string("Имя")}, {"Attributes", std::int32_t{1}}};
  }

  std::vector<std::string> log;
  ScriptedObject database{"Database", log};
  ScriptedObject tables{"TableDefs", log};
  ScriptedObject table{"TableDef", log};
  ScriptedObject fields{"Fields", log};
  ScriptedObject field{"Field", log};
  ScriptedObject indexes{"Indexes", log};
  ScriptedObject index{"Index", log};
  ScriptedObject index_fields{"IndexFields", log};
  ScriptedObject index_field{"IndexField", log};
  ScriptedObject properties{"Properties", log};
  ScriptedObject property{"Property", log};
  ScriptedObject recordset{"Recordset", log};
};

TEST_F(DaoObjectsTest, DefinitionsAreReadMemberByMember) {
  DaoDatabase dao(database.Own());
  const std::vector<ports::TableSummary> list = dao.Tables();
  ASSERT_EQ(list.size(), 1U);
  EXPECT_EQ(list[0].name, "Дела");
  EXPECT_EQ(list[0].attributes, ports::kSystemObject);
  const ports::TableDefinition definition = dao.Table("Дела");
  ASSERT_EQ(definition.fields.size(), 1U);
  const ports::FieldDefinition& read = definition.fields[0];
  EXPECT_EQ(read.name, "Имя");
  EXPECT_EQ(read.type, ports::DataType::kText);
  EXPECT_EQ(read.size, 30);
  EXPECT_TRUE(read.required);
  EXPECT_FALSE(read.allow_zero_length);
  EXPECT_EQ(read.default_value, "0");
  ASSERT_EQ(definition.indexes.size(), 1U);
  EXPECT_TRUE(definition.indexes[0].primary && definition.indexes[0].fields[0].descending);
  EXPECT_FALSE(definition.indexes[0].ignore_nulls);
}

TEST_F(DaoObjectsTest, ATableIsMadeOfItsPartsAndAppended) {
  DaoDatabase dao(database.Own());
  ports::TableDefinition definition;
  definition.name = "Дела";
  definition.fields.push_back(
      {"Имя", ports::DataType::kText, 0, ports::kAutoIncrementField, true, true, "#01/01/2001#"});
  definition.indexes.push_back({"Ключ", true, false, false, false, false, {{"Имя", true}}});
  dao.CreateTable(definition);
  const std::vector<std::string> expected = {
      "Database.CreateTableDef(Дела)", "TableDef.CreateField(Имя, 10, 255)",
      "Field.Attributes = 18",         "Field.Required = True",
      "Field.AllowZeroLength = True",  "Field.DefaultValue = #01/01/2001#",
      "Fields.Append(Field)",          "TableDef.CreateIndex(Ключ)",
      "Index.Primary = True",          "Index.CreateField(Имя)",
      "IndexField.Attributes = 1",     "IndexFields.Append(IndexField)",
      "Indexes.Append(Index)",         "TableDefs.Append(TableDef)"};
  EXPECT_EQ(log, expected);
}

TEST_F(DaoObjectsTest, PropertiesAreSetOrMadeAndMissingOnesAreNone) {
  DaoDatabase dao(database.Own());
  properties.objects["Item Caption"] = &property;
  property.values["Value"] = std::string("Имя его");
  EXPECT_EQ(dao.FieldProperty("Дела", "Имя", "Caption"),
            ports::DatabaseValue(std::string("Имя его")));
  dao.SetFieldProperty("Дела", "Имя", "Caption", ports::DataType::kText, std::string("Иное"));
  properties.failures["Item Format"] = 3270;
  EXPECT_EQ(dao.FieldProperty("Дела", "Имя", "Format"), std::nullopt);
  dao.SetFieldProperty("Дела", "Имя", "Format", ports::DataType::kText, std::string("0.00"));
  EXPECT_EQ(log, (std::vector<std::string>{"Property.Value = Иное",
                                           "Field.CreateProperty(Format, 10, 0.00)",
                                           "Properties.Append(Property)"}));
  properties.failures["Item Format"] = 3033;
  try {
    dao.FieldProperty("Дела", "Имя", "Format");
    FAIL() << "nothing was raised";
  } catch (const ports::DatabaseError& error) {
    EXPECT_EQ(error.Number, 3033);
  }
}

TEST_F(DaoObjectsTest, StatementsAndRecordsetsGoOverWithTheirOptions) {
  database.values["RecordsAffected"] = std::int32_t{3};
  database.objects["OpenRecordset"] = &recordset;
  recordset.objects["Fields"] = &fields;
  recordset.values = {{"BOF", false}, {"EOF", true}};
  field.values["Value"] = ports::CurrencyValue{15000};
  {
    DaoDatabase dao(database.Own());
    EXPECT_EQ(dao.Execute("delete from Дела", true), 3);
    EXPECT_EQ(dao.Execute("delete from Дела", false), 3);
    const auto rows = dao.OpenRecordset("Дела", ports::RecordsetType::kTable);
    rows->SetIndex("Ключ");
    EXPECT_TRUE(rows->AtEnd() && !rows->AtBeginning());
    EXPECT_EQ(rows->FieldPosition("имя"), 0U);
    EXPECT_EQ(rows->Value(0), ports::DatabaseValue(ports::CurrencyValue{15000}));
    rows->Edit();
    rows->SetValue(0, ports::NullValue{});
    rows->Update();
    recordset.failures["MoveFirst"] = ports::kNoCurrentRecord;
    EXPECT_THROW(rows->MoveFirst(), ports::DatabaseError);
    dao.OpenRecordset("select 1", ports::RecordsetType::kDynaset);
  }
  const std::vector<std::string> expected = {"Database.Execute(delete from Дела, 128)",
                                             "Database.Execute(delete from Дела)",
                                             "Database.OpenRecordset(Дела, 1)",
                                             "Recordset.Index = Ключ",
                                             "Recordset.Edit()",
                                             "Field.Value = 0",
                                             "Recordset.Update()",
                                             "Recordset.MoveFirst()",
                                             "Database.OpenRecordset(select 1, 2)",
                                             "Recordset.Close()",
                                             "Recordset.Close()",
                                             "Database.Close()"};
  EXPECT_EQ(log, expected);
  for (const ScriptedObject* const object : {&database, &tables, &fields, &field, &recordset})
    EXPECT_EQ(object->references, 0U) << "every reference is given back";
}

}  // namespace
}  // namespace platform
