#include "platform/linux/file_holders.h"

#include <dirent.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <fstream>
#include <set>
#include <string_view>

#include "foundation/unique_handle.h"

namespace platform {
namespace {

struct ProcessListTraits {
  using Type = DIR*;
  static Type Invalid() { return nullptr; }
  static void Close(Type list) { closedir(list); }
};
using ProcessList = tmw::UniqueHandle<ProcessListTraits>;

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::set<std::string> RunningFrom(const struct stat& file) {
  std::set<std::string> ids;
  const ProcessList list(opendir("/proc"));
  if (!list) return ids;
  while (const dirent* const entry = readdir(list.Get())) {
    const std::string id = static_cast<const char*>(entry->d_name);
    struct stat image {};
    if (IsNumber(id) && stat(("/proc/" + id + "/exe").c_str(), &image) == 0 &&
        image.st_dev == file.st_dev && image.st_ino == file.st_ino) {
      ids.insert(id);
    }
  }
  return ids;
}

// Lines of /proc/locks: "1: FLOCK  ADVISORY  WRITE 1234 fd:01:5678 0 EOF"; the fifth word is the
// process (-1 for a lock that belongs to none), the sixth the file. Waiting ones have "->" behind
// the number and are left out.
std::set<std::string> LockedBy(const struct stat& file) {
  char wanted[64];
  static_cast<void>(std::snprintf(wanted, sizeof wanted, "%02x:%02x:%llu", major(file.st_dev),
                                  minor(file.st_dev),
                                  static_cast<unsigned long long>(file.st_ino)));
  std::set<std::string> ids;
  std::ifstream locks("/proc/locks");
  std::string number;
  std::string kind;
  std::string mode;
  std::string access;
  std::string id;
  std::string place;
  std::string rest;
  while (locks >> number >> kind >> mode >> access >> id >> place && std::getline(locks, rest)) {
    if (place == static_cast<const char*>(wanted) && IsNumber(id)) ids.insert(id);
  }
  return ids;
}

// The name of the program's file; the kernel's own name for the process is cut after 15 bytes.
std::string NameOf(const std::string& id) {
  char path[PATH_MAX];
  const ssize_t length = readlink(("/proc/" + id + "/exe").c_str(), path, sizeof path);
  if (length > 0) {
    std::string_view program(path, static_cast<std::size_t>(length));
    constexpr std::string_view kDeleted = " (deleted)";
    if (program.ends_with(kDeleted)) program.remove_suffix(kDeleted.size());
    return std::string(program.substr(program.rfind('/') + 1));
  }
  std::ifstream source("/proc/" + id + "/comm");
  std::string name;
  std::getline(source, name);
  return name;
}

}  // namespace

std::vector<std::string> HoldersOf(const std::string& path) {
  struct stat file {};
  if (stat(path.c_str(), &file) != 0) return {};
  std::set<std::string> ids = RunningFrom(file);
  ids.merge(LockedBy(file));
  ids.erase(std::to_string(getpid()));
  std::set<std::string> names;
  for (const std::string& id : ids) {
    std::string name = NameOf(id);
    if (!name.empty()) names.insert(std::move(name));
  }
  return {names.begin(), names.end()};
}

}  // namespace platform
