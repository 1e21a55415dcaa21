#include "jet/file/system_tables.h"

namespace jet::file {
namespace {

namespace column = definition::column;
namespace real_index = definition::real_index;

constexpr std::uint8_t kFixed = column::kFixed | column::kNullable | column::kSystem;
constexpr std::uint8_t kVariable = column::kNullable | column::kSystem;
constexpr std::uint8_t kAccountId = kVariable | column::kSystemId;
constexpr std::uint16_t kWide = limits::kBinaryLength;

constexpr SystemColumn kObjectsColumns[] = {
    {"Id", ColumnType::kLong, 4, kFixed},
    {"ParentId", ColumnType::kLong, 4, kFixed},
    {"Name", ColumnType::kText, kWide, kVariable},
    {"Type", ColumnType::kInteger, 2, kFixed},
    {"DateCreate", ColumnType::kDate, 8, kFixed},
    {"DateUpdate", ColumnType::kDate, 8, kFixed},
    {"Owner", ColumnType::kBinary, kWide, kAccountId},
    {"Flags", ColumnType::kLong, 4, kFixed},
    {"Database", ColumnType::kMemo, 0, kVariable},
    {"Connect", ColumnType::kMemo, 0, kVariable},
    {"ForeignName", ColumnType::kText, kWide, kVariable},
    {"RmtInfoShort", ColumnType::kBinary, kWide, kVariable},
    {"RmtInfoLong", ColumnType::kOle, 0, kVariable},
    {"Lv", ColumnType::kOle, 0, kVariable},
    {"LvProp", ColumnType::kOle, 0, kVariable},
    {"LvModule", ColumnType::kOle, 0, kVariable},
    {"LvExtra", ColumnType::kOle, 0, kVariable},
};

constexpr SystemColumn kRightsColumns[] = {
    {"ObjectId", ColumnType::kLong, 4, kFixed},
    {"SID", ColumnType::kBinary, kWide, kAccountId},
    {"ACM", ColumnType::kLong, 4, kFixed},
    {"FInheritable", ColumnType::kBoolean, 1, kFixed},
};

constexpr SystemColumn kQueriesColumns[] = {
    {"ObjectId", ColumnType::kLong, 4, kFixed},
    {"Attribute", ColumnType::kByte, 1, kFixed},
    {"Order", ColumnType::kBinary, kWide, kVariable},
    {"Name1", ColumnType::kText, kWide, kVariable},
    {"Name2", ColumnType::kText, kWide, kVariable},
    {"Expression", ColumnType::kMemo, 0, kVariable},
    {"Flag", ColumnType::kInteger, 2, kFixed},
    {"LvExtra", ColumnType::kLong, 4, kFixed},
};

constexpr SystemColumn kRelationsColumns[] = {
    {"szRelationship", ColumnType::kText, kWide, kVariable},
    {"grbit", ColumnType::kLong, 4, kFixed},
    {"ccolumn", ColumnType::kLong, 4, kFixed},
    {"icolumn", ColumnType::kLong, 4, kFixed},
    {"szObject", ColumnType::kText, kWide, kVariable},
    {"szColumn", ColumnType::kText, kWide, kVariable},
    {"szReferencedObject", ColumnType::kText, kWide, kVariable},
    {"szReferencedColumn", ColumnType::kText, kWide, kVariable},
};

constexpr std::uint8_t kUnique = real_index::kAlways | real_index::kUnique;
constexpr std::uint8_t kRequired = real_index::kAlways | real_index::kRequired;
constexpr std::uint8_t kIgnoresNulls = real_index::kAlways | real_index::kIgnoreNulls;

constexpr std::uint16_t kParentAndName[] = {objects_column::kParentId, objects_column::kName};
constexpr std::uint16_t kObjectsId[] = {objects_column::kId};
constexpr SystemIndex kObjectsIndexes[] = {
    {"ParentIdName", kParentAndName, kUnique, false},
    {"Id", kObjectsId, kUnique, true},
};

constexpr std::uint16_t kRightsObjectId[] = {rights_column::kObjectId};
constexpr SystemIndex kRightsIndexes[] = {{"ObjectId", kRightsObjectId, kRequired, false}};

constexpr std::uint16_t kQueriesKey[] = {queries_column::kObjectId, queries_column::kAttribute,
                                         queries_column::kOrder};
constexpr SystemIndex kQueriesIndexes[] = {{"ObjectIdAttribute", kQueriesKey, kUnique, true}};

constexpr std::uint16_t kRelationsRelation[] = {relations_column::kRelation};
constexpr std::uint16_t kRelationsTableColumn[] = {relations_column::kTable};
constexpr std::uint16_t kRelationsReferenced[] = {relations_column::kReferencedTable};
constexpr SystemIndex kRelationsIndexes[] = {
    {"szRelationship", kRelationsRelation, kIgnoresNulls, false},
    {"szObject", kRelationsTableColumn, kIgnoresNulls, false},
    {"szReferencedObject", kRelationsReferenced, kIgnoresNulls, false},
};

}  // namespace

const SystemTable kObjectsTable{"MSysObjects", kObjectsColumns, kObjectsIndexes};
const SystemTable kRightsTable{"MSysACEs", kRightsColumns, kRightsIndexes};
const SystemTable kQueriesTable{"MSysQueries", kQueriesColumns, kQueriesIndexes};
const SystemTable kRelationsTable{"MSysRelationships", kRelationsColumns, kRelationsIndexes};

bool IsForeignObject(std::int16_t type) {
  return type == object_type::kForm || type == object_type::kMacro ||
         type == object_type::kReport || type == object_type::kModule ||
         type == object_type::kDataAccessPage;
}

}  // namespace jet::file
