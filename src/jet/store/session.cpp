#include "jet/store/session.h"

#include <utility>

#include "jet/errors.h"
#include "jet/store/aggregates.h"
#include "jet/store/file_relations.h"
#include "jet/store/row_limit.h"
#include "jet/store/write_back.h"

namespace jet {
namespace {

std::string LevelName(int level) {
  return "level" + std::to_string(level);
}

}  // namespace

Session::Session(std::shared_ptr<const Workspace> workspace, std::unique_ptr<Container> container,
                 bool is_read_only)
    : workspace_(std::move(workspace)),
      container_(std::move(container)),
      connection_(MakeWorkingStore()),
      loader_(connection_, *container_),
      catalogue_(connection_, loader_),
      reach_(connection_, catalogue_, loader_),
      autonumbers_(connection_),
      functions_{*connection_, autonumbers_},
      is_read_only_(is_read_only) {
  RegisterFunctions(functions_);
  RegisterAggregates(*connection_);
  ListTables(connection_, container_->Reader());
}

void Session::Close() {
  if (!connection_->IsOpen()) return;
  if (connection_->InTransaction()) connection_->Run("ROLLBACK");
  Forget();
  level_ = 0;
  is_lost_ = false;
  const bool is_durable = is_read_only_ || !IsChanged() || WriteBack(*this, *container_);
  Discard();
  if (!is_durable) Fail(kDiskError);
}

void Session::Discard() noexcept {
  connection_->Close();
  level_ = 0;
  container_->Release();
}

bool Session::IsChanged() {
  return connection_->ReadInteger("SELECT is_changed FROM _jet_database") != 0;
}

Catalogue& Session::Tables() {
  connection_->Handle();
  return catalogue_;
}

TablePtr Session::RowFinder::FindTable(std::string_view name) {
  TablePtr table = session_.Tables().FindTable(name);
  if (!table) return table;
  if (session_.is_changing_) {
    session_.reach_.Prepare(table);
  } else {
    session_.loader_.Load(table);
  }
  return table;
}

void Session::NeedRelations() {
  connection_->Handle();
  if (has_relations_) return;
  if (connection_->ReadInteger("SELECT has_relations FROM _jet_database") == 0) {
    const Connection::Unnoticed unnoticed(*connection_);
    LoadingStep step(*connection_);
    BringRelations(connection_, container_->Reader(), catalogue_);
    connection_->Run("UPDATE _jet_database SET has_relations = 1");
    step.Finish();
  }
  has_relations_ = true;
}

void Session::MarkChanged(const TableInfo& table) {
  loader_.LoadRows(std::make_shared<TableInfo>(table));
  // Their triggers name the fields that are there.
  connection_->Run(DropRowLimitTriggers(table.id));
  reach_.Forget();
  connection_->Run(
      "UPDATE _jet_table SET state = " + std::to_string(static_cast<int>(TableState::kChanged)) +
      " WHERE id = " + std::to_string(table.id));
}

// Whatever changed is marked within the change, so that it goes back with it.
void Session::MarkTouched() {
  for (const std::string& name : connection_->TakeTouched()) {
    if (name == "_jet_relation") reach_.Forget();
    if (!marked_.insert(name).second) continue;
    connection_->Run("UPDATE _jet_database SET is_changed = 1");
    if (!name.starts_with('t')) continue;
    connection_->Run(
        "UPDATE _jet_table SET state = " + std::to_string(static_cast<int>(TableState::kChanged)) +
        " WHERE 't' || id = '" + name + "'");
  }
  connection_->TakeTouched();
}

void Session::Forget() {
  ++rollbacks_;
  autonumbers_.Forget();
  catalogue_.Forget();
  loader_.Forget();
  reach_.Forget();
  has_relations_ = false;
  marked_.clear();
}

void Session::RefuseWhenLost() const {
  if (is_lost_) Fail(kDiskError);
}

void Session::Change(const std::function<void()>& change) {
  if (is_read_only_) Fail(kReadOnly);
  RefuseWhenLost();
  container_->LockForChange();
  EnterLevels();
  if (!begin_change_) {
    begin_change_ = Statement(connection_, "SAVEPOINT change");
    end_change_ = Statement(connection_, "RELEASE change");
  }
  begin_change_.Run();
  connection_->TakeTouched();
  is_changing_ = true;
  try {
    NeedRelations();
    change();
    autonumbers_.Save();
    MarkTouched();
    end_change_.Run();
    is_changing_ = false;
  } catch (...) {
    is_changing_ = false;
    Forget();
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
  Forget();
  level_ = level;
  if (!is_lost_) {
    const std::string name = LevelName(level + 1);
    connection_->Run("ROLLBACK TO " + name + "; RELEASE " + name);
  }
  if (level_ == 0) is_lost_ = false;
}

}  // namespace jet
