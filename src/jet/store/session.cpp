#include "jet/store/session.h"

#include <utility>

#include "jet/errors.h"
#include "jet/store/aggregates.h"

namespace jet {
namespace {

std::string LevelName(int level) {
  return "level" + std::to_string(level);
}

}  // namespace

Session::Session(std::shared_ptr<const Workspace> workspace, std::unique_ptr<ports::FileLock> lock,
                 std::shared_ptr<Connection> connection, bool is_exclusive, bool is_read_only)
    : workspace_(std::move(workspace)),
      lock_(std::move(lock)),
      connection_(std::move(connection)),
      catalogue_(connection_),
      autonumbers_(connection_),
      functions_{*connection_, autonumbers_},
      is_exclusive_(is_exclusive),
      is_read_only_(is_read_only) {
  RegisterFunctions(functions_);
  RegisterAggregates(*connection_);
}

void Session::Close() noexcept {
  if (!connection_->IsOpen()) return;
  // Closing the storage rolls back every open transaction.
  connection_->Close();
  level_ = 0;
  lock_.reset();
}

Catalogue& Session::Tables() {
  if (!is_exclusive_) {
    const std::int64_t version = connection_->ReadInteger("PRAGMA data_version");
    if (version != data_version_) catalogue_.Forget();
    data_version_ = version;
  }
  connection_->Handle();
  return catalogue_;
}

void Session::RefuseWhenLost() const {
  if (is_lost_) Fail(kDiskError);
}

void Session::Change(const std::function<void()>& change) {
  if (is_read_only_) Fail(kReadOnly);
  RefuseWhenLost();
  EnterLevels();
  connection_->Run("SAVEPOINT change");
  try {
    change();
    autonumbers_.Save();
    connection_->Run("RELEASE change");
  } catch (...) {
    ++rollbacks_;
    autonumbers_.Forget();
    catalogue_.Forget();
    if (connection_->InTransaction()) {
      connection_->Run("ROLLBACK TO change; RELEASE change");
    } else {
      is_lost_ = level_ > 0;
    }
    throw;
  }
}

void Session::EnterLevels() {
  while (level_ < workspace_->level) {
    connection_->Run("SAVEPOINT " + LevelName(level_ + 1));
    ++level_;
  }
}

void Session::CommitTo(int level) {
  if (level_ <= level) return;
  RefuseWhenLost();
  connection_->Run("RELEASE " + LevelName(level + 1));
  level_ = level;
}

void Session::RollbackTo(int level) {
  if (level_ <= level) return;
  ++rollbacks_;
  catalogue_.Forget();
  autonumbers_.Forget();
  level_ = level;
  if (!is_lost_) {
    const std::string name = LevelName(level + 1);
    connection_->Run("ROLLBACK TO " + name + "; RELEASE " + name);
  }
  if (level_ == 0) is_lost_ = false;
}

}  // namespace jet
