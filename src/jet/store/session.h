#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "jet/store/autonumbers.h"
#include "jet/store/catalogue.h"
#include "jet/store/functions.h"
#include "jet/store/sqlite.h"
#include "ports/file_lock.h"

namespace jet {

// The number of nested transactions of the engine, which apply to all open databases.
struct Workspace {
  int level = 0;
};

// One open database file: its lock, storage, catalogue and share of the engine's transactions.
// Shared by the database and its recordsets.
class Session {
 public:
  Session(std::shared_ptr<const Workspace> workspace, std::unique_ptr<ports::FileLock> lock,
          std::shared_ptr<Connection> connection, bool is_exclusive, bool is_read_only);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { Close(); }

  // Rolls back open transactions and unlocks the file. May be called twice.
  void Close() noexcept;

  Connection& Storage() { return *connection_; }
  const std::shared_ptr<Connection>& SharedStorage() const { return connection_; }
  Catalogue& Tables();  // includes changes by other processes
  Autonumbers& Numbers() { return autonumbers_; }
  // Differs after every change through this session, rolled back or not.
  std::int64_t ChangeCount() const { return connection_->TotalChanges() + rollbacks_; }

  // Runs a change and undoes it as a whole if it fails. Fails with 3027 if the database is open for
  // reading only.
  void Change(const std::function<void()>& change);

  // Begins the engine's transactions here too, and ends all those above the level.
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
  // SQLite has rolled the whole transaction back (on a full disk): it must not be committed.
  bool is_lost_ = false;
  std::int64_t rollbacks_ = 0;
  std::int64_t data_version_ = 0;
};

}  // namespace jet
