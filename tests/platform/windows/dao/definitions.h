#pragma once

#include <memory>
#include <string>

#include "ports/database.h"
#include "tests/platform/windows/dao/collection.h"

namespace tests {

// What everything that came out of one open database shares.
struct ServedDatabase {
  std::shared_ptr<ports::DatabaseEngine> engine;
  std::unique_ptr<ports::Database> database;
};
using SharedDatabase = std::shared_ptr<ServedDatabase>;

// What a Create method of an object of that class makes; the arguments are its first values.
platform::ComPointer<Definition> Create(const DaoMember& method, const std::string& owner,
                                        const ServedObject::Arguments& arguments);
// Throws if that property of such an object cannot have that value.
void CheckNewValue(const Definition& item, const std::string& owner, const std::string& property,
                   const ports::DatabaseValue& value);
// Throws if the object lacks what it needs to be appended.
void CheckComplete(const Definition& item);

// A field's values as they are read from a table.
Definition::Values ValuesOf(const ports::FieldDefinition& field, std::size_t position);

platform::ComPointer<Collection> TablesOf(const SharedDatabase& shared);
platform::ComPointer<Collection> RelationsOf(const SharedDatabase& shared);

}  // namespace tests
