#include "engine/user_database.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "database/access_helpers.h"
#include "database/database_paths.h"
#include "database/database_texts.h"
#include "database/open_mdb.h"
#include "engine/engine_texts.h"
#include "engine/verified_copy.h"
#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "ports/database.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "sha256/sha256.h"

namespace tmw {
namespace {

constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kReadBytes = std::size_t{256} << 10;

bool IsGoodCopy(const std::string& copy, const NewUserDatabase& replacement) {
  if (GetFileHash(copy) != replacement.BuiltHash) {
    DownloadError(engine_texts::CopyDiffers(replacement.Built, copy), FailureKind::kDatabase);
    return false;
  }
  const auto database = OpenMdb(copy, database_texts::kNewDatabase, true, true);
  if (!database) return false;
  const DbVersion version = GetDataBaseVersion(*database);
  if (version >= replacement.TargetVersion) return true;
  DownloadError(engine_texts::NewDatabaseTooOld(DbVersionText(version)), FailureKind::kDatabase);
  return false;
}

ports::Outcome<std::string> TryHashOfUserRows() {
  using Result = ports::Outcome<std::string>;
  const auto opened = ports::CurrentPorts().files->Open(database_utils::GetUserDBFileName(),
                                                        ports::FileMode::kRead);
  if (!opened) return Result::Failure(opened.code);
  sha256::Stream stream;
  std::vector<char> buffer(kReadBytes);
  for (std::size_t to_pass_over = kPageBytes;;) {
    const auto count = opened.value->Read(buffer.data(), buffer.size());
    if (!count) return Result::Failure(count.code);
    if (count.value == 0) return Result::Success(GetHashString(stream.Finish()));
    const std::size_t passed = std::min(to_pass_over, count.value);
    to_pass_over -= passed;
    stream.Update(buffer.data() + passed, count.value - passed);
  }
}

// A hash is compared, because the number of rows says nothing about a changed amount. No other
// program can write meanwhile: the engine holds the file or, if that keeps it from being read, the
// reading does.
bool IsUnchanged(const std::string& hash) {
  const auto database = GetUserDBForReading();
  if (!database) return false;
  const auto present = TryHashOfUserRows();
  database->Close();
  if ((present ? present.value : HashOfUserRows()) == hash) return true;
  DownloadError(engine_texts::kDatabaseChanged, FailureKind::kDatabaseHeld);
  return false;
}

// The old one is gone by now, so a failure must say where the user's rows are.
void GiveCopyItsName(const std::string& copy, const std::string& database) {
  try {
    MoveFile(copy, database);
  } catch (...) {
    const ProgramError error = CurrentError();
    if (!IsFileExists(copy)) throw;
    throw ProgramError(error.Number, engine_texts::CopyNotNamed(error.Description, copy, database),
                       error.Source);
  }
}

void FinishReplacement() {
  const std::string database = UserDatabasePlace();
  const std::string copy = NewUserDatabasePath();
  if (IsFileExists(copy) && !IsFileExists(database)) MoveFile(copy, database);
}

}  // namespace

void CheckUserDatabase(bool is_client) {
  if (!is_client) FinishReplacement();
  ports::CurrentPorts()
      .database->OpenDatabase(database_utils::GetUserDBFileName(), true, false)
      ->Close();
  if (!is_client) DeleteFile(NewUserDatabasePath(), true);
}

std::string HashOfUserRows() {
  const auto hash = TryHashOfUserRows();
  if (!hash) {
    RaiseApiErrorWithMessage(engine_texts::DatabaseNotRead(database_utils::GetUserDBFileName()),
                             hash.code);
  }
  return hash.value;
}

bool ReplaceUserDatabase(const NewUserDatabase& replacement) {
  const std::string database = UserDatabasePlace();
  const std::string copy = NewUserDatabasePath();
  if (!CopyBuiltDatabase(replacement.Built, copy, replacement.BuiltHash)) return false;
  if (!IsGoodCopy(copy, replacement)) {
    DeleteFile(copy, true);
    return false;
  }
  // Some systems delete a file that a program has open: what that writes would be lost.
  if (IsFileExists(database)) {
    if (!IsUnchanged(replacement.UserRowsHash)) {
      DeleteFile(copy, true);
      return false;
    }
    CopyRights(database, copy);
    DeleteFileRepeatedly(database);
  }
  GiveCopyItsName(copy, database);
  LogEvent("database_replaced",
           {{"file", database}, {"version", DbVersionText(replacement.TargetVersion)}});
  DeleteFile(replacement.Built);
  return true;
}

}  // namespace tmw
