#pragma once

#include <string>

// Copying and moving, whose one aim is that a name never bears half a file (module mTmFilesOld).
// Failures are raised as those of file_utils.h.
namespace tmw {

// Copies with rights and time, replacing the target. The copy grows under another name beside the
// target, is brought to the disk and then renamed: under the target's name there is at any moment
// the old file or the whole new one. A failed copy leaves nothing behind.
void CopyFile(const std::string& source, const std::string& target);

// Gives target the rights of source, as far as this user may give them.
void CopyRights(const std::string& source, const std::string& target);

// Renames, replacing the target. To another file system: a CopyFile, then the source is deleted.
void MoveFile(const std::string& source, const std::string& target);

}  // namespace tmw
