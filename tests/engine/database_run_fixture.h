#pragma once

#include <string>
#include <vector>

#include "database/table_export.h"
#include "tests/engine/run_fixture.h"

namespace tests {

inline std::string UpdateScript(const std::string& from, const std::string& to,
                                const std::string& sql) {
  return "<?xml version=\"1.0\"?><TMW_Database_Update db_version_from=\"" + from +
         "\" db_version_to=\"" + to + "\"><Action type=\"sql\">" + sql +
         "</Action></TMW_Database_Update>";
}

// An installation with a database of its own, and a release two versions ahead.
class DatabaseRunTest : public RunTest {
 protected:
  DatabaseRunTest() {
    SetMode(false);
    Execute(
        Path("db/Tamrin.mdb"),
        {"create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long)",
         "insert into DBVersion values (3, 6, 0)", "create table Banks (Код long, Имя text(20))",
         "insert into Banks values (1, 'Банк')", "create table Книга (Ид long, Сумма currency)",
         "insert into Книга values (1, 10.5)", "insert into Книга values (2, -3)",
         "create table Заметки (Ид long)", "insert into Заметки values (7)",
         "create table Архив (Ид long constraint Ключ primary key)",
         "create table Журнал (Ид long constraint Связь references Архив (Ид))"});
    release_.version = "3.6.2.0";
    release_.files = {{"help.txt", "new help", "{p}"}};
    release_.dict = "Banks";
    release_.dict_text =
        "Table:Banks\r\nField:Код|Long|4\r\nField:Имя|Text|30\r\nRows\r\n1|SБанк\r\n2|SБанк "
        "№2\r\nEndRows\r\nEndTable\r\n";
    release_.user = "Книга";
    release_.structures = {{"Книга.tablestruct",
                            "Table:\xCA\xED\xE8\xE3\xE0\r\nField:\xC8\xE4|Long|4\r\nEndTable\r\n"}};
    release_.scripts = {
        {"1.xml", UpdateScript("3.6.0", "3.6.1", "alter table Книга add column Год long")},
        {"2.xml", UpdateScript("3.6.1", "3.6.2", "update Книга set Год = 2000 + Ид")}};
  }

  static void Execute(const std::string& path, const std::vector<std::string>& statements) {
    const auto database = ports::CurrentPorts().database->OpenDatabase(path, true, false);
    for (const std::string& statement : statements)
      database->Execute(statement, true);
    database->Close();
  }

  // The rows of a table of a database below the sandbox, "|" between them.
  std::string Rows(const std::string& path, const std::string& table) const {
    const auto database = ports::CurrentPorts().database->OpenDatabase(Path(path), true, true);
    const std::string text = tmw::ExportTableToString(table, false, database.get());
    const auto start = text.find("Rows\r\n") + 6;
    return text.substr(start, text.find("EndRows") - start);
  }
};

inline const std::string kNewBook = "1|10.5|2001\r\n2|-3|2002\r\n";

}  // namespace tests
