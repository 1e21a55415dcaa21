#pragma once

#include <memory>
#include <string>

#include "ports/database.h"

namespace tmw {

// Opens a database for the update run. description names the file in messages ("рабочей копии базы
// данных"). A file in use is tried again ten times, a second apart, then the user is asked before
// each further attempt. None when it cannot be opened: the user has been told.
std::unique_ptr<ports::Database> OpenMdb(const std::string& path, const std::string& description,
                                         bool exclusive, bool read_only);

// The user database, exclusively, for reading and writing; the update run's way to it.
std::unique_ptr<ports::Database> GetUserDB();

// The same for reading only, which leaves the file as it is, byte for byte.
std::unique_ptr<ports::Database> GetUserDBForReading();

}  // namespace tmw
