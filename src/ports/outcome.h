#pragma once

#include <cstdint>
#include <utility>

namespace ports {

// A system's own error number: GetLastError() on Windows, errno on Linux.
using SystemCode = std::int32_t;

// What a port's call hands back: success, or the system's error code; `if (!status)` asks which. A
// failure whose code is 0 is a call that failed without saying why. Words are made above, in one
// place (foundation/api_errors.h).
struct [[nodiscard]] Status {
  bool ok = true;
  SystemCode code = 0;

  static Status Success() { return {}; }
  static Status Failure(SystemCode code) { return {false, code}; }
  explicit operator bool() const { return ok; }
};

// The same with a value, which is meaningful on success only.
template <typename T>
struct [[nodiscard]] Outcome {
  bool ok = true;
  SystemCode code = 0;
  T value{};

  static Outcome Success(T value) { return {true, 0, std::move(value)}; }
  static Outcome Failure(SystemCode code) { return {false, code, T{}}; }
  explicit operator bool() const { return ok; }

  // Without the value.
  Status ToStatus() const { return {ok, code}; }
};

}  // namespace ports
