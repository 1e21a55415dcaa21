#include "engine/verified_copy.h"

#include <cstddef>

#include "engine/engine_texts.h"
#include "foundation/file_utils.h"
#include "packages/hash_api.h"
#include "packages/hashed_copy.h"
#include "services/message_boxes.h"

namespace tmw {
namespace {

// The record's hash is that of the text, without a mark at its beginning.
bool CopyHashedText(const WuFileNode& file, const std::string& loaded,
                    const std::string& installed) {
  std::string content;
  CopyCheck check;
  check.OnBytes = [&](const void* bytes, std::size_t length) {
    content.append(static_cast<const char*>(bytes), length);
  };
  check.IsGood = [&] { return GetStringHash(UnicodeBytesToString(content)) == file.Hash; };
  return CopyFileChecked(loaded, installed, check);
}

}  // namespace

bool CopyVerified(const WuFileNode& file, const std::string& loaded, const std::string& installed) {
  const bool is_good = file.PackType == kPackText ? CopyHashedText(file, loaded, installed)
                                                  : CopyFileHashed(loaded, installed, file.Hash);
  if (is_good) return true;
  DownloadError(engine_texts::LoadedFileChanged(loaded), FailureKind::kOther);
  DeleteFileRepeatedly(loaded);
  return false;
}

bool CopyBuiltDatabase(const std::string& built, const std::string& target,
                       const std::string& hash) {
  if (CopyFileHashed(built, target, hash)) return true;
  DownloadError(engine_texts::BuiltDatabaseChanged(built), FailureKind::kDatabase);
  return false;
}

}  // namespace tmw
