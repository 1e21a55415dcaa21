#include "platform/linux/own_folder.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

ports::SystemCode CheckOwnFolder(const std::string& folder) {
  struct stat facts {};
  if (lstat(folder.c_str(), &facts) != 0) return errno;
  if (!S_ISDIR(facts.st_mode)) return ENOTDIR;
  const bool is_own = facts.st_uid == geteuid() && (facts.st_mode & (S_IWGRP | S_IWOTH)) == 0;
  return is_own ? 0 : EPERM;
}

ports::SystemCode MakeOwnFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) return errno;
  return CheckOwnFolder(folder);
}

bool LetsProgramsRun(const std::string& path) {
  struct statvfs facts {};
  return statvfs(path.c_str(), &facts) != 0 || (facts.f_flag & ST_NOEXEC) == 0;
}

}  // namespace platform
