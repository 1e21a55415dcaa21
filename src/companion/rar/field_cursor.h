#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace companion::rar {

// Takes little-endian fields from a header. Reading past its end is recorded, but never done.
class FieldCursor {
 public:
  explicit FieldCursor(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  bool IsSound() const { return sound_; }
  std::size_t Left() const { return bytes_.size(); }

  template <typename T>
  T Take() {
    const std::span<const std::uint8_t> taken = TakeBytes(sizeof(T));
    T value = 0;
    for (std::size_t i = 0; i < taken.size(); ++i) {
      value = static_cast<T>(value | static_cast<T>(static_cast<T>(taken[i]) << (8 * i)));
    }
    return value;
  }

  // RAR 5: 7 bits per byte, lowest first; the top bit says that more follow.
  std::uint64_t TakeVint() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 70; shift += 7) {
      const auto byte = Take<std::uint8_t>();
      if (!sound_) return 0;
      if (shift < 64) value |= static_cast<std::uint64_t>(byte & 0x7FU) << shift;
      if ((byte & 0x80U) == 0) return value;
    }
    sound_ = false;
    return 0;
  }

  // Empty if there are not that many.
  std::span<const std::uint8_t> TakeBytes(std::uint64_t count) {
    if (count > bytes_.size()) {
      sound_ = false;
      bytes_ = {};
      return {};
    }
    const auto taken = bytes_.first(static_cast<std::size_t>(count));
    bytes_ = bytes_.subspan(static_cast<std::size_t>(count));
    return taken;
  }

  std::string_view TakeText(std::uint64_t count) {
    const auto taken = TakeBytes(count);
    return {reinterpret_cast<const char*>(taken.data()), taken.size()};
  }

 private:
  std::span<const std::uint8_t> bytes_;
  bool sound_ = true;
};

}  // namespace companion::rar
