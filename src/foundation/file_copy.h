#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "ports/outcome.h"

// Copying and moving such that no file is ever seen half written (module mTmFilesOld). Failures are
// raised as those of file_utils.h.
namespace tmw {

// Copies with rights and time, replacing the target. The copy is written under another name beside
// the target, flushed to the disk and then renamed: at any moment the target is either the old file
// or the whole new one. A failed copy leaves nothing behind.
void CopyFile(const std::string& source, const std::string& target);

// Watches the bytes of a copy while they are written.
struct CopyCheck {
  std::function<void(const void* bytes, std::size_t length)> OnBytes;
  std::function<bool()> IsGood;  // asked once, after the last byte
};

// Like CopyFile, but returns false and leaves the target as it was if the check does not find the
// bytes good.
[[nodiscard]] bool CopyFileChecked(const std::string& source, const std::string& target,
                                   const CopyCheck& check);

// Deletes what a killed process has left of its copy to that target.
void DeleteGrowingCopy(const std::string& target);

// Gives the file that content in one step: at any moment it has the old content or the new one, on
// the disk when the call returns. The caller words a failure, which leaves the old content.
ports::Status ReplaceFileBytes(const std::string& path, std::string_view bytes);

// Deletes what a killed process has left of that.
void DeleteReplacement(const std::string& path);

// Gives target the rights of source, as far as this user may give them.
void CopyRights(const std::string& source, const std::string& target);

// Renames, replacing the target. Across file systems it copies and then deletes the source.
void MoveFile(const std::string& source, const std::string& target);

}  // namespace tmw
