#include "foundation/api_errors.h"

#include "foundation/foundation_texts.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "ports/ports.h"

namespace tmw {

void RaiseApiError(ports::SystemCode code) {
  if (code == 0) RaiseProgramError(kUnknownApiError);
  throw ProgramError(code, GetApiErrorText(code, ""));
}

void RaiseApiErrorWithMessage(const std::string& message, ports::SystemCode code) {
  const std::string beginning = message + std::string(kCrLf);
  if (code == 0) RaiseProgramError(beginning + kUnknownApiError);
  throw ProgramError(code, beginning + GetApiErrorText(code, ""));
}

std::string GetApiErrorText(ports::SystemCode code, const std::string& modules) {
  if (!modules.empty()) {
    for (const std::string& name : Split(modules, "|")) {
      const auto module = ports::CurrentPorts().error_texts->FindLoadedModule(name);
      if (!module) continue;
      std::string text = FormatSystemMessage(code, *module);
      if (!text.empty()) return text;
    }
  }
  std::string text = FormatSystemMessage(code, 0);
  if (!text.empty()) return text;
  return foundation_texts::UnknownApiError(code);
}

std::string FormatSystemMessage(ports::SystemCode code, ports::ErrorTexts::Module module) {
  return ports::CurrentPorts().error_texts->Format(code, module);
}

}  // namespace tmw
