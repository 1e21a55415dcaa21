#include "platform/factories.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "platform/linux/descriptor.h"
#include "platform/linux/linux_texts.h"
#include "platform/linux/reg_file.h"
#include "platform/linux/updater_arguments.h"
#include "ports/settings_store.h"

namespace platform {
namespace {

constexpr const char* kMachineFile = "/etc/tamrin/machine.reg";
constexpr const char* kUserFile = "/tamrin/user.reg";
constexpr off_t kMostBytes = off_t{16} * 1024 * 1024;

std::string Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : value;
}

std::string UserFile() {
  std::string folder = Variable("XDG_CONFIG_HOME");
  if (folder.starts_with('/')) return folder + kUserFile;
  folder = Variable("HOME");
  if (folder.empty()) {
    const passwd* const user = getpwuid(geteuid());
    if (user != nullptr) folder = user->pw_dir;
  }
  return folder + "/.config" + kUserFile;
}

bool IsMachineFile(ports::SettingsRoot root) {
  return root != ports::SettingsRoot::kUser;
}

// What the environment says; empty if it says nothing.
std::string ChosenFile(ports::SettingsRoot root) {
  return Variable(IsMachineFile(root) ? kMachineFileVariable : kUserFileVariable);
}

std::string FileOf(ports::SettingsRoot root) {
  std::string chosen = ChosenFile(root);
  if (!chosen.empty()) return chosen;
  return IsMachineFile(root) ? kMachineFile : UserFile();
}

std::string PathOf(ports::SettingsRoot root) {
  switch (root) {
    case ports::SettingsRoot::kMachine:
      return "HKEY_LOCAL_MACHINE\\";
    case ports::SettingsRoot::kClasses:
      return "HKEY_CLASSES_ROOT\\";
    case ports::SettingsRoot::kUser:
      break;
  }
  return "HKEY_CURRENT_USER\\";
}

// A missing file is an empty one.
ports::Outcome<std::string> ReadBytes(const std::string& path) {
  using Result = ports::Outcome<std::string>;
  // Does not hang if the path is a pipe.
  const UniqueDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file)
    return errno == ENOENT || errno == ENOTDIR ? Result::Success({}) : Result::Failure(errno);
  struct stat facts {};
  if (fstat(file.Get(), &facts) != 0) return Result::Failure(errno);
  if (S_ISDIR(facts.st_mode)) return Result::Failure(EISDIR);
  if (!S_ISREG(facts.st_mode)) return Result::Failure(EINVAL);
  if (facts.st_size > kMostBytes) return Result::Failure(EFBIG);
  std::string bytes;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t count = read(file.Get(), buffer.data(), buffer.size());
    if (count == 0) return Result::Success(std::move(bytes));
    if (count > 0) {
      bytes.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return Result::Failure(errno);
    }
  }
}

// One settings file, read at its first use; its error is kept like its content.
class SettingsFile {
 public:
  explicit SettingsFile(ports::SettingsRoot root) : root_(root) {}

  // Null if the value is not there, or the file cannot be read.
  const RegValue* Find(ports::SettingsRoot root, const std::string& key, const std::string& name) {
    if (!is_read_) Load();
    return status_ ? file_.Find(PathOf(root) + key, name) : nullptr;
  }

  template <typename T>
  ports::Setting<T> Read(ports::SettingsRoot root, const std::string& key,
                         const std::string& name) {
    using Result = ports::Setting<T>;
    const RegValue* const value = Find(root, key, name);
    if (!status_) return Result::Failure(status_.code);
    const T* const typed = value == nullptr ? nullptr : std::get_if<T>(value);
    return Result::Success(typed == nullptr ? std::nullopt : std::optional<T>(*typed));
  }

  const std::string& FailureText() const { return failure_text_; }

 private:
  void Load() {
    is_read_ = true;
    const std::string path = FileOf(root_);
    const auto bytes = ReadBytes(path);
    status_ = bytes.ToStatus();
    if (!status_) {
      failure_text_ = linux_texts::ReadingSettingsFailed(path);
      return;
    }
    RegFileResult parsed = ParseRegFile(bytes.value);
    file_ = std::move(parsed.file);
    if (!parsed.error) return;
    status_ = ports::Status::Failure(0);
    failure_text_ = linux_texts::SettingsFault(path, parsed.error->line, parsed.error->reason);
  }

  ports::SettingsRoot root_;
  bool is_read_ = false;
  RegFile file_;
  ports::Status status_;
  std::string failure_text_;
};

class LinuxSettingsStore final : public ports::SettingsStore {
 public:
  ports::Setting<std::string> ReadString(ports::SettingsRoot root, const std::string& key,
                                         const std::string& name) override {
    return FileFor(root).Read<std::string>(root, key, name);
  }

  bool Exists(ports::SettingsRoot root, const std::string& key, const std::string& name) override {
    return FileFor(root).Find(root, key, name) != nullptr;
  }

  ports::Setting<std::int32_t> ReadLong(ports::SettingsRoot root, const std::string& key,
                                        const std::string& name) override {
    const auto number = FileFor(root).Read<std::uint32_t>(root, key, name);
    ports::Setting<std::int32_t> result{number.ok, number.code, std::nullopt};
    if (number.value) result.value = static_cast<std::int32_t>(*number.value);
    return result;
  }

  std::string FailureText(ports::SettingsRoot root) override { return FileFor(root).FailureText(); }

  bool IsChosenByEnvironment(ports::SettingsRoot root) const override {
    return !ChosenFile(root).empty();
  }

  std::string PlaceOf(ports::SettingsRoot root) override {
    return linux_texts::SettingsFilePlace(FileOf(root));
  }

  bool HasFolderDefaults() const override { return false; }

 private:
  SettingsFile& FileFor(ports::SettingsRoot root) {
    return root == ports::SettingsRoot::kUser ? user_ : machine_;
  }

  SettingsFile machine_{ports::SettingsRoot::kMachine};
  SettingsFile user_{ports::SettingsRoot::kUser};
};

}  // namespace

std::unique_ptr<ports::SettingsStore> MakeSettingsStore() {
  return std::make_unique<LinuxSettingsStore>();
}

}  // namespace platform
