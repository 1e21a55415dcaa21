#pragma once

#include <string>
#include <string_view>

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
// The system's headers come first: these build on them.
#include <objbase.h>
#include <oleauto.h>

namespace platform {

// The calling thread's membership in a single-threaded apartment for the duration of a scope.
// Scopes nest. A thread that someone else has put into the other kind of apartment is left there:
// our components work in both.
class ComScope {
 public:
  ComScope() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ComScope(const ComScope&) = delete;
  ComScope& operator=(const ComScope&) = delete;
  ~ComScope() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }

 private:
  HRESULT result_;
};

// Owner of one reference to a component's interface.
template <typename T>
class ComPointer {
 public:
  ComPointer() = default;
  ComPointer(const ComPointer&) = delete;
  ComPointer& operator=(const ComPointer&) = delete;
  ComPointer(ComPointer&& other) noexcept : pointer_(other.Release()) {}
  ComPointer& operator=(ComPointer&& other) noexcept {
    if (this != &other) {
      Reset();
      pointer_ = other.Release();
    }
    return *this;
  }
  ~ComPointer() { Reset(); }

  T* Get() const { return pointer_; }
  T* operator->() const { return pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }

  // For a call that hands out a reference; the one held so far is given back.
  T** Out() {
    Reset();
    return &pointer_;
  }

 private:
  void Reset() {
    T* const old = Release();
    if (old != nullptr) old->Release();
  }

  T* Release() {
    T* const old = pointer_;
    pointer_ = nullptr;
    return old;
  }

  T* pointer_ = nullptr;
};

// Owner of one automation string.
class ComText {
 public:
  ComText() = default;
  explicit ComText(std::string_view text) {
    const std::wstring wide = ToWide(text);
    text_ = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  }
  ComText(const ComText&) = delete;
  ComText& operator=(const ComText&) = delete;
  ~ComText() { SysFreeString(text_); }

  BSTR Get() const { return text_; }

  BSTR* Out() {
    SysFreeString(text_);
    text_ = nullptr;
    return &text_;
  }

  // UTF-8; a null string is an empty one.
  std::string ToString() const { return FromWide({text_, SysStringLen(text_)}); }

 private:
  BSTR text_ = nullptr;
};

// Owner of one automation value.
class ComValue {
 public:
  ComValue() { VariantInit(&value_); }
  ComValue(const ComValue&) = delete;
  ComValue& operator=(const ComValue&) = delete;
  ~ComValue() { VariantClear(&value_); }

  const VARIANT& Get() const { return value_; }
  VARIANT& Get() { return value_; }

  VARIANT* Out() {
    VariantClear(&value_);
    return &value_;
  }

  // UTF-8; empty for a value that is no string.
  std::string ToString() const {
    if (value_.vt != VT_BSTR) return {};
    return FromWide({value_.bstrVal, SysStringLen(value_.bstrVal)});
  }

 private:
  VARIANT value_{};
};

}  // namespace platform
