#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "jet/store/autonumbers.h"
#include "jet/store/catalogue.h"
#include "jet/store/functions.h"
#include "jet/store/sqlite.h"
#include "ports/file_lock.h"

namespace jet {

// How many transactions the engine has begun; its open databases follow.
struct Workspace {
  int level = 0;
};

// One open database file: the lock on it, its storage, its catalogue, and its part in the engine's
// transactions. Shared by the database's object and its recordsets.
class Session {
 public:
  Session(std::shared_ptr<const Workspace> workspace, std::unique_ptr<ports::FileLock> lock,
          std::shared_ptr<Connection> connection, bool is_exclusive, bool is_read_only);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { Close(); }

  // Takes back what is not committed and frees the file. May be called twice.
  void Close() noexcept;

  Connection& Storage() { return *connection_; }
  const std::shared_ptr<Connection>& SharedStorage() const { return connection_; }
  Catalogue& Tables();  // up to date with what others did
  Autonumbers& Numbers() { return autonumbers_; }
  // Another number after every change made through this session, taken back or not.
  std::int64_t ChangeCount() const { return connection_->TotalChanges() + rollbacks_; }

  // Runs a change as a whole: what it did is undone when it fails. 3027 when the database is open
  // for reading only.
  void Change(const std::function<void()>& change);

  // Follows the engine to a deeper level, or ends its own levels down to the one given.
  void EnterLevels();
  void CommitTo(int level);
  void RollbackTo(int level);

 private:
  void RefuseWhenLost() const;

  std::shared_ptr<const Workspace> workspace_;
  std::unique_ptr<ports::FileLock> lock_;
  std::shared_ptr<Connection> connection_;
  Catalogue catalogue_;
  Autonumbers autonumbers_;
  FunctionContext functions_;
  bool is_exclusive_;
  bool is_read_only_;
  int level_ = 0;
  // The storage gave the whole transaction up (a full disk): nothing of it may be committed.
  bool is_lost_ = false;
  std::int64_t rollbacks_ = 0;
  std::int64_t data_version_ = 0;
};

}  // namespace jet
