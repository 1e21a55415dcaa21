#pragma once

#include "platform/windows/dao/dao_object.h"
#include "ports/database_types.h"

// Definitions of the port as DAO's objects and back.
namespace platform {

ports::FieldDefinition ReadField(const DaoObject& field);
ports::IndexDefinition ReadIndex(const DaoObject& index);
ports::TableDefinition ReadTable(const DaoObject& table);

// A field made by that table definition, not yet appended to it.
DaoObject MakeField(const DaoObject& table, const ports::FieldDefinition& field);
DaoObject MakeIndex(const DaoObject& table, const ports::IndexDefinition& index);

}  // namespace platform
