#include "engine/serial_file.h"

#include <string>

#include "foundation/contract_names.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/product_settings.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr std::int64_t kLongest = 64;  // bytes; a longer file is damaged

ports::FileSystem& Files() {
  return *ports::CurrentPorts().files;
}

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
  const std::string file = SerialFile();
  const std::string written = file + std::string(names::kNewSerialEnding);
  ports::Status status = WriteFileBytes(written, std::to_string(serial) + std::string(kCrLf));
  if (status) status = Files().Rename(written, file);
  if (status) {
    status = Files().FlushFolder(GetProductRootPath());
  } else {
    static_cast<void>(Files().RemoveFile(written));
  }
  LogEvent("serial", {{"number", serial}, {"kept", static_cast<bool>(status)}});
}

}  // namespace tmw
