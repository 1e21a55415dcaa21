#include "engine/database_backup.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "database/access_helpers.h"
#include "database/database_paths.h"
#include "database/db_version.h"
#include "database/open_mdb.h"
#include "engine/engine_texts.h"
#include "foundation/api_errors.h"
#include "foundation/crc32.h"
#include "foundation/file_utils.h"
#include "packages/tm_zipper.h"
#include "packages/zip_listing.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/message_boxes.h"
#include "services/run_log.h"

namespace tmw {
namespace {

constexpr std::size_t kReadBytes = std::size_t{256} << 10;

std::uint32_t CrcOfFile(const std::string& file) {
  const auto opened = ports::CurrentPorts().files->Open(file, ports::FileMode::kRead);
  if (!opened) RaiseApiErrorWithMessage(engine_texts::DatabaseNotRead(file), opened.code);
  std::vector<char> buffer(kReadBytes);
  for (std::uint32_t crc = 0;;) {
    const auto count = opened.value->Read(buffer.data(), buffer.size());
    if (!count) RaiseApiErrorWithMessage(engine_texts::DatabaseNotRead(file), count.code);
    if (count.value == 0) return crc;
    crc = UpdateCrc32(crc, std::string_view(buffer.data(), count.value));
  }
}

// By length and checksum: an archive may be empty, or hold last year's books. The directory alone
// is read, so the content may be damaged all the same.
bool IsNamedBackupOf(const std::string& archive, const std::string& database) {
  const auto entries = TryListZip(archive);
  return entries && entries->size() == 1 &&
         std::cmp_equal(entries->front().Length, GetFileLength(database)) &&
         entries->front().Crc == CrcOfFile(database);
}

bool HaveSameBytes(const std::string& one, const std::string& other) {
  if (GetFileLength(one) != GetFileLength(other)) return false;
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const auto first = files.Open(one, ports::FileMode::kRead);
  const auto second = files.Open(other, ports::FileMode::kRead);
  if (!first || !second) return false;
  std::vector<char> left(kReadBytes);
  std::vector<char> right(kReadBytes);
  for (;;) {
    const auto count = first.value->Read(left.data(), left.size());
    const auto match = second.value->Read(right.data(), right.size());
    if (!count || !match || count.value != match.value) return false;
    if (count.value == 0) return true;
    const std::string_view piece(left.data(), count.value);
    if (piece != std::string_view(right.data(), match.value)) return false;
  }
}

bool Pack(const std::string& database, const std::string& archive) {
  // Left by runs that were killed while packing.
  DeleteFiles(archive + ".*.tmp", true);
  TmZipper zipper;
  zipper.DeleteExistingZipFile = false;
  zipper.AddFileName(database);
  zipper.ZipFileName = archive;
  zipper.RootDir = SplitFileName(database).Folder;
  const std::int32_t result = zipper.DoZipping();
  LogEvent("backed_up", {{"file", archive}, {"result", result}});
  if (result == 0) return true;
  std::string reason = GetZipResultText(result);
  if (reason.empty())
    reason = zipper.SystemError != 0 ? GetApiErrorText(zipper.SystemError, "")
                                     : engine_texts::ZipResult(result);
  DownloadError(engine_texts::BackupFailed(reason), FailureKind::kBackup);
  return false;
}

}  // namespace

std::optional<Backup> PackUserDatabase() {
  const auto database = GetUserDBForReading();
  if (!database) return std::nullopt;
  const DbVersion version = GetDataBaseVersion(*database);
  database->Close();
  const std::string file = database_utils::GetUserDBFileName();
  std::vector<std::string> earlier;
  for (int number = 1;; ++number) {
    const std::string archive = BackupPath(version[2], number);
    if (IsFileExists(archive)) {
      if (IsNamedBackupOf(archive, file)) earlier.push_back(archive);
    } else if (!IsFolderExists(archive)) {
      if (!Pack(file, archive)) return std::nullopt;
      // The same packed bytes: the earlier archive is whole, and the new one adds nothing.
      for (const std::string& other : earlier) {
        if (!HaveSameBytes(archive, other)) continue;
        LogEvent("backup_kept", {{"file", other}});
        DeleteFile(archive);
        return Backup{other, version};
      }
      return Backup{archive, version};
    }
  }
}

}  // namespace tmw
