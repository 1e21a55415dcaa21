#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "ports/page_file.h"

namespace tests {

// A file in memory that may break: it can lie about its length, be cut while it is open and fail
// from a given byte or operation on.
class MemoryPageFile final : public ports::PageFile {
 public:
  // Codes of its own, which no system gives.
  static constexpr ports::SystemCode kBroken = 70004;
  static constexpr ports::SystemCode kDiskFull = 70001;

  std::string bytes;
  std::optional<std::uint64_t> claimed_size;
  std::optional<std::uint64_t> readable_bytes;  // reads that reach further fail
  std::optional<std::uint64_t> writable_bytes;  // of all writes together
  std::optional<std::size_t> operations_left;   // writes and flushes that still succeed
  bool is_flushed = false;
  bool is_closed = false;

  MemoryPageFile() = default;
  explicit MemoryPageFile(std::string contents) : bytes(std::move(contents)) {}

  ports::Outcome<std::uint64_t> Size() override {
    return ports::Outcome<std::uint64_t>::Success(claimed_size.value_or(bytes.size()));
  }
  ports::Outcome<ports::FileIdentity> Identity() override {
    return ports::Outcome<ports::FileIdentity>::Success(
        {0, static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(this))});
  }
  ports::Outcome<std::size_t> ReadAt(std::uint64_t offset, void* data,
                                     std::size_t length) override {
    if (readable_bytes && offset + length > *readable_bytes)
      return ports::Outcome<std::size_t>::Failure(kBroken);
    if (offset >= bytes.size()) return ports::Outcome<std::size_t>::Success(0);
    const std::size_t count = std::min<std::size_t>(length, bytes.size() - offset);
    std::memcpy(data, bytes.data() + offset, count);
    return ports::Outcome<std::size_t>::Success(count);
  }
  ports::Status WriteAt(std::uint64_t offset, const void* data, std::size_t length) override {
    if (!TakeOperation()) return ports::Status::Failure(kBroken);
    const std::size_t fitting = std::min<std::size_t>(length, writable_bytes.value_or(length));
    if (bytes.size() < offset + fitting) bytes.resize(offset + fitting);
    std::memcpy(bytes.data() + offset, data, fitting);
    if (writable_bytes) *writable_bytes -= fitting;
    is_flushed = false;
    return fitting == length ? ports::Status::Success() : ports::Status::Failure(kDiskFull);
  }
  ports::Status Flush() override {
    if (!TakeOperation()) return ports::Status::Failure(kBroken);
    is_flushed = true;
    return ports::Status::Success();
  }
  ports::Status Close() override {
    is_closed = true;
    return ports::Status::Success();
  }
  bool MeansFull(ports::SystemCode code) const override { return code == kDiskFull; }

 private:
  bool TakeOperation() {
    if (!operations_left) return true;
    if (*operations_left == 0) return false;
    --*operations_left;
    return true;
  }
};

}  // namespace tests
