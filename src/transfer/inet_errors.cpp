#include "transfer/inet_errors.h"

#include "foundation/api_errors.h"
#include "foundation/program_error.h"
#include "foundation/text.h"

namespace tmw {

std::string GetInetErrorText(ports::SystemCode code, const std::string& message) {
  const std::string text = code != 0 ? GetApiErrorText(code, "wininet.dll") : kUnknownApiError;
  return message.empty() ? text : message + std::string(kCrLf) + text;
}

void RaiseInetError(ports::SystemCode code, const std::string& message) {
  RaiseProgramError(GetInetErrorText(code, message));
}

}  // namespace tmw
