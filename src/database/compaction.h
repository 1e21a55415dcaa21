#pragma once

#include <string>

namespace tmw {

// Makes the database engine write all that it holds to the disk, and free its locks.
void FlushDBEngine();

// Compacts the user database into a file, replacing an existing one.
void CopyUserDatabase(const std::string& target);

// Compacts a database, which must not be open, in its place.
void PackDataBase(const std::string& path);

}  // namespace tmw
