#include "tests/support/environment.h"

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace tests {
namespace {

constexpr DWORD kLongestValue = 32768;

}  // namespace

ScopedVariable::ScopedVariable(const std::string& name, const std::string& value) : name_(name) {
  const std::wstring wide_name = platform::ToWide(name);
  std::wstring old(kLongestValue, L'\0');
  old.resize(GetEnvironmentVariableW(wide_name.c_str(), old.data(), kLongestValue));
  if (!old.empty()) saved_ = platform::FromWide(old);
  SetEnvironmentVariableW(wide_name.c_str(), platform::ToWide(value).c_str());
}

ScopedVariable::~ScopedVariable() {
  const std::wstring value = platform::ToWide(saved_.value_or(""));
  SetEnvironmentVariableW(platform::ToWide(name_).c_str(), saved_ ? value.c_str() : nullptr);
}

}  // namespace tests
