#include "packages/companion_functions.h"

#include "foundation/api_errors.h"
#include "platform/ports.h"

namespace tmw {

const companion::EntryPoints& CompanionFunctions() {
  platform::CompanionLibrary& library = *platform::CurrentPorts().companion;
  const auto loaded = library.Load();
  if (!loaded) {
    RaiseApiErrorWithMessage("Ошибка загрузки библиотеки \"" + library.Path() + "\": ",
                             loaded.code);
  }
  return *loaded.value;
}

}  // namespace tmw
