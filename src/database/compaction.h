#pragma once

#include <string>

namespace tmw {

// Brings everything the database engine holds back to the disk and frees its locks.
void FlushDBEngine();

// Compacts the user database into a new file, replacing what is there.
void CopyUserDatabase(const std::string& target);

// Compacts a database that nobody has open in its place.
void PackDataBase(const std::string& path);

}  // namespace tmw
