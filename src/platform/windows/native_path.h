#pragma once

#include <string>

namespace platform {

// The absolute form of a path; empty on failure, the last error then says why.
std::wstring FullPath(const std::string& path);

// The form that system calls take. Only a long path gets the prefix that lifts the limit: not every
// network file system knows it.
std::wstring NativePath(const std::string& path);

// The form for calls that take code page 1251 only. Each name outside the code page becomes its
// short one; if a volume keeps none, the path's letters become "?".
std::string AnsiPath(const std::string& path);

// The folders of the system, without a separator at the end; empty on failure.
std::wstring SystemFolder();
std::wstring WindowsFolder();

}  // namespace platform
