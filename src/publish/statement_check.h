#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ports/database.h"
#include "publish/file_tree.h"

namespace publish {

// Finds out whether the database engine can read the statements of scripts. Each is run on an empty
// database of its own, where a sound one fails too, for want of its table: only what the engine
// says of the statement's form counts.
class StatementCheck {
 public:
  // Raises if there is no database engine.
  StatementCheck();

  // Why the engine cannot read the statement; nothing if it can.
  std::optional<std::string> Judge(const std::string& statement);

 private:
  ScratchFolder scratch_;
  std::unique_ptr<ports::Database> database_;
};

}  // namespace publish
