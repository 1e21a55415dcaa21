#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ports/database.h"

namespace tmw {

// Major, minor and build number; compared in that order.
using DbVersion = std::array<std::int32_t, 3>;

// "3.6.117"
std::string DbVersionText(const DbVersion& version);

// Returns nothing unless the text is exactly three numbers separated by dots.
std::optional<DbVersion> ParseDbVersion(std::string_view text);

// Read from the first row of the table DBVersion.
DbVersion GetDataBaseVersion(ports::Database& database);

// The statement that writes a version there.
std::string SetDataBaseVersionSql(const DbVersion& version);

}  // namespace tmw
