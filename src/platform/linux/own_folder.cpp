#include "platform/linux/own_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/linux/descriptor.h"

namespace platform {
namespace {

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr mode_t kPermissionBits = 0777;

}  // namespace

ports::SystemCode MakeOwnFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) return errno;
  const UniqueDescriptor opened(
      open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat facts {};
  if (!opened || fstat(opened.Get(), &facts) != 0) return errno == EACCES ? EPERM : errno;
  if (facts.st_uid != geteuid() || (facts.st_mode & kOthersWrite) != 0) return EPERM;
  const bool is_closed = (facts.st_mode & kPermissionBits) == S_IRWXU;
  return is_closed || fchmod(opened.Get(), S_IRWXU) == 0 ? 0 : errno;
}

std::string ExistingPartOf(std::string path) {
  while (path.size() > 1 && access(path.c_str(), F_OK) != 0)
    path.erase(std::max<std::size_t>(path.rfind('/'), 1));
  return path;
}

bool OthersMayWriteTo(const std::string& folder) {
  struct stat facts {};
  if (stat(folder.c_str(), &facts) != 0) return true;
  const bool is_trusted = facts.st_uid == 0 || facts.st_uid == geteuid();
  return !is_trusted || (facts.st_mode & kOthersWrite) != 0;
}

bool LetsProgramsRun(const std::string& path) {
  struct statvfs facts {};
  return statvfs(path.c_str(), &facts) != 0 || (facts.f_flag & ST_NOEXEC) == 0;
}

}  // namespace platform
