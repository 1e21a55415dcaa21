#pragma once

#include <string>

namespace platform {

// The absolute form of a path; empty on failure, the last error then says why.
std::wstring FullPath(const std::string& path);

// The form that system calls take. Only a long path gets the prefix that lifts the limit: not every
// network file system knows it.
std::wstring NativePath(const std::string& path);

}  // namespace platform
