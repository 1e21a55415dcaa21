#include "rollback/books.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "database/database_paths.h"
#include "database/database_texts.h"
#include "database/db_version.h"
#include "database/open_mdb.h"
#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_utils.h"
#include "foundation/patience.h"
#include "foundation/program_error.h"
#include "packages/hash_api.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "product/local_moment.h"
#include "rollback/rollback_texts.h"
#include "services/message_boxes.h"
#include "services/run_log.h"
#include "unzip/unzip.h"

namespace rollback {
namespace {

constexpr const char* kUnpackingEnding = ".unpacking";

ports::FileSystem& Files() {
  return *ports::CurrentPorts().files;
}

// Whatever cannot be examined counts as there: nothing is put in its place.
bool IsThere(const std::string& path) {
  const auto facts = Files().Examine(path);
  return !facts || facts.value.kind != ports::FileKind::kNone;
}

bool Report(const std::string& text) {
  tmw::ShowWarning(texts::kTitle, text);
  return false;
}

// Renames within the folder of the books; nothing may have the new name.
void Rename(const std::string& from, const std::string& to) {
  ports::Status status =
      tmw::TryPatiently(tmw::kPatientAttempts, [&] { return Files().RenameToFree(from, to); });
  if (status) status = Files().FlushFolder(tmw::SplitFileName(to).Folder);
  if (!status) tmw::RaiseApiErrorWithMessage(texts::NotRenamed(from, to), status.code);
}

// Writes the database of the archive to the path and flushes it to the disk.
bool Unpack(const std::string& archive, const std::string& path) {
  tmw::DeleteFile(path);
  const auto opened = tmw::OpenPatiently(path, ports::FileMode::kCreateNew);
  if (!opened) tmw::RaiseApiErrorWithMessage(texts::NotUnpackedTo(path), opened.code);
  ports::File& file = *opened.value;
  ports::Status status;
  const auto write = [&](const char* bytes, std::size_t length) {
    status = file.Write(bytes, length);
    return status.ok;
  };
  std::string why;
  const bool is_whole = tmw::TryUnpackOnlyEntry(archive, write, why);
  if (status) status = file.Flush();
  if (status) status = file.Close();
  if (!status) tmw::RaiseApiErrorWithMessage(texts::NotUnpackedTo(path), status.code);
  return is_whole || Report(texts::BackupSpoiled(archive, why));
}

// As the updater treats a new database before it replaces the books: read from the disk once more,
// and opened.
bool IsGood(const std::string& path, const tmw::KeptBackup& backup) {
  if (tmw::GetFileHash(path) != backup.Hash)
    return Report(texts::BackupSpoiled(backup.Archive, texts::kOtherBooks));
  const auto database = tmw::OpenMdb(path, tmw::database_texts::kNewDatabase, true, true);
  if (!database) return false;
  static_cast<void>(tmw::GetDataBaseVersion(*database));
  database->Close();
  return true;
}

// Deletes its file, if it is still there, at the end of the scope.
class Unpacked {
 public:
  explicit Unpacked(std::string path) : path_(std::move(path)) {}
  Unpacked(const Unpacked&) = delete;
  Unpacked& operator=(const Unpacked&) = delete;
  ~Unpacked() { static_cast<void>(Files().RemoveFile(path_)); }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Returns false after reporting that the present books are in use or cannot be opened.
bool AreFree() {
  const auto present = tmw::GetUserDBForReading();
  if (present) present->Close();
  return present != nullptr;
}

bool AreExchanged(const tmw::KeptBackup& backup, const std::string& set_aside) {
  const std::string database = tmw::UserDatabasePlace();
  return IsThere(database) && (IsThere(set_aside) || tmw::GetFileHash(database) == backup.Hash);
}

}  // namespace

std::string NameToSetAside() {
  const tmw::SplitName database = tmw::SplitFileName(tmw::UserDatabasePlace());
  std::string moment = tmw::LocalMomentText();
  std::replace(moment.begin(), moment.end(), ':', '-');
  for (int number = 1;; ++number) {
    const std::string suffix = number == 1 ? "" : " " + std::to_string(number);
    std::string path =
        tmw::JoinPath(database.Folder, database.Name + std::string(tmw::names::kSetAsideName) +
                                           moment + suffix + ")." + database.Extension);
    if (!IsThere(path)) return path;
  }
}

void CompletePlacing() {
  const std::string copy = tmw::NewUserDatabasePath();
  const std::string database = tmw::UserDatabasePlace();
  if (IsThere(copy) && !IsThere(database)) Rename(copy, database);
}

void DeleteUnusedCopies() {
  const std::string copy = tmw::NewUserDatabasePath();
  tmw::DeleteGrowingCopy(copy);
  if (IsThere(tmw::UserDatabasePlace())) tmw::DeleteFile(copy);
}

bool PrepareBooks(const tmw::KeptBackup& backup, const std::string& set_aside,
                  tmw::UpdaterEvents& events) {
  CompletePlacing();
  if (AreExchanged(backup, set_aside)) return true;
  const std::string database = tmw::UserDatabasePlace();
  if (IsThere(database) && !AreFree()) return false;
  events.OnSetMainAction(texts::kUnpackingBooks);
  events.OnSetIcon("dbgear");
  DeleteUnusedCopies();
  const std::string copy = tmw::NewUserDatabasePath();
  const Unpacked unpacked(database + kUnpackingEnding);
  if (!Unpack(backup.Archive, unpacked.Path()) || !IsGood(unpacked.Path(), backup)) return false;
  tmw::CopyRights(IsThere(database) ? database : backup.Archive, unpacked.Path());
  Rename(unpacked.Path(), copy);
  return true;
}

void ExchangeBooks(const tmw::KeptBackup& backup, const std::string& set_aside,
                   tmw::UpdaterEvents& events) {
  if (AreExchanged(backup, set_aside)) return;
  events.OnSetMainAction(texts::kExchangingBooks);
  events.OnSetIcon("dbgear");
  const std::string copy = tmw::NewUserDatabasePath();
  const std::string database = tmw::UserDatabasePlace();
  const bool had_books = IsThere(database);
  if (had_books) Rename(database, set_aside);
  try {
    Rename(copy, database);
  } catch (const tmw::ProgramError&) {
    // The present books are better than none.
    if (had_books && !IsThere(database)) Rename(set_aside, database);
    throw;
  }
  tmw::LogEvent("books_brought_back", {{"file", database}, {"set_aside", set_aside}});
}

}  // namespace rollback
