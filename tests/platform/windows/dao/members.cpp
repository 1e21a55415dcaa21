#include "tests/platform/windows/dao/members.h"

#include <cstddef>

#include "foundation/text.h"

namespace tests {
namespace {

using enum DaoAccess;
using enum DaoKind;

constexpr bool kOptional = true;

// Types of fields, and of recordsets: table, dynaset, snapshot, forward only, dynamic.
const DaoNumbers kFieldTypes = {
    {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 15, 16, 17, 18, 19, 20, 21, 22, 23}};
const DaoNumbers kRecordsetTypes = {{1, 2, 4, 8, 16}};
// Versions of a new file, and encryption (2).
const DaoNumbers kDatabaseOptions = {{1, 2, 8, 16, 32, 64}, true};
const DaoNumbers kExecuteOptions = {{1, 16, 32, 64, 128, 512, 1024}, true};
const DaoNumbers kRelationAttributes = {{1, 2, 4, 0x100, 0x1000, 0x1000000, 0x2000000}, true};
const DaoNumbers kIdleActions = {{1, 8}};
const DaoNumbers kCommitOptions = {{1}};

// Every collection answers to these; members of it are of the object's class.
void AddCollection(std::vector<DaoMember>& members, const char* collection, const char* object) {
  members.push_back({collection, "Count", kRead, {}, kNumber});
  members.push_back({collection, "Item", kRead, {{"Item", kKey}}, kObject, object});
  members.push_back({collection, "Refresh"});
  members.push_back({collection, "Append", kMethod, {{"Object", kObject}}});
  members.push_back({collection, "Delete", kMethod, {{"Name", kText}}});
}

std::vector<DaoMember> MakeMembers() {
  const std::vector<DaoParameter> create_field = {{"Name", kText, kOptional},
                                                  {"Type", kNumber, kOptional, kFieldTypes},
                                                  {"Size", kNumber, kOptional}};
  const std::vector<DaoParameter> create_property = {{"Name", kText, kOptional},
                                                     {"Type", kNumber, kOptional, kFieldTypes},
                                                     {"Value", kValue, kOptional},
                                                     {"DDL", kTruth, kOptional}};
  std::vector<DaoMember> members = {
      {"DBEngine", "Version", kRead, {}, kText},
      {"DBEngine",
       "OpenDatabase",
       kMethod,
       {{"Name", kText},
        {"Options", kTruth, kOptional},
        {"ReadOnly", kTruth, kOptional},
        {"Connect", kText, kOptional}},
       kObject,
       "Database"},
      {"DBEngine",
       "CreateDatabase",
       kMethod,
       {{"Name", kText}, {"Locale", kText}, {"Option", kNumber, kOptional, kDatabaseOptions}},
       kObject,
       "Database"},
      {"DBEngine",
       "CompactDatabase",
       kMethod,
       {{"SrcName", kText},
        {"DstName", kText},
        {"DstLocale", kText, kOptional},
        {"Options", kNumber, kOptional},
        {"SrcLocale", kText, kOptional}}},
      {"DBEngine", "Idle", kMethod, {{"Action", kNumber, kOptional, kIdleActions}}},
      {"DBEngine", "BeginTrans"},
      {"DBEngine", "CommitTrans", kMethod, {{"Options", kNumber, kOptional, kCommitOptions}}},
      {"DBEngine", "Rollback"},

      {"Database", "Name", kRead, {}, kText},
      {"Database", "TableDefs", kRead, {}, kObject, "TableDefs"},
      {"Database", "Relations", kRead, {}, kObject, "Relations"},
      {"Database", "RecordsAffected", kRead, {}, kNumber},
      {"Database",
       "CreateTableDef",
       kMethod,
       {{"Name", kText, kOptional},
        {"Attributes", kNumber, kOptional},
        {"SourceTableName", kText, kOptional},
        {"Connect", kText, kOptional}},
       kObject,
       "TableDef"},
      {"Database",
       "CreateRelation",
       kMethod,
       {{"Name", kText, kOptional},
        {"Table", kText, kOptional},
        {"ForeignTable", kText, kOptional},
        {"Attributes", kNumber, kOptional, kRelationAttributes}},
       kObject,
       "Relation"},
      {"Database",
       "Execute",
       kMethod,
       {{"Query", kText}, {"Options", kNumber, kOptional, kExecuteOptions}}},
      {"Database",
       "OpenRecordset",
       kMethod,
       {{"Name", kText},
        {"Type", kNumber, kOptional, kRecordsetTypes},
        {"Options", kNumber, kOptional},
        {"LockEdit", kNumber, kOptional}},
       kObject,
       "Recordset"},
      {"Database", "Close"},

      {"TableDef", "Name", kReadWrite, {}, kText},
      {"TableDef", "Attributes", kReadWrite, {}, kNumber},
      {"TableDef", "Fields", kRead, {}, kObject, "Fields"},
      {"TableDef", "Indexes", kRead, {}, kObject, "Indexes"},
      {"TableDef", "CreateField", kMethod, create_field, kObject, "Field"},
      {"TableDef", "CreateIndex", kMethod, {{"Name", kText, kOptional}}, kObject, "Index"},

      {"Field", "Name", kReadWrite, {}, kText},
      {"Field", "Type", kReadWrite, {}, kNumber},
      {"Field", "Size", kReadWrite, {}, kNumber},
      {"Field", "Attributes", kReadWrite, {}, kNumber},
      {"Field", "OrdinalPosition", kReadWrite, {}, kNumber},
      {"Field", "Required", kReadWrite, {}, kTruth},
      {"Field", "AllowZeroLength", kReadWrite, {}, kTruth},
      {"Field", "DefaultValue", kReadWrite, {}, kText},
      {"Field", "ForeignName", kReadWrite, {}, kText},
      {"Field", "Value", kReadWrite, {}, kValue},
      {"Field", "Properties", kRead, {}, kObject, "Properties"},
      {"Field", "CreateProperty", kMethod, create_property, kObject, "Property"},

      {"Property", "Name", kReadWrite, {}, kText},
      {"Property", "Type", kReadWrite, {}, kNumber},
      {"Property", "Value", kReadWrite, {}, kValue},

      {"Index", "Name", kReadWrite, {}, kText},
      {"Index", "Primary", kReadWrite, {}, kTruth},
      {"Index", "Unique", kReadWrite, {}, kTruth},
      {"Index", "Required", kReadWrite, {}, kTruth},
      {"Index", "IgnoreNulls", kReadWrite, {}, kTruth},
      {"Index", "Foreign", kRead, {}, kTruth},
      {"Index", "Fields", kRead, {}, kObject, "Fields"},
      {"Index", "CreateField", kMethod, create_field, kObject, "Field"},

      {"Relation", "Name", kReadWrite, {}, kText},
      {"Relation", "Table", kReadWrite, {}, kText},
      {"Relation", "ForeignTable", kReadWrite, {}, kText},
      {"Relation", "Attributes", kReadWrite, {}, kNumber},
      {"Relation", "Fields", kRead, {}, kObject, "Fields"},
      {"Relation", "CreateField", kMethod, create_field, kObject, "Field"},

      {"Recordset", "BOF", kRead, {}, kTruth},
      {"Recordset", "EOF", kRead, {}, kTruth},
      {"Recordset", "Index", kReadWrite, {}, kText},
      {"Recordset", "Fields", kRead, {}, kObject, "Fields"},
      {"Recordset", "MoveFirst"},
      {"Recordset", "MoveLast", kMethod, {{"Options", kNumber, kOptional}}},
      {"Recordset", "MoveNext"},
      {"Recordset", "MovePrevious"},
      {"Recordset", "Edit"},
      {"Recordset", "AddNew"},
      {"Recordset",
       "Update",
       kMethod,
       {{"UpdateType", kNumber, kOptional}, {"Force", kTruth, kOptional}}},
      {"Recordset", "Delete"},
      {"Recordset", "Close"},

      // The product's own component.
      {"VersionInfo", "VersionEx", kRead, {}, kText},
  };
  AddCollection(members, "TableDefs", "TableDef");
  AddCollection(members, "Relations", "Relation");
  AddCollection(members, "Fields", "Field");
  AddCollection(members, "Indexes", "Index");
  AddCollection(members, "Properties", "Property");
  return members;
}

}  // namespace

bool DaoNumbers::Allow(std::int32_t number) const {
  if (values.empty()) return true;
  std::int32_t rest = number;
  for (const std::int32_t value : values) {
    if (number == value) return true;
    rest &= ~value;
  }
  return are_bits && rest == 0;
}

const std::vector<DaoMember>& DaoMembers() {
  static const std::vector<DaoMember> kMembers = MakeMembers();
  return kMembers;
}

int FindDaoMember(std::string_view object, std::string_view name) {
  const std::vector<DaoMember>& members = DaoMembers();
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (members[i].object == object && tmw::EqualIgnoringCase(members[i].name, name))
      return static_cast<int>(i);
  }
  return -1;
}

}  // namespace tests
