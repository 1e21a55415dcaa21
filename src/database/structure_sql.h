#pragma once

#include <string>
#include <vector>

#include "ports/database_types.h"

// Pieces of a database's structure as statements of the engine say them; without ";".
namespace tmw {

// "[name]", and "([a], [b])".
std::string SqlName(const std::string& name);
std::string NamesSql(const std::vector<std::string>& names);

// "TEXT(20)", "COUNTER", "DECIMAL(18, 2)"; empty for a type that has no word in SQL.
std::string TypeWord(const ports::FieldDefinition& field);

// "TEXT(20) NOT NULL DEFAULT "нет"", for people to read: any type, and the default as the
// definition has it.
std::string FieldSql(const ports::FieldDefinition& field);

// Its own indexes, a statement each: relations bring theirs along.
std::vector<std::string> IndexSql(const ports::TableDefinition& table);

// ALTER TABLE … ADD CONSTRAINT, or, for what that cannot say,
// RELATION [name] [foreign table] ([field], …) REFERENCES [table] ([field], …) ATTRIBUTES
std::string RelationSql(const ports::RelationDefinition& relation);

}  // namespace tmw
