#include "database/transaction.h"

#include "platform/database.h"
#include "platform/ports.h"

namespace tmw {

Transaction::Transaction() {
  platform::CurrentPorts().database->BeginTrans();
}

Transaction::~Transaction() {
  if (!is_open_) return;
  try {
    platform::CurrentPorts().database->Rollback();
  } catch (const platform::DatabaseError&) {  // NOLINT(bugprone-empty-catch): an error is in flight
  }
}

void Transaction::Commit() {
  platform::CurrentPorts().database->CommitTrans();
  is_open_ = false;
}

}  // namespace tmw
