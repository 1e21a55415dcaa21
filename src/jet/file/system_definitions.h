#pragma once

#include <cstdint>
#include <span>

#include "jet/file/account_ids.h"
#include "jet/file/system_tables.h"

// What a database consists of before anybody made anything in it.
namespace jet::file {

// A system table's definition, nothing said about pages yet.
TableLayout SystemLayout(const SystemTable& table, PageNumber page, std::uint32_t sort_order);

struct StandardObject {
  std::uint32_t id;
  std::uint32_t parent;
  std::int16_t type;
  Account owner;
  const char* name;
};

struct Right {
  std::uint32_t object;
  std::uint32_t rights;  // bits
  Account account;
  bool is_inheritable;
};

// In the order in which they stand in a new file.
std::span<const StandardObject> StandardObjects();
std::span<const Right> StandardRights();

// What the accounts may do with an object that somebody makes; the object is left open.
std::span<const Right> RightsOfNewTable();
std::span<const Right> RightsOfNewRelation();

namespace object_flags {
inline constexpr std::uint32_t kSystem = 0x80000000;
}

// Definition pages of the system tables in every file that is written here.
namespace system_page {
inline constexpr PageNumber kObjects = space::kPage + 1;
inline constexpr PageNumber kRights = kObjects + 1;
inline constexpr PageNumber kQueries = kRights + 1;
inline constexpr PageNumber kRelations = kQueries + 1;
inline constexpr PageNumber kMaps = kRelations + 1;  // of the system tables
}  // namespace system_page

}  // namespace jet::file
