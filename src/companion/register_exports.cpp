#include "companion/boundary.h"
#include "companion/exports.h"
#include "companion/os.h"
#include "companion/text_forms.h"

namespace companion {
namespace {

std::int32_t Call(const char* path, const char* entry_point) noexcept {
  return WithoutExceptions(os::OutOfMemoryCode(), os::DamagedDataCode(),
                           [&] { return os::CallLibrary(FromAnsi(path), entry_point); });
}

}  // namespace
}  // namespace companion

std::int32_t COMPANION_CALL RegisterDll(const char* path) {
  return companion::Call(path, "DllRegisterServer");
}

std::int32_t COMPANION_CALL UnregisterDll(const char* path) {
  return companion::Call(path, "DllUnregisterServer");
}
