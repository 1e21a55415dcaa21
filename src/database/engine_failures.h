#pragma once

#include <cstdint>

// What the numbers of the database engine's failures mean to those who treat them alike.
namespace tmw {

// An exclusive opening was refused because the file is open elsewhere, by whichever of DAO's
// numbers.
bool IsDatabaseInUse(std::int32_t number);

// Memory, disk, locks or the file itself gave out: the statement that met it is not to blame, and
// the next one will fare no better.
bool IsResourceFailure(std::int32_t number);

}  // namespace tmw
