#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "jet/file/bytes.h"
#include "jet/file/format.h"

namespace jet::file {

// A page while it is made: all zero at first. A field beyond its end is a fault of the program.
class PageBuffer {
 public:
  PageBuffer() = default;
  explicit PageBuffer(PageKind kind) {
    Set(page::kKind, static_cast<std::uint8_t>(kind));
    Set(page::kMark, page::kMarkValue);
  }
  explicit PageBuffer(std::string_view bytes) { Put(0, bytes); }

  template <typename T>
  void Set(Field<T> field, T value, std::size_t base = 0) {
    StoreLittle(Room(base + field.offset, sizeof(T)), value);
  }

  template <typename T>
  T Get(Field<T> field, std::size_t base = 0) const {
    return LoadLittle<T>(const_cast<PageBuffer*>(this)->Room(base + field.offset, sizeof(T)));
  }

  void Put(std::size_t offset, std::string_view bytes) {
    if (!bytes.empty()) std::memcpy(Room(offset, bytes.size()), bytes.data(), bytes.size());
  }

  std::string_view Bytes() const { return {bytes_.data(), bytes_.size()}; }

 private:
  char* Room(std::size_t offset, std::size_t length) {
    if (offset > kPageSize || length > kPageSize - offset)
      throw std::out_of_range("jet::file::PageBuffer");
    return bytes_.data() + offset;
  }

  std::array<char, kPageSize> bytes_{};
};

}  // namespace jet::file
