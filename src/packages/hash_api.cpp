#include "packages/hash_api.h"

#include <vector>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/text.h"
#include "packages/companion_functions.h"
#include "packages/packages_texts.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "miHashApi";

}  // namespace

std::string GetFileHash(const std::string& file_name) try {
  const ports::EntryPoints& functions = CompanionFunctions();
  const std::int32_t length = functions.Sha256_GetHashLength();
  if (length <= 0) return {};
  std::vector<std::uint8_t> digest(static_cast<std::size_t>(length));
  const std::string name = ports::CurrentPorts().companion->NarrowPath(file_name);
  const std::int32_t result = functions.Sha256_GetFileHash(name.c_str(), digest.data());
  const ports::SystemCode code = ports::CurrentPorts().companion->LastError();
  if (result != 1) RaiseApiErrorWithMessage(packages_texts::HashingFailed(file_name), code);
  return GetHashString(digest);
} catch (...) {
  ReRaiseError(kModule, "GetFileHash");
}

std::string GetStringHash(const std::string& text) try {
  const ports::EntryPoints& functions = CompanionFunctions();
  const std::int32_t length = functions.Sha256_GetHashLength();
  if (length <= 0) return {};
  std::vector<std::uint8_t> digest(static_cast<std::size_t>(length));
  const std::string bytes = Utf16ToBytes(Utf8ToUtf16(text));
  functions.Sha256_GetMemoryHash(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                 digest.data());
  return GetHashString(digest);
} catch (...) {
  ReRaiseError(kModule, "GetStringHash");
}

std::string GetHashString(std::span<const std::uint8_t> bytes) try {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (byte < 16) text += '0';
    text += ToHex(byte);
  }
  return LowerCase(text);
} catch (...) {
  ReRaiseError(kModule, "GetHashString");
}

bool IsHashText(std::string_view text) {
  constexpr std::size_t kDigits = 64;
  return text.size() == kDigits &&
         text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

}  // namespace tmw
