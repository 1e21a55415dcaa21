#pragma once

#include <memory>
#include <string>

#include "ports/database.h"

namespace tmw {

// Opens a database for the update run; description names the file in messages (database_texts.h). A
// file in use is tried again ten times, a second apart, then the user is asked before each further
// attempt. Returns null if the file cannot be opened, which has been reported.
std::unique_ptr<ports::Database> OpenMdb(const std::string& path, const std::string& description,
                                         bool exclusive, bool read_only);

// The user database, exclusively, for reading and writing.
std::unique_ptr<ports::Database> GetUserDB();

// The same for reading only, which leaves the file as it is, byte for byte.
std::unique_ptr<ports::Database> GetUserDBForReading();

}  // namespace tmw
