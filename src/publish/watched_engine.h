#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "ports/database.h"

namespace publish {

// A change of rows or of the structure.
struct WatchedStatement {
  std::string sql;
  std::string field;  // of a field that is made without a statement
};

// What somebody does with a database engine.
class EngineListener {
 public:
  virtual ~EngineListener() = default;

  // Before a statement, and for every row of a recordset. May raise an error to end the work.
  virtual void OnWork() = 0;

  // A statement has been run and has changed so many rows; or has failed with the error.
  virtual void OnStatement(const WatchedStatement& statement, std::int64_t rows,
                           const ports::DatabaseError* error) = 0;

  // A row that has been changed through a recordset.
  virtual void OnRow() = 0;
};

// The engine, with a listener to all that its databases do. Both outlive it.
std::unique_ptr<ports::DatabaseEngine> MakeWatchedEngine(ports::DatabaseEngine& engine,
                                                         EngineListener& listener);

}  // namespace publish
