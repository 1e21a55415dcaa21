#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ports/file_system.h"

namespace tests {

// A file system that passes everything on to the real one and fails on request. Changes of the disk
// are recorded, in order ("rename", "remove", ...).
class FaultyFileSystem final : public ports::FileSystem {
 public:
  using Code = ports::SystemCode;
  using Status = ports::Status;
  template <typename T>
  using Outcome = ports::Outcome<T>;
  using Path = std::string;
  using FilePointer = std::unique_ptr<ports::File>;
  using Entries = std::vector<ports::FolderEntry>;

  // Codes of its own, which no system gives.
  static constexpr Code kDiskFull = 70001;
  static constexpr Code kOtherDevice = 70002;
  static constexpr Code kBusy = 70003;
  static constexpr Code kBroken = 70004;

  // Bytes that all writers together may still write; then kDiskFull.
  std::optional<std::size_t> write_budget;
  // Answers of the next calls of a kind; code 0 lets one through.
  std::deque<Code> examine_codes;
  std::deque<Code> open_codes;
  std::deque<Code> rename_codes;
  std::deque<Code> remove_codes;
  std::vector<Path> held;  // files that cannot be removed
  Path hidden;             // a file that is not found
  // Changes of the disk that still succeed; then all fail with kBroken, as for a process that dies,
  // or only the next one does.
  std::optional<std::size_t> changes_left;
  bool fails_once = false;
  std::size_t failures = 0;
  Code flush_code = 0;
  bool has_links = true;
  Code attributes_code = 0;
  Code executable_code = 0;
  Code temporary_code = 0;
  Path virtual_store;  // the copy of every file
  std::function<void()> on_folder_flush;
  std::vector<std::string> log;

  explicit FaultyFileSystem(ports::FileSystem& real) : real_(real) {}

  char Separator() const override { return real_.Separator(); }
  Outcome<ports::FileFacts> Examine(const Path& path) override {
    if (path == hidden) return Outcome<ports::FileFacts>::Success({});
    const Code code = Next(examine_codes);
    return code != 0 ? Outcome<ports::FileFacts>::Failure(code) : real_.Examine(path);
  }
  Outcome<FilePointer> Open(const Path& path, ports::FileMode mode) override {
    if (mode != ports::FileMode::kRead && !TakeChange())
      return Outcome<FilePointer>::Failure(kBroken);
    if (const Code code = Next(open_codes); code != 0) return Outcome<FilePointer>::Failure(code);
    auto opened = real_.Open(path, mode);
    if (opened) opened.value = std::make_unique<FaultyFile>(*this, std::move(opened.value));
    return opened;
  }
  Outcome<Entries> List(const Path& folder) override { return real_.List(folder); }
  Status CreateFolder(const Path& path) override {
    return Do("create folder", 0, [&] { return real_.CreateFolder(path); });
  }
  Status RemoveFolder(const Path& path) override {
    return Do("remove folder", 0, [&] { return real_.RemoveFolder(path); });
  }
  Status RemoveFile(const Path& path) override {
    const bool is_held = std::find(held.begin(), held.end(), path) != held.end();
    return Do("remove", is_held ? kBroken : Next(remove_codes),
              [&] { return real_.RemoveFile(path); });
  }
  Status Rename(const Path& from, const Path& to) override {
    return Do("rename", Next(rename_codes), [&] { return real_.Rename(from, to); });
  }
  Status RenameToFree(const Path& from, const Path& to) override {
    return Do("rename", Next(rename_codes), [&] { return real_.RenameToFree(from, to); });
  }
  Status AddName(const Path& file, const Path& name) override {
    return Do("link", has_links ? 0 : kBroken, [&] { return real_.AddName(file, name); });
  }
  Status SetReadOnly(const Path& path, bool on) override { return real_.SetReadOnly(path, on); }
  Status CopyAttributes(const Path& source, const Path& target) override {
    return Do("attributes", attributes_code, [&] { return real_.CopyAttributes(source, target); });
  }
  Status SetFacts(const Path& path, std::int64_t modified, std::uint32_t unix_mode) override {
    return real_.SetFacts(path, modified, unix_mode);
  }
  Status CopyRights(const Path& source, const Path& target) override {
    return Do("rights", 0, [&] { return real_.CopyRights(source, target); });
  }
  Outcome<Path> FollowLinks(const Path& path) override { return real_.FollowLinks(path); }
  Outcome<Path> MakeAbsolute(const Path& path) override { return real_.MakeAbsolute(path); }
  Outcome<Path> TemporaryFolder() override {
    return temporary_code != 0 ? Outcome<Path>::Failure(temporary_code) : real_.TemporaryFolder();
  }
  Outcome<Path> TemporaryFolderOfSystem() override { return real_.TemporaryFolderOfSystem(); }
  Path VirtualCopyOf(const Path& path) override {
    return virtual_store.empty() ? real_.VirtualCopyOf(path) : virtual_store;
  }
  Status CreateProtectedFolder(const Path& path) override {
    return Do("create folder", 0, [&] { return real_.CreateProtectedFolder(path); });
  }
  Status FlushFolder(const Path& folder) override {
    if (on_folder_flush) on_folder_flush();
    return Do("flush folder", 0, [&] { return real_.FlushFolder(folder); });
  }
  Status FlushTree(const Path& folder) override { return real_.FlushTree(folder); }
  Status MakeExecutable(const Path& path) override {
    return executable_code != 0 ? Status::Failure(executable_code) : real_.MakeExecutable(path);
  }
  bool MeansMissing(Code code) const override { return real_.MeansMissing(code); }
  bool MeansOtherDevice(Code code) const override {
    return code == kOtherDevice || real_.MeansOtherDevice(code);
  }
  bool MeansBusy(Code code) const override { return code == kBusy || real_.MeansBusy(code); }

 private:
  class FaultyFile final : public ports::File {
   public:
    FaultyFile(FaultyFileSystem& owner, FilePointer real) : owner_(owner), real_(std::move(real)) {}

    Outcome<std::size_t> Read(void* buffer, std::size_t length) override {
      return real_->Read(buffer, length);
    }
    Status Write(const void* buffer, std::size_t length) override {
      const std::lock_guard lock(owner_.guard_);
      if (!owner_.TakeChange()) return Status::Failure(kBroken);
      auto& budget = owner_.write_budget;
      const std::size_t allowed = budget ? std::min(*budget, length) : length;
      if (budget) *budget -= allowed;
      const Status status = real_->Write(buffer, allowed);
      return status && allowed < length ? Status::Failure(kDiskFull) : status;
    }
    Status Flush() override {
      return owner_.Do("flush", owner_.flush_code, [&] { return real_->Flush(); });
    }
    Status Close() override { return real_->Close(); }

   private:
    FaultyFileSystem& owner_;
    FilePointer real_;
  };

  template <typename Call>
  Status Do(const char* name, Code code, Call call) {
    const std::lock_guard lock(guard_);
    log.emplace_back(name);
    if (!TakeChange()) return Status::Failure(kBroken);
    return code != 0 ? Status::Failure(code) : call();
  }

  bool TakeChange() {
    if (!changes_left) return true;
    if (*changes_left > 0) {
      --*changes_left;
      return true;
    }
    ++failures;
    if (fails_once) changes_left.reset();
    return false;
  }

  static Code Next(std::deque<Code>& codes) {
    if (codes.empty()) return 0;
    const Code code = codes.front();
    codes.pop_front();
    return code;
  }

  ports::FileSystem& real_;
  std::mutex guard_;
};

}  // namespace tests
