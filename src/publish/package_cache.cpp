#include "publish/package_cache.h"

#include <string_view>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/contract_names.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/program_error.h"
#include "foundation/text.h"
#include "packing/rar_writer.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/fault_texts.h"
#include "publish/file_tree.h"
#include "tools/fill.h"
#include "tools/stop.h"

namespace publish {
namespace {

// Copies everything but the trailer; returns whether the trailer is that of the content.
bool CopyVerified(const std::string& entry, const std::string& archive) {
  const auto to = OpenToWrite(archive);
  const bool is_sound =
      ReadWithTrailer(entry, [&](std::string_view piece) { WritePiece(*to, piece, archive); });
  CloseWritten(*to, archive);
  return is_sound;
}

}  // namespace

PackageCache::PackageCache(std::string folder) : folder_(std::move(folder)) {
  if (!folder_.empty()) tmw::CreateFolderIfAbsent(folder_);
}

bool PackageCache::Find(const std::string& key, const std::string& archive) const {
  if (folder_.empty()) return false;
  const std::string entry = PathOf(key);
  if (!tmw::IsFileExists(entry)) return false;
  if (CopyVerified(entry, archive)) return true;
  tmw::DeleteFile(archive);
  return false;
}

void PackageCache::Keep(const std::string& key, const std::string& archive) {
  if (folder_.empty()) return;
  {
    const std::lock_guard lock(guard_);
    // Another thread has the same content under the same name.
    if (!kept_.insert(key).second) return;
  }
  const std::string fresh = PathOf(key) + std::string(tmw::names::kNewPartEnding);
  packing::CopyFileWithIntegrityTrailer(archive, fresh,
                                        [](std::size_t /*piece*/) { tools::ThrowIfStopped(); });
  const ports::Status named = ports::CurrentPorts().files->Rename(fresh, PathOf(key));
  if (!named) {
    tmw::RaiseApiErrorWithMessage(
        tools::Fill(texts::kCannotRename, {tmw::Quoted(fresh), tmw::Quoted(PathOf(key))}),
        named.code);
  }
}

std::string PackageCache::PathOf(const std::string& key) const {
  return tmw::JoinPath(folder_, key + ".rar");
}

}  // namespace publish
