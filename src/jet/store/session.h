#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "jet/store/autonumbers.h"
#include "jet/store/catalogue.h"
#include "jet/store/change_reach.h"
#include "jet/store/container.h"
#include "jet/store/functions.h"
#include "jet/store/sqlite.h"
#include "jet/store/table_loader.h"

namespace jet {

// The number of nested transactions of the engine, which apply to all open databases.
struct Workspace {
  int level = 0;
};

// One open database: its file, the private working store that statements run in, the catalogue, and
// its part in the engine's transactions. What has changed in the working store reaches the file
// when the session is closed. Shared by the database's object and its recordsets.
class Session {
 public:
  Session(std::shared_ptr<const Workspace> workspace, std::unique_ptr<Container> container,
          bool is_read_only);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { Discard(); }

  // Takes back what is not committed, writes the database if anything in it has changed, and frees
  // the file. When it cannot be written, the file is as it was and the session stays open. May be
  // called twice.
  void Close();

  // Frees the file, whatever has changed.
  void Discard() noexcept;

  Connection& Storage() { return *connection_; }
  const std::shared_ptr<Connection>& SharedStorage() const { return connection_; }
  Catalogue& Tables();
  // Finds the same tables, with their rows; inside of a change they may be changed as well.
  TableFinder& LoadedTables() { return loaded_tables_; }
  Autonumbers& Numbers() { return autonumbers_; }
  // Differs after every change through this session, rolled back or not.
  std::int64_t ChangeCount() const { return connection_->TotalChanges() + rollbacks_; }

  // Runs a change as a whole: what it did is undone when it fails. 3027 when the database is open
  // for reading only; 3045 or 3218 when it is shared and others have it open.
  void Change(const std::function<void()>& change);

  // The number of a table's rows, as long as they lie in the file only.
  std::optional<std::int64_t> CountInFile(const TableInfo& table) {
    return loader_.CountInFile(table);
  }

  // The rows of a table that lie in the file only; nothing for any other table.
  std::optional<file::RowList> RowsInFile(const TableInfo& table) {
    return loader_.RowsInFile(table);
  }
  // Reads the file as it is.
  file::DatabaseReader& FileReader() { return container_->Reader(); }

  // The relations are in the catalogue. A change need not ask.
  void NeedRelations();
  // The rows that this session had loaded are there, whatever has been taken back.
  void RestoreRows() { loader_.Restore(); }
  // Inside of a change: the table's definition changes. Its rows are loaded.
  void MarkChanged(const TableInfo& table);

  // An index of the table is to be built when its rows are needed next.
  void LackIndex(const TableInfo& table) { loader_.LackIndex(table.id); }

  // Follows the engine to a deeper level, or ends its own levels down to the one given.
  void EnterLevels();
  void CommitTo(int level);
  void RollbackTo(int level);

 private:
  class RowFinder final : public TableFinder {
   public:
    explicit RowFinder(Session& session) : session_(session) {}
    TablePtr FindTable(std::string_view name) override;

   private:
    Session& session_;
  };

  bool IsChanged();
  void RefuseWhenLost() const;
  void MarkTouched();
  void Forget();

  std::shared_ptr<const Workspace> workspace_;
  std::unique_ptr<Container> container_;
  std::shared_ptr<Connection> connection_;
  TableLoader loader_;
  Catalogue catalogue_;
  ChangeReach reach_;
  RowFinder loaded_tables_{*this};
  Autonumbers autonumbers_;
  Statement begin_change_;  // every row is a change of its own
  Statement end_change_;
  FunctionContext functions_;
  bool is_read_only_;
  bool is_changing_ = false;
  bool has_relations_ = false;
  // Tables of the storage that are marked as changed already.
  Connection::TableNames marked_;
  int level_ = 0;
  // SQLite has rolled the whole transaction back (on a full disk): it must not be committed.
  bool is_lost_ = false;
  std::int64_t rollbacks_ = 0;
};

}  // namespace jet
