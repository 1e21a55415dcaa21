#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "jet/store/sqlite.h"

namespace jet {

// The next autonumbers of the tables. They are read from the catalogue when a statement first needs
// them and saved at its end; numbers taken by a failed statement are taken again.
class Autonumbers {
 public:
  explicit Autonumbers(std::shared_ptr<Connection> connection)
      : connection_(std::move(connection)) {}

  std::int64_t Next(std::int64_t table);
  // A row has this number of its own; later numbers are above it.
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
