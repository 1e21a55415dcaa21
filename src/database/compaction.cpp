#include "database/compaction.h"

#include <cstdint>

#include "database/access_helpers.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/database.h"
#include "ports/ports.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr std::int32_t kAfterCompactingMs = 1000;

}  // namespace

void FlushDBEngine() try {
  ports::DatabaseEngine& engine = *ports::CurrentPorts().database;
  engine.Idle(ports::IdleOption::kRefreshCache);
  engine.Idle(ports::IdleOption::kFreeLocks);
} catch (...) {
  ReRaiseError("miUpdaterUtils", "FlushDBEngine");
}

void CopyUserDatabase(const std::string& target) {
  DeleteFile(target);
  ports::CurrentPorts().database->CompactDatabase(database_utils::GetUserDBFileName(), target);
  ports::CurrentPorts().clock->Sleep(kAfterCompactingMs);
}

void PackDataBase(const std::string& path) try {
  const std::string packed = path + std::string(names::kPackingEnding);
  DeleteFile(packed);
  ports::CurrentPorts().database->CompactDatabase(path, packed);
  MoveFile(packed, path);
} catch (...) {
  ReRaiseError(kRunModule, "PackDataBase");
}

}  // namespace tmw
