#include "database/open_mdb.h"

#include <cstdint>

#include "database/access_helpers.h"
#include "database/database_texts.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "platform/clock.h"
#include "platform/front_end.h"
#include "platform/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";
constexpr const char* kUserDatabase = "базы данных";
constexpr int kSilentRetries = 10;
constexpr std::int32_t kSilentWait = 1000;  // milliseconds
constexpr std::int32_t kAskedWait = 500;

void Warn(const std::string& text) {
  platform::CurrentPorts().front_end->ShowMessage(platform::MessageKind::kWarning,
                                                  database_texts::kUpdateErrorTitle, text);
}

bool IsInUse(std::int32_t number) {
  return number == platform::kOpenedExclusively || number == platform::kFileAlreadyInUse;
}

// Waits for the next attempt; false when the user gives up.
bool AwaitNextAttempt(int failures, const std::string& path, const std::string& description) {
  const platform::Ports& ports = platform::CurrentPorts();
  if (failures <= kSilentRetries) {
    ports.clock->Sleep(kSilentWait);
    return true;
  }
  if (!ports.front_end->AskYesNo(database_texts::kFileInUseTitle,
                                 database_texts::FileInUse(description, path))) {
    return false;
  }
  ports.front_end->RunPendingEvents();
  ports.clock->Sleep(kAskedWait);
  return true;
}

}  // namespace

std::unique_ptr<platform::Database> OpenMdb(const std::string& path, const std::string& description,
                                            bool exclusive, bool read_only) try {
  if (!IsFileExists(path)) {
    Warn(database_texts::FileMissing(description, path));
    return nullptr;
  }
  for (int failures = 1;; ++failures) {
    try {
      return platform::CurrentPorts().database->OpenDatabase(path, exclusive, read_only);
    } catch (const platform::DatabaseError& error) {
      if (!exclusive || !IsInUse(error.Number)) {
        Warn(database_texts::CannotOpen(description, path, error.Description));
        return nullptr;
      }
    }
    if (!AwaitNextAttempt(failures, path, description)) return nullptr;
  }
} catch (...) {
  ReRaiseError(kModule, "OpenMdb");
}

std::unique_ptr<platform::Database> GetUserDB() try {
  return OpenMdb(database_utils::GetUserDBFileName(), kUserDatabase, true, false);
} catch (...) {
  ReRaiseError(kModule, "GetUserDB");
}

std::unique_ptr<platform::Database> GetUserDBForReading() {
  return OpenMdb(database_utils::GetUserDBFileName(), kUserDatabase, true, true);
}

}  // namespace tmw
