#pragma once

#include <string>

#include "engine/records.h"

namespace tmw {

// Copies a loaded file to its place, which holds the old file or the whole new one at any moment.
// The bytes are hashed while they are written: what is installed is what was verified, whatever has
// been done to the loaded file since. If they differ from the record, the loaded file is deleted so
// that the next run loads it again, the place stays as it was, and false is returned after a
// report.
bool CopyVerified(const WuFileNode& file, const std::string& loaded, const std::string& installed);

// The same for a database that has been built, whose hash was taken then; it is not deleted.
bool CopyBuiltDatabase(const std::string& built, const std::string& target,
                       const std::string& hash);

}  // namespace tmw
