#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/file_copy.h"
#include "foundation/file_names.h"
#include "ports/outcome.h"

// Files and folders (module mTmFilesOld). Every failure is a ProgramError whose message names the
// file in double quotes and ends with the system's words; its number is the system's code.
namespace tmw {

// An object of another kind (a folder, a device) is no file, and vice versa. A path that cannot be
// examined raises: absence is never assumed.
bool IsFileExists(const std::string& path);
bool IsFolderExists(const std::string& path);

// The target of a link, or path itself if it is none. The target need not exist.
std::string FollowLinks(const std::string& path);

// Bytes.
std::int64_t GetFileLength(const std::string& path);

// The whole file, byte for byte.
std::string ReadFileBytes(const std::string& path);

// The whole file as text: UTF-8 when it begins with that mark (which is dropped), else code page
// 1251.
std::string ReadFileToString(const std::string& path);

// The same text for bytes that have been read.
std::string FileTextOf(std::string_view bytes);

// The whole file as text: UTF-16LE code units, a mark at the beginning is dropped.
std::string ReadUnicodeFileToString(const std::string& path);

// What ReadUnicodeFileToString makes of the bytes of a file.
std::string UnicodeBytesToString(std::string_view bytes);

// Creates the folder and all that is missing above it.
void CreateFolderIfAbsent(const std::string& path);

// The same, but returns false and the error's text on failure.
[[nodiscard]] bool TryCreateFolderIfAbsent(const std::string& path, std::string& error_text);

// Creates a file of length 0; an old one is emptied.
void CreateEmptyFile(const std::string& path);

// Writes the whole file, replacing an old content, and flushes it to the disk. The caller words a
// failure.
ports::Status WriteFileBytes(const std::string& path, std::string_view bytes);

// A missing file counts as deleted. Another program that holds the file gets a second to release
// it. Quiet: a single attempt, which returns false instead of raising an error.
bool DeleteFile(const std::string& path, bool is_quiet = false);

// Deletes the files of a folder (no folders) that match the mask, the last part of the path. All
// are tried; then the first failure is raised or, if quiet, false is returned.
bool DeleteFiles(const std::string& mask_path, bool is_quiet = false);

// Deletes a folder with everything in it, as far as that is possible; nothing is reported. Links in
// it are deleted, not followed.
void DeleteFolderTree(const std::string& folder);

// Gives another program that holds the file about 5 seconds to release it: 40 quiet attempts 100 ms
// apart, then one more after another second, whose failure is raised.
void DeleteFileRepeatedly(const std::string& path);

void ClearReadOnlyAttributeFromFile(const std::string& path);

// The names of the folder's files that match the mask, in the order of names without regard to
// letter case. A missing folder has none.
std::vector<std::string> CollectFileNamesInFolder(const std::string& folder,
                                                  const std::string& mask);

// The user's folder for temporary files; it need not exist yet.
std::string GetTemporaryFolder();

}  // namespace tmw
