#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "jet/store/sqlite.h"

namespace jet {

// The next numbers of the tables that number their rows. They are read from the catalogue when a
// statement first needs them and written back at its end; what a failed statement took is forgotten
// with it.
class Autonumbers {
 public:
  explicit Autonumbers(std::shared_ptr<Connection> connection)
      : connection_(std::move(connection)) {}

  std::int64_t Next(std::int64_t table);
  // A number that a row brings along: later ones lie above it.
  void NoteUsed(std::int64_t table, std::int64_t number);

  void Save();
  void Forget() { numbers_.clear(); }

 private:
  struct Entry {
    std::int64_t next = 1;
    bool changed = false;
  };
  Entry& Find(std::int64_t table);

  std::shared_ptr<Connection> connection_;
  std::map<std::int64_t, Entry> numbers_;
};

}  // namespace jet
