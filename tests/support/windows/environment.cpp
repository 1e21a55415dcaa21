#include "tests/support/environment.h"

#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace tests {
namespace {

constexpr DWORD kLongestValue = 32768;

}  // namespace

std::optional<std::string> Variable(const std::string& name) {
  std::wstring value(kLongestValue, L'\0');
  value.resize(
      GetEnvironmentVariableW(platform::ToWide(name).c_str(), value.data(), kLongestValue));
  if (value.empty()) return std::nullopt;
  return platform::FromWide(value);
}

ScopedVariable::ScopedVariable(const std::string& name, const std::string& value)
    : name_(name), saved_(Variable(name)) {
  SetEnvironmentVariableW(platform::ToWide(name).c_str(), platform::ToWide(value).c_str());
}

ScopedVariable::~ScopedVariable() {
  const std::wstring value = platform::ToWide(saved_.value_or(""));
  SetEnvironmentVariableW(platform::ToWide(name_).c_str(), saved_ ? value.c_str() : nullptr);
}

}  // namespace tests
