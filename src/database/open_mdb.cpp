#include "database/open_mdb.h"

#include <cstdint>

#include "database/access_helpers.h"
#include "database/database_texts.h"
#include "database/engine_failures.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "ports/clock.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr int kSilentRetries = 10;
constexpr std::int32_t kSilentWait = 1000;  // milliseconds
constexpr std::int32_t kAskedWait = 500;

// Waits for the next attempt. Returns false if the user gives up.
bool AwaitNextAttempt(int failures, const std::string& path, const std::string& description) {
  const ports::Ports& ports = ports::CurrentPorts();
  if (failures <= kSilentRetries) {
    ports.clock->Sleep(kSilentWait);
    return true;
  }
  if (!AskQuestion(box_titles::kFileInUse, database_texts::FileInUse(description, path)))
    return false;
  ports.front_end->RunPendingEvents();
  ports.clock->Sleep(kAskedWait);
  return true;
}

}  // namespace

std::unique_ptr<ports::Database> OpenMdb(const std::string& path, const std::string& description,
                                         bool exclusive, bool read_only) try {
  if (!IsFileExists(path)) {
    ShowWarning(box_titles::kDatabaseError, database_texts::FileMissing(description, path),
                FailureKind::kDatabaseMissing);
    return nullptr;
  }
  for (int failures = 1;; ++failures) {
    try {
      return ports::CurrentPorts().database->OpenDatabase(path, exclusive, read_only);
    } catch (const ports::DatabaseError& error) {
      if (!exclusive || !IsDatabaseInUse(error.Number)) {
        ShowWarning(box_titles::kDatabaseError,
                    database_texts::CannotOpen(description, path, error.Description),
                    KindOfNumber(error.Number));
        return nullptr;
      }
    }
    if (!AwaitNextAttempt(failures, path, description)) return nullptr;
  }
} catch (...) {
  ReRaiseError(kRunModule, "OpenMdb");
}

std::unique_ptr<ports::Database> GetUserDB() try {
  return OpenMdb(database_utils::GetUserDBFileName(), database_texts::kUserDatabase, true, false);
} catch (...) {
  ReRaiseError(kRunModule, "GetUserDB");
}

std::unique_ptr<ports::Database> GetUserDBForReading() {
  return OpenMdb(database_utils::GetUserDBFileName(), database_texts::kUserDatabase, true, true);
}

}  // namespace tmw
