#include "database/migrations.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <utility>

#include "database/database_texts.h"
#include "foundation/error_handling.h"

namespace tmw {
namespace {

constexpr std::string_view kKnown[] = {
    "NormalizePfrNumbers",  "ConvertNonImnsAccStreams", "NormalizePfrNumbers2",
    "ConvertAuthorityDocs", "ConvertPfrCitizenship",    "ConvertPfrMultiMainRates",
};

using Supplied = std::map<std::string, std::unique_ptr<Migration>, std::less<>>;

Supplied& SuppliedMigrations() {
  static Supplied migrations;
  return migrations;
}

Migration& Find(const std::string& name) {
  const auto found = SuppliedMigrations().find(name);
  if (found != SuppliedMigrations().end()) return *found->second;
  const bool is_known = std::find(std::begin(kKnown), std::end(kKnown), name) != std::end(kKnown);
  RaiseProgramError(is_known ? database_texts::kMigrationNotSupplied
                             : database_texts::kMigrationUnknown);
}

}  // namespace

void SupplyMigration(std::unique_ptr<Migration> migration) {
  std::string name = migration->Name();
  SuppliedMigrations()[std::move(name)] = std::move(migration);
}

void WithdrawMigration(std::string_view name) {
  SuppliedMigrations().erase(std::string(name));
}

void RunMigration(const std::string& name, ports::Database& database) {
  try {
    Find(name).Run(database);
  } catch (...) {
    const ProgramError error = CurrentError();
    throw ProgramError(kProgramErrorNumber,
                       database_texts::MigrationFailed(name, error.Description), error.Source);
  }
}

}  // namespace tmw
