#include "product/own_files.h"

#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/text.h"
#include "ports/companion_library.h"
#include "ports/ports.h"
#include "ports/processes.h"

namespace tmw {

std::string CompanionFileName() {
  return SplitFileName(ports::CurrentPorts().companion->Path()).FileName();
}

bool IsOwnFileName(const std::string& name) {
  const ports::Ports& ports = ports::CurrentPorts();
  for (const std::string_view program : {names::kUpdaterProgram, names::kRollbackProgram}) {
    if (EqualIgnoringCase(name, std::string(program) + ports.processes->ProgramEnding()))
      return true;
  }
  return EqualIgnoringCase(name, CompanionFileName());
}

}  // namespace tmw
