#pragma once

#include <string>
#include <utility>

#include "platform/windows/windows_headers.h"

namespace platform {

// The system ignores an empty set of attributes.
inline BOOL SetAttributes(const std::wstring& path, DWORD attributes) {
  return SetFileAttributesW(path.c_str(), attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL);
}

// Clears the read-only attribute for as long as it lives, or for good if Keep is called.
class WritableForNow {
 public:
  explicit WritableForNow(std::wstring path) : path_(std::move(path)) {
    const DWORD attributes = GetFileAttributesW(path_.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0)
      return;
    if (SetAttributes(path_, attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY)))
      old_attributes_ = attributes;
  }
  WritableForNow(const WritableForNow&) = delete;
  WritableForNow& operator=(const WritableForNow&) = delete;
  ~WritableForNow() {
    if (old_attributes_ != 0) SetAttributes(path_, old_attributes_);
  }

  bool HasChanged() const { return old_attributes_ != 0; }
  void Keep() { old_attributes_ = 0; }

 private:
  std::wstring path_;
  DWORD old_attributes_ = 0;
};

}  // namespace platform
