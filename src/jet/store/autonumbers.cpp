#include "jet/store/autonumbers.h"

#include <limits>
#include <string>

#include "jet/errors.h"

namespace jet {

Autonumbers::Entry& Autonumbers::Find(std::int64_t table) {
  const auto [place, is_new] = numbers_.try_emplace(table);
  if (is_new) {
    place->second.next = connection_->ReadInteger("SELECT next_number FROM _jet_table WHERE id = " +
                                                  std::to_string(table));
  }
  return place->second;
}

std::int64_t Autonumbers::Next(std::int64_t table) {
  Entry& entry = Find(table);
  if (entry.next > std::numeric_limits<std::int32_t>::max()) Fail(kOverflow);
  entry.changed = true;
  return entry.next++;
}

void Autonumbers::NoteUsed(std::int64_t table, std::int64_t number) {
  Entry& entry = Find(table);
  if (number < entry.next) return;
  entry.next = number + 1;
  entry.changed = true;
}

void Autonumbers::Save() {
  for (const auto& [table, entry] : numbers_) {
    if (!entry.changed) continue;
    connection_->Run("UPDATE _jet_table SET next_number = " + std::to_string(entry.next) +
                     " WHERE id = " + std::to_string(table));
  }
  numbers_.clear();
}

}  // namespace jet
