#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ports/database.h"

// Rewritings of data that are written into the program and that a database update script runs by
// their name. Those that the product's scripts ask for are known by name; each is supplied by a
// class of its own.
namespace tmw {

class Migration {
 public:
  virtual ~Migration() = default;
  virtual std::string Name() const = 0;
  // Raises when the data cannot be rewritten: the update then ends.
  virtual void Run(ports::Database& database) = 0;
};

// Replaces one of the same name.
void SupplyMigration(std::unique_ptr<Migration> migration);
void WithdrawMigration(std::string_view name);

// Runs the migration of exactly that name. Whatever fails, and a name that nothing is supplied for,
// raises error 1001 with the name and the reason.
void RunMigration(const std::string& name, ports::Database& database);

}  // namespace tmw
