#include "database/table_export.h"

#include <gtest/gtest.h>

#include <string>

#include "ports/ports.h"
#include "tests/support/sandbox.h"

namespace {

TEST(TableExport, WritesStructureAndRowsLineByLine) {
  const tests::Sandbox sandbox;
  const auto db = ports::CurrentPorts().database->CreateDatabase(sandbox.Path("b.mdb"));
  for (const char* const sql :
       {"create table Дела (Ид long not null, Имя text(30), Дата datetime, Сумма currency, Да bit)",
        "create index ПоДате on Дела (Дата desc, Имя) with ignore null",
        "create unique index Имя on Дела (Имя)", "create index Ключ on Дела (Ид) with primary",
        "insert into Дела values (2, 'a|b', #1/2/2001#, 1.5, yes)",
        "insert into Дела values (1, '', null, null, no)"}) {
    db->Execute(sql, true);
  }
  ports::FieldDefinition field;
  field.name = "Вид";
  field.type = ports::DataType::kMemo;
  field.default_value = "\"нет|\"";
  db->CreateField("Дела", field);

  const std::string structure =
      "Table:Дела\r\n"
      "Field:Ид|Long|4|NotNull\r\n"
      "Field:Имя|Text|30|AllowZero\r\n"
      "Field:Дата|Date|8\r\n"
      "Field:Сумма|Curr|8\r\n"
      "Field:Да|Bool|1\r\n"
      "Field:Вид|Memo|0|Default:S\"нет^2\"\r\n"
      "Index:Имя|Unique|Fields:Имя;\r\n"
      "Index:Ключ|Primary|Fields:Ид;\r\n"
      "Index:ПоДате|IgnoreNulls|Fields:Дата/D;Имя;\r\n";
  EXPECT_EQ(tmw::ExportTableToString("дела", true, db.get()), structure + "EndTable\r\n");
  EXPECT_EQ(tmw::ExportTableToString("Дела", false, db.get()),
            structure + "Rows\r\n1|S|||F|\r\n2|Sa^2b|d1|1.5|T|\r\nEndRows\r\nEndTable\r\n");

  db->Execute("create index ExportOrder on Дела (Имя desc)", true);
  db->Execute("update Дела set Ид = 3 where Ид = 1", true);
  const std::string text = tmw::ExportTableToString("Дела", false, db.get());
  EXPECT_LT(text.find("\r\n2|"), text.find("\r\n3|"));

  // The format's rule for separators.
  db->Execute("create table T (a long, b long, c text(5))", true);
  const std::string fields =
      "Table:T\r\nField:a|Long|4\r\nField:b|Long|4\r\nField:c|Text|5|AllowZero\r\nRows\r\n";
  const std::string end = "EndRows\r\nEndTable\r\n";
  EXPECT_EQ(tmw::ExportTableToString("T", false, db.get()), fields + end);
  db->Execute("insert into T values (null, 5, null)", true);
  db->Execute("insert into T values (null, null, 'x')", true);
  EXPECT_EQ(tmw::ExportTableToString("T", false, db.get()), fields + "5|\r\nSx\r\n" + end);
}

}  // namespace
