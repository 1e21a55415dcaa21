#include "packages/companion_functions.h"

#include "foundation/api_errors.h"
#include "packages/packages_texts.h"
#include "ports/ports.h"

namespace tmw {

const ports::EntryPoints& CompanionFunctions() {
  ports::CompanionLibrary& library = *ports::CurrentPorts().companion;
  const auto loaded = library.Load();
  if (!loaded)
    RaiseApiErrorWithMessage(packages_texts::LibraryNotLoaded(library.Path()), loaded.code);
  return *loaded.value;
}

}  // namespace tmw
