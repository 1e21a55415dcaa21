#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_system.h"

namespace tests {

// A file system that hands everything on to the real one and fails on request. What changes the
// disk is written down, in order ("rename", "remove", ...).
class FaultyFileSystem final : public platform::FileSystem {
 public:
  using Code = platform::SystemCode;

  // Codes of its own, which no system gives.
  static constexpr Code kDiskFull = 70001;
  static constexpr Code kOtherDevice = 70002;
  static constexpr Code kBusy = 70003;
  static constexpr Code kBroken = 70004;

  // Bytes that all writers together may still write; then kDiskFull.
  std::optional<std::size_t> write_budget;
  // Answers of the next renames and removals; code 0 lets one through.
  std::deque<Code> rename_codes;
  std::deque<Code> remove_codes;
  Code flush_code = 0;
  Code attributes_code = 0;
  std::vector<std::string> log;

  explicit FaultyFileSystem(platform::FileSystem& real) : real_(real) {}

  char Separator() const override { return real_.Separator(); }
  platform::Outcome<platform::FileFacts> Examine(const std::string& path) override {
    return real_.Examine(path);
  }
  platform::Outcome<std::unique_ptr<platform::File>> Open(const std::string& path,
                                                          platform::FileMode mode) override {
    auto opened = real_.Open(path, mode);
    if (opened) opened.value = std::make_unique<FaultyFile>(*this, std::move(opened.value));
    return opened;
  }
  platform::Outcome<std::vector<platform::FolderEntry>> List(const std::string& folder) override {
    return real_.List(folder);
  }
  platform::Status CreateFolder(const std::string& path) override {
    return real_.CreateFolder(path);
  }
  platform::Status RemoveFolder(const std::string& path) override {
    return real_.RemoveFolder(path);
  }
  platform::Status RemoveFile(const std::string& path) override {
    log.push_back("remove");
    const Code code = Next(remove_codes);
    return code != 0 ? platform::Status::Failure(code) : real_.RemoveFile(path);
  }
  platform::Status Rename(const std::string& from, const std::string& to) override {
    log.push_back("rename");
    const Code code = Next(rename_codes);
    return code != 0 ? platform::Status::Failure(code) : real_.Rename(from, to);
  }
  platform::Status SetReadOnly(const std::string& path, bool read_only) override {
    return real_.SetReadOnly(path, read_only);
  }
  platform::Status CopyAttributes(const std::string& source, const std::string& target) override {
    log.push_back("attributes");
    if (attributes_code != 0) return platform::Status::Failure(attributes_code);
    return real_.CopyAttributes(source, target);
  }
  platform::Outcome<std::string> MakeAbsolute(const std::string& path) override {
    return real_.MakeAbsolute(path);
  }
  platform::Outcome<std::string> TemporaryFolder() override { return real_.TemporaryFolder(); }
  platform::Status FlushFolder(const std::string& folder) override {
    log.push_back("flush folder");
    return real_.FlushFolder(folder);
  }
  bool MeansMissing(Code code) const override { return real_.MeansMissing(code); }
  bool MeansOtherDevice(Code code) const override {
    return code == kOtherDevice || real_.MeansOtherDevice(code);
  }
  bool MeansBusy(Code code) const override { return code == kBusy || real_.MeansBusy(code); }

 private:
  class FaultyFile final : public platform::File {
   public:
    FaultyFile(FaultyFileSystem& owner, std::unique_ptr<platform::File> real)
        : owner_(owner), real_(std::move(real)) {}

    platform::Outcome<std::size_t> Read(void* buffer, std::size_t length) override {
      return real_->Read(buffer, length);
    }
    platform::Status Write(const void* buffer, std::size_t length) override {
      auto& budget = owner_.write_budget;
      const std::size_t allowed = budget ? std::min(*budget, length) : length;
      if (budget) *budget -= allowed;
      const platform::Status status = real_->Write(buffer, allowed);
      return status && allowed < length ? platform::Status::Failure(kDiskFull) : status;
    }
    platform::Status Flush() override {
      owner_.log.push_back("flush");
      if (owner_.flush_code != 0) return platform::Status::Failure(owner_.flush_code);
      return real_->Flush();
    }
    platform::Status Close() override { return real_->Close(); }

   private:
    FaultyFileSystem& owner_;
    std::unique_ptr<platform::File> real_;
  };

  static Code Next(std::deque<Code>& codes) {
    if (codes.empty()) return 0;
    const Code code = codes.front();
    codes.pop_front();
    return code;
  }

  platform::FileSystem& real_;
};

}  // namespace tests
