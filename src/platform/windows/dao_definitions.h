#pragma once

#include "platform/database_types.h"
#include "platform/windows/dao_object.h"

// Definitions of the port as DAO's objects and back.
namespace platform {

FieldDefinition ReadField(const DaoObject& field);
IndexDefinition ReadIndex(const DaoObject& index);
TableDefinition ReadTable(const DaoObject& table);

// A field made by that table definition, not yet appended to it.
DaoObject MakeField(const DaoObject& table, const FieldDefinition& field);
DaoObject MakeIndex(const DaoObject& table, const IndexDefinition& index);

}  // namespace platform
