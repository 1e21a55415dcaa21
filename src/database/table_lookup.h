#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ports/database.h"

// Questions about a database's tables.
namespace tmw {

bool HasTable(ports::Database& database, const std::string& name);

// The same, but false also if the database fails to answer.
bool TableExists(const std::string& name, ports::Database& database);

// The names of all tables but system and hidden ones.
std::vector<std::string> OrdinaryTables(ports::Database& database);

// Those among them that are not linked to another database, and the relations between such tables.
std::vector<std::string> UserTables(ports::Database& database);
std::vector<ports::RelationDefinition> UserRelations(ports::Database& database);

// The number of a table's rows, counted by the engine.
std::int64_t CountRows(ports::Database& database, const std::string& table);

// Row counts by table. Linked tables are left out: their rows lie in other files.
using TableRows = std::map<std::string, std::int64_t>;
TableRows CountAllRows(ports::Database& database);

}  // namespace tmw
