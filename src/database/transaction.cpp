#include "database/transaction.h"

#include "ports/database.h"
#include "ports/ports.h"

namespace tmw {

Transaction::Transaction() {
  ports::CurrentPorts().database->BeginTrans();
}

Transaction::~Transaction() {
  if (!is_open_) return;
  try {
    ports::CurrentPorts().database->Rollback();
  } catch (const ports::DatabaseError&) {  // NOLINT(bugprone-empty-catch): an error is in flight
  }
}

void Transaction::Commit() {
  ports::CurrentPorts().database->CommitTrans();
  is_open_ = false;
}

}  // namespace tmw
