#pragma once

#include <memory>
#include <string>

#include "jet/file/database_reader.h"
#include "ports/database.h"
#include "ports/file_lock.h"
#include "tools/command_line.h"

namespace jetsql {

ports::DatabaseEngine& Engine();

// "--engine embedded": the engine that reads and writes the file itself, on every system.
const tools::Option& EngineOption();
void SelectEngine(const tools::Arguments& arguments);

// For reading, beside others who read; for changing, alone.
std::unique_ptr<ports::Database> OpenToRead(const std::string& path);
std::unique_ptr<ports::Database> OpenToChange(const std::string& path);

// The file itself, held against programs that change it, without the database engine.
struct SharedFile {
  std::unique_ptr<ports::FileLock> lock;
  std::shared_ptr<ports::PageFile> pages;
};
SharedFile OpenShared(const std::string& path);

}  // namespace jetsql
