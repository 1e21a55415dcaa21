#include "ports/log_files.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "platform/factories.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/own_folder.h"

namespace platform {
namespace {

constexpr mode_t kOwnerOnly = 0600;

// The folder for the state of programs; empty if this user has no home.
std::string StateFolder() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return state;
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') {
    const passwd* const user = getpwuid(geteuid());
    home = user == nullptr ? nullptr : user->pw_dir;
  }
  return home == nullptr || *home != '/' ? std::string() : std::string(home) + "/.local/state";
}

// Creates what is missing, for this user alone.
void MakeFolders(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1))
    mkdir(path.substr(0, end).c_str(), S_IRWXU);
}

UniqueDescriptor OpenForAppending(const std::string& path) {
  return UniqueDescriptor(open(
      path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY | O_NONBLOCK,
      kOwnerOnly));
}

// Only one of several processes may rename the file: the others find that the name now leads to
// another one.
void MoveAway(const UniqueDescriptor& file, const std::string& path, const std::string& old_path) {
  struct stat own {};
  struct stat named {};
  if (flock(file.Get(), LOCK_EX) != 0 || fstat(file.Get(), &own) != 0) return;
  if (lstat(path.c_str(), &named) != 0 || named.st_ino != own.st_ino) return;
  static_cast<void>(rename(path.c_str(), old_path.c_str()));
}

class LinuxLogFiles final : public ports::LogFiles {
 public:
  ports::Outcome<std::string> Folder() override {
    using Result = ports::Outcome<std::string>;
    const std::string state = StateFolder();
    if (state.empty()) return Result::Failure(ENOENT);
    std::string folder = state + "/tamrin";
    MakeFolders(folder);
    const ports::SystemCode code = MakeOwnFolder(folder);
    return code == 0 ? Result::Success(std::move(folder)) : Result::Failure(code);
  }

  ports::Status Append(const std::string& path, std::string_view bytes, std::int64_t limit,
                       const std::string& old_path) override {
    UniqueDescriptor file = OpenForAppending(path);
    if (!file) return ports::Status::Failure(errno);
    struct stat facts {};
    if (fstat(file.Get(), &facts) != 0) return ports::Status::Failure(errno);
    if (!S_ISREG(facts.st_mode)) return ports::Status::Failure(EINVAL);
    if (facts.st_size >= limit) {
      MoveAway(file, path, old_path);
      file = OpenForAppending(path);
      if (!file) return ports::Status::Failure(errno);
    }
    const ssize_t written = write(file.Get(), bytes.data(), bytes.size());
    if (written < 0) return ports::Status::Failure(errno);
    const bool is_whole = static_cast<std::size_t>(written) == bytes.size();
    return is_whole ? ports::Status::Success() : ports::Status::Failure(ENOSPC);
  }

  ports::LocalMoment Now() override {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    localtime_r(&now.tv_sec, &parts);
    return {parts.tm_year + 1900,
            parts.tm_mon + 1,
            parts.tm_mday,
            parts.tm_hour,
            parts.tm_min,
            parts.tm_sec,
            static_cast<int>(now.tv_nsec / 1'000'000),
            static_cast<int>(parts.tm_gmtoff / 60)};
  }

  std::int32_t OwnProcess() override { return getpid(); }

  std::string_view LineEnd() override { return "\n"; }
};

}  // namespace

std::unique_ptr<ports::LogFiles> MakeLogFiles() {
  return std::make_unique<LinuxLogFiles>();
}

}  // namespace platform
