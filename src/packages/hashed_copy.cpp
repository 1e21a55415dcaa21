#include "packages/hashed_copy.h"

#include <cstddef>

#include "foundation/file_copy.h"
#include "packages/hash_api.h"
#include "sha256/sha256.h"

namespace tmw {

bool CopyFileHashed(const std::string& source, const std::string& target, const std::string& hash) {
  sha256::Stream stream;
  CopyCheck check;
  check.OnBytes = [&](const void* bytes, std::size_t length) { stream.Update(bytes, length); };
  check.IsGood = [&] { return GetHashString(stream.Finish()) == hash; };
  return CopyFileChecked(source, target, check);
}

}  // namespace tmw
