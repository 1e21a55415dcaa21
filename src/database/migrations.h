#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ports/database.h"

// Conversions of data that are too much for SQL: a database update script runs one by its name.
// The names that the product's scripts use are known here; a class supplies each conversion.
namespace tmw {

class Migration {
 public:
  virtual ~Migration() = default;
  virtual std::string Name() const = 0;
  // Raises an error if the data cannot be converted, which ends the update.
  virtual void Run(ports::Database& database) = 0;
};

// Replaces one of the same name.
void SupplyMigration(std::unique_ptr<Migration> migration);
void WithdrawMigration(std::string_view name);

// Runs the migration of exactly that name. Its failure, like a name without a migration, raises
// error 1001 with the name and the reason.
void RunMigration(const std::string& name, ports::Database& database);

}  // namespace tmw
