#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "ports/page_file.h"

namespace tests {

// Page files that are those of the system and fail on request.
class FaultyPageFiles final : public ports::PageFiles {
 public:
  // A code of its own, which no system gives.
  static constexpr ports::SystemCode kBroken = 70004;

  // Writes and flushes that still succeed; then all fail.
  std::optional<std::size_t> operations_left;
  // Called once, behind the next opening of a file for reading.
  std::function<void()> after_opening;

  explicit FaultyPageFiles(ports::PageFiles& real) : real_(real) {}

  ports::Outcome<std::unique_ptr<ports::PageFile>> Open(const std::string& path,
                                                        ports::PageFileMode mode) override {
    auto opened = real_.Open(path, mode);
    if (opened) opened.value = std::make_unique<File>(*this, std::move(opened.value));
    if (mode == ports::PageFileMode::kRead && after_opening)
      std::exchange(after_opening, nullptr)();
    return opened;
  }
  ports::Outcome<ports::FileIdentity> IdentityOf(const std::string& path) override {
    return real_.IdentityOf(path);
  }

 private:
  class File final : public ports::PageFile {
   public:
    File(FaultyPageFiles& owner, std::unique_ptr<ports::PageFile> real)
        : owner_(owner), real_(std::move(real)) {}

    ports::Outcome<std::uint64_t> Size() override { return real_->Size(); }
    ports::Outcome<ports::FileIdentity> Identity() override { return real_->Identity(); }
    ports::Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data,
                                       std::size_t length) override {
      return real_->ReadAt(offset, data, length);
    }
    ports::Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
      return owner_.TakeOperation() ? real_->WriteAt(offset, data, length)
                                    : ports::Status::Failure(kBroken);
    }
    ports::Status Flush() override {
      return owner_.TakeOperation() ? real_->Flush() : ports::Status::Failure(kBroken);
    }
    ports::Status Close() override { return real_->Close(); }
    bool MeansFull(ports::SystemCode code) const override { return real_->MeansFull(code); }

   private:
    FaultyPageFiles& owner_;
    std::unique_ptr<ports::PageFile> real_;
  };

  bool TakeOperation() {
    if (!operations_left) return true;
    if (*operations_left == 0) return false;
    --*operations_left;
    return true;
  }

  ports::PageFiles& real_;
};

}  // namespace tests
