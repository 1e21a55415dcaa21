#include "packages/companion_functions.h"

#include "foundation/api_errors.h"
#include "ports/ports.h"

namespace tmw {

const ports::EntryPoints& CompanionFunctions() {
  ports::CompanionLibrary& library = *ports::CurrentPorts().companion;
  const auto loaded = library.Load();
  if (!loaded) {
    RaiseApiErrorWithMessage("Ошибка загрузки библиотеки \"" + library.Path() + "\": ",
                             loaded.code);
  }
  return *loaded.value;
}

}  // namespace tmw
