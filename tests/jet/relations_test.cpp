#include <gtest/gtest.h>

#include <string>

#include "tests/jet/statement_table.h"

namespace {

using tests::DatabaseTest;
using tests::ErrorOf;

// Goods refer to groups; kinds and sorts are related by two fields, one of them a text.
class RelationTest : public DatabaseTest {
 protected:
  void SetUp() override {
    for (const char* const statement :
         {"create table Группы (Ид long constraint Ключ primary key, Имя text(9) unique)",
          "insert into Группы values (1, 'хвойные')", "insert into Группы values (2, 'листва')",
          "create table Товары (Ид counter primary key, Группа long, Имя text(9))",
          "insert into Товары (Группа, Имя) values (1, 'ель')",
          "insert into Товары (Группа, Имя) values (1, 'пихта')",
          "insert into Товары (Группа, Имя) values (null, 'гриб')"})
      ASSERT_EQ(Run(statement), 0) << statement;
  }
};

#define LINK "alter table Товары add constraint Связь foreign key (Группа) references Группы (Ид)"
#define ROWS "select Группа, Имя from Товары order by Ид"

TEST_F(RelationTest, RowsKeepToTheirRelations) {
  const tests::StatementCase cases[] = {
      // a row needs the row that it refers to, unless the field is Null
      {LINK " -> insert into Товары (Группа) values (7)", "#3201"},
      {LINK " -> insert into Товары (Группа) values (2)", "1"},
      {LINK " -> insert into Товары (Имя) values ('мох')", "1"},
      {LINK " -> update Товары set Группа = 7 where Ид = 3", "#3201"},
      {LINK " -> update Товары set Группа = 2", "3"},
      {LINK " -> update Товары set Имя = 'x' where Группа = 1", "2"},
      // rows that are referred to cannot be deleted
      {LINK " -> delete from Группы where Ид = 1", "#3200"},
      {LINK " -> delete from Группы where Ид = 2", "1"},
      {LINK " -> update Группы set Ид = 5 where Ид = 1", "#3200"},
      {LINK " -> update Группы set Ид = 5 where Ид = 2", "1"},
      {LINK " -> update Группы set Ид = Ид, Имя = 'a' where Ид = 1", "1"},
      // unless the delete cascades
      {LINK " on update cascade -> update Группы set Ид = 5 where Ид = 1 -> " ROWS,
       "5|ель;5|пихта;Null|гриб"},
      {LINK " on update cascade -> delete from Группы", "#3200"},
      {LINK " on delete cascade -> delete from Группы -> " ROWS, "Null|гриб"},
      {LINK " on delete cascade -> delete from Группы where Ид = 1", "1"},
      {LINK " on delete set null on update set null -> delete from Группы -> " ROWS,
       "Null|ель;Null|пихта;Null|гриб"},
      {LINK " on update set null -> update Группы set Ид = 9 where Ид = 1 -> " ROWS,
       "Null|ель;Null|пихта;Null|гриб"},
      {"alter table Товары alter column Группа long not null -> " LINK
       " on delete set null -> delete from Группы",
       "#3314"},
      {LINK " on update no action on delete no action -> delete from Группы", "#3200"},
      // text keys and keys of several fields; a change of case is no new key, but cascades
      {"create table С (Имя text(9) references Группы (Имя) on update cascade)"
       " -> insert into С values ('ХВОЙНЫЕ') -> update Группы set Имя = 'Хвойные' where Ид = 1"
       " -> select Имя from С",
       "Хвойные"},
      {"create table С (Имя text(2) references Группы (Имя) on update cascade)"
       " -> update Группы set Имя = 'ab' where Ид = 1 -> insert into С values ('AB')"
       " -> update Группы set Имя = 'abc' where Ид = 1",
       "#3163"},
      {"create unique index Два on Группы (Имя, Ид)"
       " -> create table С (Н long, И text(9), foreign key (Н, И) references Группы (Ид, Имя))"
       " -> insert into С values (2, null) -> insert into С values (2, 'хвойные')",
       "#3201"},
      // a table may refer to itself
      {"create table Ветви (Ид long primary key, Ствол long references Ветви on delete cascade)"
       " -> insert into Ветви values (1, 1) -> insert into Ветви values (2, 1)"
       " -> insert into Ветви values (3, 2) -> insert into Ветви values (4, null)"
       " -> delete from Ветви where Ид = 1 -> select Ид from Ветви",
       "4"},
      {"create table Ветви (Ид long primary key, Ствол long references Ветви)"
       " -> insert into Ветви values (2, 1)",
       "#3201"},
  };
  CheckStatements(*engine, *db, cases);
}

TEST_F(RelationTest, RelationsAreMadeAndKeepTheirTablesFromHarm) {
  const tests::StatementCase cases[] = {
      {"alter table Товары add constraint К foreign key (Группа) references Нет", "#3371"},
      {"alter table Товары add constraint К foreign key (Нет) references Группы", "#3381"},
      {"alter table Товары add constraint К foreign key (Имя) references Группы", "#3368"},
      {"alter table Товары add foreign key (Группа, Имя) references Группы", "#3368"},
      {"alter table Группы add constraint К foreign key (Имя) references Товары (Имя)", "#3609"},
      {"insert into Товары (Группа) values (7) -> " LINK, "#3201"},
      {LINK " -> " LINK, "#3367"},
      {LINK " on delete", "#3293"},
      {LINK " -> drop table Группы", "#3281"},
      {LINK " -> drop table Товары -> drop table Группы", "0"},
      {LINK " -> drop index Связь on Товары", "#3281"},
      {LINK " -> alter table Группы drop constraint Ключ", "#3281"},
      {LINK " -> alter table Товары drop column Группа", "#3303"},
      {LINK " -> alter table Группы alter column Ид double", "#3303"},
      {LINK " -> alter table Группы alter column Имя text(7) -> insert into Товары (Группа)"
            " values (7)",
       "#3201"},
      {LINK " -> alter table Товары drop column Имя -> delete from Группы", "#3200"},
      {LINK " -> alter table Товары drop constraint связь -> delete from Группы", "2"},
      {"alter table Товары add column Ещё long references Группы -> drop table Группы", "#3281"},
      {"create table Т (а long references Группы, б long references Группы) -> drop table Т", "0"},
      {"create table Ветви (Ид long primary key, С long references Ветви) -> drop table Ветви",
       "0"},
      {"create table [Имя такой длины, что с другим вместе оно для связи не годится] (Ид long "
       "references Группы, Ещё long references Группы)",
       "0"},
      {"alter table Товары add constraint Н not null (Группа)", "#3314"},
      {"alter table Товары add constraint Н not null (Имя) -> insert into Товары (Группа)"
       " values (1)",
       "#3314"},
      {"create table Т (а long, б long, constraint К not null (б)) -> insert into Т (а) values (1)",
       "#3314"},
      {"create table Т (а counter(1, 1), б counter(5))", "#3251"},
  };
  CheckStatements(*engine, *db, cases);
}

// "name: foreign table(fields) -> table(fields) attributes"
std::string Listed(ports::Database& db) {
  std::string text;
  for (const ports::RelationDefinition& relation : db.Relations()) {
    std::string own;
    std::string other;
    for (const ports::RelationFieldPair& pair : relation.fields) {
      own += (own.empty() ? "" : ",") + pair.foreign_name;
      other += (other.empty() ? "" : ",") + pair.name;
    }
    text += relation.name + ": " + relation.foreign_table + "(" + own + ") -> " + relation.table +
            "(" + other + ") " + std::to_string(relation.attributes) + ";";
  }
  return text;
}

TEST_F(RelationTest, ThePortListsMakesAndDropsRelations) {
  ASSERT_EQ(Run("create unique index Два on Группы (Имя, Ид)"), 0);
  const char* const orphan = "insert into Товары (Группа) values (7)";
  const std::int32_t both = ports::kRelationUpdateCascade | ports::kRelationDeleteCascade;
  const std::int32_t loose = ports::kRelationDontEnforce | ports::kRelationLeft;
  const struct {
    const char* statement;
    ports::RelationDefinition relation;
    std::int32_t error;
    const char* listed;
  } cases[] = {
      {orphan, {"С", "Группы", "Товары", 0, {{"Ид", "Группа"}}}, 3201, ""},
      {orphan,
       {"С", "группы", "товары", loose, {{"ид", "группа"}}},
       0,
       "С: Товары(Группа) -> Группы(Ид) 16777218;"},
      {orphan,
       {"С", "Группы", "Товары", loose, {{"Имя", "Группа"}}},
       0,
       "С: Товары(Группа) -> Группы(Имя) 16777218;"},
      {"",
       {"С", "Группы", "Товары", both, {{"Ид", "Группа"}}},
       0,
       "С: Товары(Группа) -> Группы(Ид) 4352;"},
      {"",
       {"с", "Группы", "Товары", 0, {{"Ид", "Группа"}}},
       0,
       "с: Товары(Группа) -> Группы(Ид) 0;"},
      {"", {"С", "Группы", "Товары", ports::kRelationUnique, {{"Ид", "Ид"}}}, 3201, ""},
      {"update Товары set Имя = 'листва', Группа = 2",
       {"С", "Группы", "Товары", ports::kRelationUnique, {{"Имя", "Имя"}, {"Ид", "Группа"}}},
       0,
       "С: Товары(Имя,Группа) -> Группы(Имя,Ид) 1;"},
      {LINK " on delete set null",
       {"СВЯЗЬ", "Группы", "Товары", 0, {{"Ид", "Группа"}}},
       3012,
       "Связь: Товары(Группа) -> Группы(Ид) 8192;"},
      {"", {"С", "Нет", "Товары", 0, {{"Ид", "Группа"}}}, 3265, ""},
      {"", {"С", "Группы", "Товары", 0, {{"Ид", "Нет"}}}, 3265, ""},
      {"", {"С", "Группы", "Товары", 0, {}}, 3366, ""},
      {"", {"", "Группы", "Товары", 0, {{"Ид", "Группа"}}}, 3125, ""},
      {"", {"С", "Группы", "Товары", ports::kRelationInherited, {{"Ид", "Группа"}}}, 3001, ""},
      {"", {"С", "Группы", "Товары", 0, {{"Имя", "Группа"}}}, 3368, ""},
      {"", {"С", "Товары", "Группы", 0, {{"Группа", "Ид"}}}, 3609, ""},
      {"create index С on Товары (Имя)",
       {"С", "Группы", "Товары", 0, {{"Ид", "Группа"}}},
       3284,
       ""},
  };
  for (const auto& c : cases) {
    engine->BeginTrans();
    if (*c.statement != '\0') {
      ASSERT_EQ(Run(c.statement), 0) << c.statement;
    }
    EXPECT_EQ(ErrorOf([&] { db->CreateRelation(c.relation); }), c.error) << &c - cases;
    EXPECT_EQ(Listed(*db), c.listed) << &c - cases;
    engine->Rollback();
  }
}

TEST_F(RelationTest, ARelationMadeByThePortWorksAndGoesWithItsIndex) {
  db->CreateRelation({"С", "Группы", "Товары", ports::kRelationUpdateCascade, {{"Ид", "Группа"}}});
  db->CreateRelation({"А", "Группы", "Товары", ports::kRelationDontEnforce, {{"Ид", "Группа"}}});
  EXPECT_EQ(Run("insert into Товары (Группа) values (7)"), 3201);
  EXPECT_EQ(Run("delete from Группы"), 3200);
  EXPECT_EQ(Run("drop table Группы"), 3281);
  ASSERT_EQ(Run("update Группы set Ид = 5 where Ид = 1"), 0);
  db->Close();
  engine->CompactDatabase(path, sandbox.Path("сжатая.mdb"));
  db = engine->OpenDatabase(sandbox.Path("сжатая.mdb"), true, false);
  EXPECT_EQ(Listed(*db), "А: Товары(Группа) -> Группы(Ид) 2;С: Товары(Группа) -> Группы(Ид) 256;");
  EXPECT_EQ(db->Table("Товары").indexes.size(), 2U);
  EXPECT_EQ(ErrorOf([&] { db->DeleteRelation("Нет"); }), 3265);
  db->DeleteRelation("с");
  EXPECT_EQ(db->Table("Товары").indexes.size(), 1U);
  EXPECT_EQ(Run("insert into Товары (Группа) values (7)"), 0);
  EXPECT_EQ(Run("alter table Группы drop constraint Ключ"), 0) << "nothing enforced needs it";
  EXPECT_EQ(Run("alter table Товары drop column Группа"), 3303);
  EXPECT_EQ(Run("drop table Товары"), 0);
  EXPECT_EQ(Listed(*db), "");
  db->Close();
  EXPECT_EQ(ErrorOf([&] { db->Relations(); }), 3420);
}

}  // namespace
