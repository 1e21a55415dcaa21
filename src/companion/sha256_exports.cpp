#include "sha256/sha256.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "companion/boundary.h"
#include "companion/exports.h"
#include "companion/os.h"
#include "companion/text_forms.h"
#include "sha256/integrity_trailer.h"

namespace companion {
namespace {

constexpr std::size_t kBufferLength = 32U << 10U;  // fits into the first-level cache

// Hashes the first length bytes of the file; returns nothing and the reason if a read fails.
std::optional<sha256::Digest> HashBeginning(os::ReadableFile& file, std::uint64_t length,
                                            os::ErrorCode& error) {
  sha256::Stream stream;
  std::vector<std::uint8_t> buffer(kBufferLength);
  for (std::uint64_t offset = 0; offset < length;) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), length - offset));
    const auto got = file.ReadAt(offset, buffer.data(), wanted);
    if (!got || *got == 0) {
      error = got ? os::DamagedDataCode() : os::LastErrorCode();
      return std::nullopt;
    }
    stream.Update(buffer.data(), *got);
    offset += *got;
  }
  return stream.Finish();
}

// Hashes a whole file; returns nothing and the system's code if that fails.
std::optional<sha256::Digest> HashFile(const std::string& path, os::ErrorCode& error) {
  const auto file = os::OpenForReading(path, error);
  if (!file) return std::nullopt;
  return HashBeginning(*file, file->Size(), error);
}

bool CheckTrailer(const std::string& path, os::ErrorCode& error) {
  const auto file = os::OpenForReading(path, error);
  if (!file) return false;
  error = os::DamagedDataCode();
  if (file->Size() < sha256::kIntegrityTrailerLength) return false;
  const std::uint64_t content_length = file->Size() - sha256::kIntegrityTrailerLength;
  const auto digest = HashBeginning(*file, content_length, error);
  sha256::IntegrityTrailer bytes{};
  const auto got = file->ReadAt(content_length, bytes.data(), bytes.size());
  if (!digest || !got || *got != bytes.size()) return false;
  const auto facts = sha256::ParseIntegrityTrailer(bytes);
  return facts && facts->content_length == content_length && facts->digest == *digest;
}

// Runs the action; if it fails, its code becomes the last system error.
template <typename Action>
std::int32_t WithLastError(Action action) noexcept {
  os::ErrorCode error = 0;
  const int result = WithoutExceptions(-1, -2, [&] { return action(error) ? 1 : 0; });
  if (result == -1) error = os::OutOfMemoryCode();
  if (result == -2) error = os::DamagedDataCode();
  if (result != 1) os::SetLastErrorCode(error);
  return result == 1 ? 1 : 0;
}

}  // namespace
}  // namespace companion

std::int32_t COMPANION_CALL Sha256_GetHashLength() {
  return static_cast<std::int32_t>(sha256::kDigestLength);
}

std::int32_t COMPANION_CALL Sha256_GetFileHash(const char* path, std::uint8_t* digest) {
  return companion::WithLastError([&](companion::os::ErrorCode& error) {
    const auto result = companion::HashFile(companion::FromAnsi(path), error);
    if (result) std::copy(result->begin(), result->end(), digest);
    return result.has_value();
  });
}

void COMPANION_CALL Sha256_GetMemoryHash(const void* data, std::int32_t length,
                                         std::uint8_t* digest) {
  sha256::Stream stream;
  if (length > 0) stream.Update(data, static_cast<std::size_t>(length));
  const sha256::Digest result = stream.Finish();
  std::copy(result.begin(), result.end(), digest);
}

std::int32_t COMPANION_CALL Sha256_GetFileCrc(const char* path) {
  return companion::WithLastError([&](companion::os::ErrorCode& error) {
    return companion::CheckTrailer(companion::FromAnsi(path), error);
  });
}

std::int32_t COMPANION_CALL Sha256_GetFileCrcEx(const char* path) {
  return Sha256_GetFileCrc(path);
}
