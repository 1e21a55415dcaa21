#include "database/compaction.h"

#include <cstdint>

#include "database/access_helpers.h"
#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "platform/clock.h"
#include "platform/database.h"
#include "platform/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr std::int32_t kAfterCompactingMs = 1000;

}  // namespace

void FlushDBEngine() try {
  platform::DatabaseEngine& engine = *platform::CurrentPorts().database;
  engine.Idle(platform::IdleOption::kRefreshCache);
  engine.Idle(platform::IdleOption::kFreeLocks);
} catch (...) {
  ReRaiseError("miUpdaterUtils", "FlushDBEngine");
}

void CopyUserDatabase(const std::string& target) {
  DeleteFile(target);
  platform::CurrentPorts().database->CompactDatabase(database_utils::GetUserDBFileName(), target);
  platform::CurrentPorts().clock->Sleep(kAfterCompactingMs);
}

void PackDataBase(const std::string& path) try {
  const std::string packed = path + std::string(names::kPackingEnding);
  DeleteFile(packed);
  platform::CurrentPorts().database->CompactDatabase(path, packed);
  DeleteFileRepeatedly(path);
  MoveFile(packed, path);
} catch (...) {
  ReRaiseError(kModule, "PackDataBase");
}

}  // namespace tmw
