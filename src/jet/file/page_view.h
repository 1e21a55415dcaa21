#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "jet/file/bytes.h"
#include "jet/file/damage.h"
#include "jet/file/format.h"
#include "jet/file/texts.h"

namespace jet::file {

using PageBytes = std::array<char, kPageSize>;

// Bytes that stand on a page, or were assembled from a chain that begins there. Every access is
// checked: beyond the end it throws Damage. Does not own the bytes.
class ByteView {
 public:
  ByteView(PageNumber page, std::string_view bytes) : page_(page), bytes_(bytes) {}

  PageNumber Page() const { return page_; }
  std::string_view Bytes() const { return bytes_; }
  std::size_t Length() const { return bytes_.size(); }

  // A field of a block that begins at base.
  template <typename T>
  T Get(Field<T> field, std::size_t base = 0) const {
    Require(base, field.offset + sizeof(T));
    return LoadLittle<T>(bytes_.data() + base + field.offset);
  }

  std::string_view Slice(std::size_t offset, std::size_t length) const {
    Require(offset, length);
    return bytes_.substr(offset, length);
  }

  ByteView Part(std::size_t offset, std::size_t length) const {
    return {page_, Slice(offset, length)};
  }

  [[noreturn]] void Fail(const char* what) const { throw Damage(page_, what); }

 private:
  void Require(std::size_t offset, std::size_t length) const {
    if (offset > bytes_.size() || length > bytes_.size() - offset) Fail(texts::kBeyondEnd);
  }

  PageNumber page_;
  std::string_view bytes_;
};

// One page of the file. Keeps the bytes alive, whatever becomes of the cache they come from.
class PageView : public ByteView {
 public:
  PageView(PageNumber number, std::shared_ptr<const PageBytes> bytes)
      : ByteView(number, {bytes->data(), bytes->size()}), bytes_(std::move(bytes)) {}

  PageKind Kind() const { return static_cast<PageKind>(Get(page::kKind)); }

  void Expect(PageKind kind) const {
    if (Kind() != kind) Fail(texts::kWrongPageKind);
  }

  void ExpectOwner(PageNumber owner) const {
    if (Get(page::kOwner) != owner) Fail(texts::kWrongOwner);
  }

 private:
  std::shared_ptr<const PageBytes> bytes_;
};

}  // namespace jet::file
