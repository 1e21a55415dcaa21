#include "engine/serial_file.h"

#include <string>

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "services/product_settings.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr std::int64_t kLongest = 64;  // bytes; a longer file is damaged

std::string SerialFile() {
  return JoinPath(GetProductRootPath(), names::kSerialFile);
}

}  // namespace

std::int64_t HighestSerial() {
  try {
    const std::string file = SerialFile();
    if (!IsFileExists(file) || GetFileLength(file) > kLongest) return 0;
    return ReadWholeNumber(TrimCharacters(ReadFileBytes(file), kCrLf)).value_or(0);
  } catch (const ProgramError&) {
    return 0;
  }
}

void RememberSerial(std::int64_t serial) {
  if (serial <= HighestSerial()) return;
  const ports::Status status =
      ReplaceFileBytes(SerialFile(), std::to_string(serial) + std::string(kCrLf));
  LogEvent("serial", {{"number", serial}, {"kept", static_cast<bool>(status)}});
}

}  // namespace tmw
