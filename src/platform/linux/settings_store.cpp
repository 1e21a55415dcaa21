#include "platform/settings_store.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "foundation/text.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/reg_file.h"

namespace platform {
namespace {

constexpr const char* kMachineFile = "/etc/tamrin/machine.reg";
constexpr const char* kMachineFileVariable = "TAMRIN_MACHINE_REG";
constexpr const char* kUserFile = "/tamrin/user.reg";
constexpr const char* kUserFileVariable = "TAMRIN_USER_REG";
constexpr off_t kMostBytes = 16 * 1024 * 1024;

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

std::string FileOf(SettingsRoot root) {
  const bool is_machine = root == SettingsRoot::kMachine;
  const std::string moved = Variable(is_machine ? kMachineFileVariable : kUserFileVariable);
  if (!moved.empty()) return moved;
  return is_machine ? kMachineFile : UserFile();
}

std::string PathOf(SettingsRoot root) {
  switch (root) {
    case SettingsRoot::kMachine:
      return "HKEY_LOCAL_MACHINE\\";
    case SettingsRoot::kClasses:
      return "HKEY_CLASSES_ROOT\\";
    case SettingsRoot::kUser:
      break;
  }
  return "HKEY_CURRENT_USER\\";
}

// A missing file is an empty one.
Outcome<std::string> ReadBytes(const std::string& path) {
  using Result = Outcome<std::string>;
  // Not to hang on a pipe somebody put there.
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
  explicit SettingsFile(SettingsRoot root) : root_(root) {}

  template <typename T>
  SettingsResult<T> Read(SettingsRoot root, const std::string& key, const std::string& name) {
    if (!is_read_) Load();
    if (error_) return {std::nullopt, error_};
    const RegValue* const value = file_.Find(PathOf(root) + key, name);
    const T* const typed = value == nullptr ? nullptr : std::get_if<T>(value);
    if (typed == nullptr) return {};
    return {*typed, std::nullopt};
  }

 private:
  void Load() {
    is_read_ = true;
    const std::string path = FileOf(root_);
    const std::string message = "Ошибка чтения файла настроек " + tmw::Quoted(path);
    const auto bytes = ReadBytes(path);
    if (!bytes.ok) {
      error_ = SettingsError{bytes.code, message + ":"};
      return;
    }
    RegFileResult parsed = ParseRegFile(bytes.value);
    file_ = std::move(parsed.file);
    if (parsed.error) {
      error_ = SettingsError{0, message + ", строка " + std::to_string(parsed.error->line) + ":" +
                                    std::string(tmw::kCrLf) + parsed.error->reason + "."};
    }
  }

  SettingsRoot root_;
  bool is_read_ = false;
  RegFile file_;
  std::optional<SettingsError> error_;
};

class LinuxSettingsStore final : public SettingsStore {
 public:
  SettingsResult<std::string> ReadString(SettingsRoot root, const std::string& key,
                                         const std::string& name) override {
    return FileFor(root).Read<std::string>(root, key, name);
  }

  SettingsResult<std::int32_t> ReadLong(SettingsRoot root, const std::string& key,
                                        const std::string& name) override {
    const auto number = FileFor(root).Read<std::uint32_t>(root, key, name);
    SettingsResult<std::int32_t> result{std::nullopt, number.error};
    if (number.value) result.value = static_cast<std::int32_t>(*number.value);
    return result;
  }

  bool HasFolderDefaults() const override { return false; }

 private:
  SettingsFile& FileFor(SettingsRoot root) {
    return root == SettingsRoot::kUser ? user_ : machine_;
  }

  SettingsFile machine_{SettingsRoot::kMachine};
  SettingsFile user_{SettingsRoot::kUser};
};

}  // namespace

std::unique_ptr<SettingsStore> MakeSettingsStore() {
  return std::make_unique<LinuxSettingsStore>();
}

}  // namespace platform
