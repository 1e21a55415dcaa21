#include <new>

#include "companion/exports.h"
#include "companion/os.h"
#include "companion/text_forms.h"

namespace companion {
namespace {

std::int32_t Call(const char* path, const char* entry_point) noexcept {
  try {
    return os::CallLibrary(FromAnsi(path), entry_point);
  } catch (const std::bad_alloc&) {
    return os::OutOfMemoryCode();
  }
}

}  // namespace
}  // namespace companion

std::int32_t COMPANION_CALL RegisterDll(const char* path) {
  return companion::Call(path, "DllRegisterServer");
}

std::int32_t COMPANION_CALL UnregisterDll(const char* path) {
  return companion::Call(path, "DllUnregisterServer");
}
