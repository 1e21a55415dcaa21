#pragma once

#include <string>

namespace platform {

// The absolute form of a path; empty on failure, the last error then says why.
std::wstring FullPath(const std::string& path);

// The form that system calls take. Only a long path gets the prefix that lifts the limit: not every
// network file system knows it.
std::wstring NativePath(const std::string& path);

// The form for calls that take code page 1251 only: the path itself if it has that form, else its
// short name, which a volume need not keep. Without one the letters outside the code page become
// "?".
std::string AnsiPath(const std::string& path);

// The folders of the system, without a separator at the end; empty on failure.
std::wstring SystemFolder();
std::wstring WindowsFolder();

}  // namespace platform
