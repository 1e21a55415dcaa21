#pragma once

#include <string>

namespace tmw {

// Copies a file to its place, which holds the old file or the whole new one at any moment. The
// bytes are hashed while they are written: what arrives is what was checked. Returns false, and
// leaves the place as it was, if their SHA-256 text differs from hash; raises an error if the file
// cannot be copied.
[[nodiscard]] bool CopyFileHashed(const std::string& source, const std::string& target,
                                  const std::string& hash);

}  // namespace tmw
