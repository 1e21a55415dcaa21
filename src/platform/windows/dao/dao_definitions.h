#pragma once

#include "platform/windows/dao/dao_object.h"
#include "ports/database_types.h"

// Definitions of the port as DAO's objects and back.
namespace platform {

// A collection of that object as the database is now. Without a refresh DAO shows what it has shown
// before: nothing that statements have made or changed since.
DaoObject Refreshed(const DaoObject& owner, const wchar_t* collection);

ports::FieldDefinition ReadField(const DaoObject& field);
ports::IndexDefinition ReadIndex(const DaoObject& index);
ports::TableDefinition ReadTable(const DaoObject& table);

ports::RelationDefinition ReadRelation(const DaoObject& relation);

// The ordinal position that comes behind those of all fields.
std::int16_t PositionBehind(const DaoObject& fields);

// A field made by that table definition, not yet appended to it. Fields of equal positions come in
// name order: each needs one of its own.
DaoObject MakeField(const DaoObject& table, const ports::FieldDefinition& field,
                    std::int16_t position);
DaoObject MakeIndex(const DaoObject& table, const ports::IndexDefinition& index);
DaoObject MakeRelation(const DaoObject& database, const ports::RelationDefinition& relation);

}  // namespace platform
