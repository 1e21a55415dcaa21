#include "platform/factories.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <type_traits>

#include "ports/companion_library.h"

namespace platform {
namespace {

std::string InOwnFolder(const std::string& name) {
  std::error_code error;
  const std::filesystem::path own = std::filesystem::read_symlink("/proc/self/exe", error);
  return (own.parent_path() / name).string();
}

class LinuxCompanionLibrary final : public ports::CompanionLibrary {
 public:
  explicit LinuxCompanionLibrary(std::string path) : path_(std::move(path)) {}
  LinuxCompanionLibrary(const LinuxCompanionLibrary&) = delete;
  LinuxCompanionLibrary& operator=(const LinuxCompanionLibrary&) = delete;
  ~LinuxCompanionLibrary() override { Unload(); }

  ports::Outcome<const ports::EntryPoints*> Load() override {
    using Result = ports::Outcome<const ports::EntryPoints*>;
    if (library_ != nullptr) return Result::Success(&entries_);
    // The loader reports a text, no code: the most likely cause is checked first.
    if (access(path_.c_str(), R_OK) != 0) return Result::Failure(errno);
    library_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) return Result::Failure(ENOEXEC);
    bool is_whole = true;
    ports::ForEachEntryPoint(entries_, [&](const char* name, auto& entry) {
      entry = reinterpret_cast<std::remove_reference_t<decltype(entry)>>(dlsym(library_, name));
      is_whole = is_whole && entry != nullptr;
    });
    if (is_whole) return Result::Success(&entries_);
    Unload();
    return Result::Failure(ENOSYS);
  }

  std::string Path() const override { return path_; }
  std::string NarrowPath(const std::string& path) const override { return path; }
  ports::SystemCode LastError() const override { return errno; }

 private:
  void Unload() {
    if (library_ != nullptr) dlclose(library_);
    library_ = nullptr;
  }

  std::string path_;
  void* library_ = nullptr;
  ports::EntryPoints entries_{};
};

}  // namespace

std::unique_ptr<ports::CompanionLibrary> MakeCompanionLibrary(const std::string& path) {
  return std::make_unique<LinuxCompanionLibrary>(path.empty() ? InOwnFolder("UnTmz.so") : path);
}

}  // namespace platform
