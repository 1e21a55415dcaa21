#pragma once

#include <utility>

namespace tmw {

// Owner of one system handle. Traits give the handle's Type, its invalid value (static Type
// Invalid()) and how it is closed (static void Close(Type)); a handle is closed exactly once.
template <typename Traits>
class UniqueHandle {
 public:
  using Type = typename Traits::Type;

  UniqueHandle() = default;
  explicit UniqueHandle(Type handle) : handle_(handle) {}
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  UniqueHandle(UniqueHandle&& other) noexcept : handle_(other.Release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }
  ~UniqueHandle() { Reset(); }

  Type Get() const { return handle_; }
  explicit operator bool() const { return handle_ != Traits::Invalid(); }

  // Gives the handle away; the owner no longer closes it.
  Type Release() { return std::exchange(handle_, Traits::Invalid()); }

  void Reset(Type handle = Traits::Invalid()) {
    const Type old = std::exchange(handle_, handle);
    if (old != Traits::Invalid()) Traits::Close(old);
  }

 private:
  Type handle_ = Traits::Invalid();
};

}  // namespace tmw
