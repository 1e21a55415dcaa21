#include "platform/factories.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/descriptor.h"
#include "platform/linux/own_folder.h"
#include "ports/named_mutex.h"

namespace platform {
namespace {

constexpr mode_t kLockFile = 0600;
constexpr const char* kFolderVariable = "TMW_LOCK_FOLDER";
constexpr const char* kHomeFolders[] = {"/.local", "/state", "/tamrin", "/locks"};
// Who asked for the rights of root; the first that is set counts.
constexpr const char* kFirstUserVariables[] = {"PKEXEC_UID", "SUDO_UID"};

class LockFile final : public ports::NamedMutex {
 public:
  explicit LockFile(UniqueDescriptor file) : file_(std::move(file)) {}

 private:
  UniqueDescriptor file_;  // closing it releases the lock
};

// The user whose programs exclude each other: with rights from pkexec or sudo the one who asked for
// them, whose product may be running.
uid_t LockUser() {
  if (geteuid() != 0) return geteuid();
  for (const char* const name : kFirstUserVariables) {
    const char* const value = std::getenv(name);
    if (value == nullptr) continue;
    const std::string_view text = value;
    uid_t user = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), user);
    if (read.ec == std::errc{} && read.ptr == text.data() + text.size()) return user;
  }
  return 0;
}

// Acts as that user for as long as it lives: in a folder of theirs nothing may be done with more
// rights than they have.
class ActingAs {
 public:
  ActingAs(uid_t user, gid_t group) : saved_user_(geteuid()), saved_group_(getegid()) {
    if (user == saved_user_) return;
    has_group_ = setegid(group) == 0;
    has_user_ = has_group_ && seteuid(user) == 0;
    if (!has_user_) code_ = errno;
  }
  ActingAs(const ActingAs&) = delete;
  ActingAs& operator=(const ActingAs&) = delete;
  // The rights were this process's own: taking them back cannot fail.
  ~ActingAs() {
    if (has_user_ && seteuid(saved_user_) != 0) std::abort();
    if (has_group_ && setegid(saved_group_) != 0) std::abort();
  }

  // 0, or why this process cannot act as that user.
  ports::SystemCode Code() const { return code_; }

 private:
  uid_t saved_user_;
  gid_t saved_group_;
  bool has_group_ = false;
  bool has_user_ = false;
  ports::SystemCode code_ = 0;
};

// Where this user's locks lie. The environment of a session decides nothing: programs of one user
// must meet whatever they were started from.
struct LockPlace {
  uid_t user = 0;
  gid_t group = 0;
  std::string home;    // empty if the variable names the folder, or the user is unknown
  std::string folder;  // never empty

  LockPlace() : user(LockUser()), group(getegid()) {
    const char* const given = std::getenv(kFolderVariable);
    if (given != nullptr && *given == '/') {
      user = geteuid();
      folder = given;
      return;
    }
    if (const passwd* const entry = getpwuid(user)) {
      if (entry->pw_dir != nullptr && *entry->pw_dir == '/') home = entry->pw_dir;
      if (user != geteuid()) group = entry->pw_gid;
    }
    folder = home.empty() ? "~" : home;
    for (const char* const part : kHomeFolders)
      folder += part;
  }

  // To be called as that user.
  ports::SystemCode Make() const {
    if (home.empty() && folder.front() != '/') return ENOENT;
    std::string path = home;
    if (!home.empty()) {
      for (const char* const part : kHomeFolders) {
        path += part;
        if (mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) return errno;
      }
    }
    return MakeOwnFolder(folder);
  }
};

class LinuxNamedMutexes final : public ports::NamedMutexes {
 public:
  ports::Status Prepare() override {
    const LockPlace place;
    const ActingAs acting(place.user, place.group);
    const ports::SystemCode code = acting.Code() != 0 ? acting.Code() : place.Make();
    return code == 0 ? ports::Status::Success() : ports::Status::Failure(code);
  }

  std::string Place() const override { return LockPlace().folder; }

  ports::Outcome<ports::CreatedMutex> Create(const std::string& name,
                                             bool /*initial_owner*/) override {
    using Result = ports::Outcome<ports::CreatedMutex>;
    const std::string own_name = name.substr(name.rfind('\\') + 1);
    if (own_name.empty() || own_name.find('/') != std::string::npos) return Result::Failure(EINVAL);
    const ports::Status prepared = Prepare();
    if (!prepared) return Result::Failure(prepared.code);

    // Lock files are never deleted: another process may just be opening the one that would be
    // deleted.
    const LockPlace place;
    const ActingAs acting(place.user, place.group);
    const std::string path = place.folder + "/" + own_name + ".lock";
    UniqueDescriptor file(
        open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, kLockFile));
    if (!file) return Result::Failure(errno);
    int locked = 0;
    do {
      locked = flock(file.Get(), LOCK_EX | LOCK_NB);
    } while (locked != 0 && errno == EINTR);
    if (locked != 0 && errno != EWOULDBLOCK) return Result::Failure(errno);
    ports::CreatedMutex created;
    created.mutex = std::make_unique<LockFile>(std::move(file));
    created.already_existed = locked != 0;
    return Result::Success(std::move(created));
  }
};

}  // namespace

std::unique_ptr<ports::NamedMutexes> MakeNamedMutexes() {
  return std::make_unique<LinuxNamedMutexes>();
}

}  // namespace platform
