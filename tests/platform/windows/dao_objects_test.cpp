#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "foundation/file_utils.h"
#include "platform/windows/dao/dao_database.h"
#include "platform/windows/dao/dao_engine.h"
#include "platform/windows/wide.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "ports/product_version.h"
#include "services/processes.h"
#include "tests/support/sandbox.h"

// The components that stand in for the product's: what is not as DAO documents it fails, so that
// the port's tests that pass over them mean something.
namespace platform {
namespace {

std::int32_t ErrorOf(const std::function<void()>& call) {
  try {
    call();
    return 0;
  } catch (const ports::DatabaseError& error) {
    return error.Number;
  }
}

class DaoObjectsTest : public testing::Test {
 protected:
  // No reference to an object is left over.
  ~DaoObjectsTest() override {
    engine = {};
    using CanUnload = HRESULT(STDAPICALLTYPE*)();
    const auto call = reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"dao_server.dll"), "DllCanUnloadNow"));
    EXPECT_EQ(reinterpret_cast<CanUnload>(call)(), S_OK);
  }

  DaoObject CreateDatabase() const {
    return engine.CallObject(L"CreateDatabase",
                             {sandbox.Path("база.mdb"),
                              std::string(";LANGID=0x0409;CP=1252;COUNTRY=0"), std::int32_t{64}});
  }

  tests::Sandbox sandbox;
  ComScope com;
  DaoObject engine = DaoObject::CreateEngine();
};

TEST_F(DaoObjectsTest, WhatIsNotAsDocumentedIsRefused) {
  const DaoObject database = CreateDatabase();
  database.Call(L"Execute", {std::string("create table Т (а long primary key, б text(9))"), 128});
  const DaoObject table = database.GetObject(L"TableDefs").Item(std::string("Т"));
  const DaoObject made = table.CallObject(L"CreateField", {std::string("в"), 4});
  const DaoObject index = table.CallObject(L"CreateIndex", {std::string("И")});
  const DaoObject part = index.CallObject(L"CreateField", {std::string("а")});
  const DaoObject rows = database.CallObject(L"OpenRecordset", {std::string("Т"), 1});
  const DaoObject field = table.GetObject(L"Fields").Item(0);
  const std::string a = "a";
  const struct {
    std::function<void()> call;
    std::int32_t error;
  } cases[] = {
      {[&] { engine.Call(L"Compact", {}); }, DISP_E_UNKNOWNNAME},
      {[&] { database.Get(L"TableDef"); }, DISP_E_UNKNOWNNAME},
      {[&] { engine.Call(L"CompactDatabase", {a}); }, DISP_E_BADPARAMCOUNT},
      {[&] { engine.Call(L"BeginTrans", {1}); }, DISP_E_BADPARAMCOUNT},
      {[&] { engine.Call(L"Idle", {std::string("8")}); }, DISP_E_TYPEMISMATCH},
      {[&] { engine.Call(L"Idle", {ports::NullValue{}}); }, DISP_E_TYPEMISMATCH},
      {[&] { engine.Call(L"Idle", {ports::EmptyValue{}}); }, DISP_E_TYPEMISMATCH},
      {[&] {
         engine.CallObject(L"OpenDatabase", {a, 0});
       },
       DISP_E_TYPEMISMATCH},
      {[&] { database.Put(L"Name", a); }, DISP_E_MEMBERNOTFOUND},
      {[&] { database.Call(L"TableDefs"); }, DISP_E_MEMBERNOTFOUND},
      {[&] { engine.Call(L"Idle", {2}); }, 3001},
      {[&] {
         database.Call(L"Execute", {std::string("delete from Т"), 256});
       },
       3001},
      {[&] {
         engine.CallObject(L"CreateDatabase", {a, a, 64});
       },
       3001},
      {[&] {
         database.CallObject(L"OpenRecordset", {std::string("Т"), 4});
       },
       3251},
      // members that such an object does not have, or no longer
      {[&] { part.Put(L"OrdinalPosition", 1); }, 3251},
      {[&] { part.Put(L"Attributes", 16); }, 3001},
      {[&] { made.Put(L"ForeignName", a); }, 3251},
      {[&] { made.Put(L"AllowZeroLength", true); }, 3219},
      {[&] { field.Put(L"Attributes", 16); }, 3219},
      {[&] {
         index.CallObject(L"CreateField", {a, 4});
       },
       3251},
      {[&] { rows.Get(L"RecordCount"); }, DISP_E_UNKNOWNNAME},
      // what is not whole or goes elsewhere
      {[&] { table.GetObject(L"Indexes").Append(index); }, 3264},
      {[&] { table.GetObject(L"Fields").Append(index); }, 3367},
      {[&] { table.GetObject(L"Fields").Append(field); }, 3367},
      {[&] { table.GetObject(L"Fields").Append(made); }, 3251},  // before the others
      {[&] { field.GetObject(L"Properties").Item(a); }, 3270},
      {[&] { table.GetObject(L"Fields").Item(2); }, 3265},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ErrorOf(c.call), c.error) << &c - cases;
  made.Put(L"OrdinalPosition", std::int16_t{2});
  table.GetObject(L"Fields").Append(made);
  rows.Call(L"Close");
  EXPECT_EQ(ErrorOf([&] { rows.Call(L"MoveFirst"); }), 3420);
  EXPECT_EQ(ErrorOf([&] { rows.Call(L"Close"); }), 3420);
  database.Call(L"Close");
  EXPECT_EQ(ErrorOf([&] { database.Call(L"Close"); }), 3420);
}

TEST_F(DaoObjectsTest, EqualPositionsComeInNameOrder) {
  const DaoObject database = CreateDatabase();
  const DaoObject table = database.CallObject(L"CreateTableDef", {std::string("Т")});
  for (const char* const name : {"я", "а"})
    table.GetObject(L"Fields").Append(table.CallObject(L"CreateField", {std::string(name), 4}));
  database.GetObject(L"TableDefs").Append(table);
  const DaoObject fields = table.GetObject(L"Fields");
  fields.Call(L"Refresh");
  EXPECT_EQ(fields.Item(0).Get(L"Name"), ports::DatabaseValue(std::string("а")));
}

// Also while something else of the program uses components: the update replaces this one's library.
TEST_F(DaoObjectsTest, TheProductsComponentSaysItsVersionAndIsLetGo) {
  for (const std::string version : {"3.6.0.4", "3.6.2.1"}) {
    const std::string library = "version_server_" + version + ".dll";
    const std::string folder =
        tmw::SplitFileName(ports::CurrentPorts().processes->OwnProgram()).Folder;
    const std::string command = "regsvr32 /s \"" + tmw::JoinPath(folder, library) + "\"";
    ASSERT_EQ(tmw::RunProcess("", command, "", true, 0), 0);
    EXPECT_EQ(ports::CurrentPorts().product_version->InstalledVersion(), version);
    EXPECT_EQ(GetModuleHandleW(ToWide(library).c_str()), nullptr);
  }
}

// A statement that is not to fail leaves out what does not fit.
TEST_F(DaoObjectsTest, OnlyAskedForErrorsOfRowsAreReported) {
  DaoDatabase database(CreateDatabase());
  database.Execute("create table Т (а long primary key)", true);
  EXPECT_EQ(database.Execute("insert into Т values (1)", true), 1);
  EXPECT_EQ(database.Execute("insert into Т values (1)", false), 0);
  EXPECT_EQ(ErrorOf([&] { database.Execute("insert into Т values (1)", true); }), 3022);
  EXPECT_EQ(ErrorOf([&] { database.Execute("insert in Т", false); }), 3134);
}

}  // namespace
}  // namespace platform
