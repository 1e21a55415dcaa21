#include "jet/store/container.h"

#include <utility>

#include "jet/errors.h"
#include "jet/file/database_writer.h"
#include "jet/store/new_file.h"
#include "jet/values/calendar.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace jet {
namespace {

// How often a file may be exchanged while it is being opened.
constexpr int kOpenAttempts = 10;

std::string FollowedPath(const std::string& path) {
  const auto followed = ports::CurrentPorts().files->FollowLinks(path);
  return followed ? followed.value : path;
}

}  // namespace

std::unique_ptr<ports::FileLock> LockFile(const std::string& path, bool exclusive) {
  auto locked = ports::CurrentPorts().file_locks->TryLock(
      path, exclusive ? ports::FileLockMode::kExclusive : ports::FileLockMode::kShared);
  if (!locked) Fail(kNoPermission, path);
  switch (locked.value.verdict) {
    case ports::FileLockVerdict::kLocked:
      return std::move(locked.value.lock);
    case ports::FileLockVerdict::kHeldShared:
      Fail(kFileInUse, path);
    case ports::FileLockVerdict::kHeldExclusively:
      Fail(kOpenedExclusively, path);
    case ports::FileLockVerdict::kMissing:
      Fail(kFileNotFound, path);
    case ports::FileLockVerdict::kForbidden:
      break;
  }
  Fail(kNoPermission, path);
}

Container::Container(const std::string& path, bool exclusive, Purpose purpose)
    : path_(FollowedPath(path)), is_exclusive_(exclusive) {
  for (int attempt = 1;; ++attempt) {
    OpenPages();
    if (IsStillNamed()) break;
    Release();
    if (attempt == kOpenAttempts) Fail(kFileInUse, path_);
  }
  reader_ = std::make_unique<file::DatabaseReader>(file_, path_);
  if (purpose == Purpose::kRewriting) reader_->RequireRewritable();
}

Container::Container(std::string path, std::unique_ptr<ports::FileLock> lock)
    : path_(std::move(path)), is_exclusive_(true), lock_(std::move(lock)) {
  OpenPages();
  reader_ = std::make_unique<file::DatabaseReader>(file_, path_);
}

// The file is open before the name is locked and has the name afterwards: it had it in between, so
// it is the one that is locked.
void Container::OpenPages() {
  auto opened = ports::CurrentPorts().page_files->Open(path_, ports::PageFileMode::kRead);
  // Why a file cannot be opened is said by the lock.
  if (!lock_) lock_ = LockFile(path_, is_exclusive_);
  if (!opened) Fail(kNoPermission, path_);
  const auto identity = opened.value->Identity();
  if (!identity) Fail(kDiskError);
  identity_ = identity.value;
  file_ = std::move(opened.value);
}

bool Container::IsStillNamed() {
  const auto named = ports::CurrentPorts().page_files->IdentityOf(path_);
  return named && named.value == identity_;
}

void Container::RequireName() {
  if (!IsStillNamed()) Fail(kLockedByOther);
}

void Container::LockForChange() {
  if (may_change_) return;
  const auto facts = ports::CurrentPorts().files->Examine(path_);
  if (facts && facts.value.read_only) Fail(kReadOnly);
  if (!is_exclusive_) {
    // Between the two locks the file may be exchanged.
    lock_.reset();
    try {
      lock_ = LockFile(path_, true);
    } catch (const ports::DatabaseError&) {
      lock_ = LockFile(path_, false);
      throw;
    }
    is_exclusive_ = true;
  }
  RequireName();
  may_change_ = true;
}

void Container::Release() {
  reader_.reset();
  file_.reset();
  lock_.reset();
}

void Container::Reopen() {
  const ports::FileIdentity before = identity_;
  OpenPages();
  if (identity_ != before || !IsStillNamed()) Fail(kLockedByOther);
  reader_ = std::make_unique<file::DatabaseReader>(file_, path_);
}

void RefuseTaken(const std::string& path) {
  const auto facts = ports::CurrentPorts().files->Examine(path);
  if (!facts) Fail(kNoPermission, path);
  if (facts.value.kind != ports::FileKind::kNone) Fail(kDatabaseExists, path);
}

std::unique_ptr<Container> CreateContainer(const std::string& path) {
  RefuseTaken(path);
  NewFile file(path, ports::PageFileMode::kCreateOrdinary);
  file::HeaderFacts facts;
  facts.creation_date = LocalNow();
  file::DatabaseWriter({file.Pages(), file.Path()}, file::MakeHeader(facts), facts.creation_date)
      .Finish();
  file.Appear();
  if (!file.FlushName()) Fail(kDiskError);
  return std::make_unique<Container>(path, file.TakeLock());
}

}  // namespace jet
