#include "publish/package_cache.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

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
#include "sha256/integrity_trailer.h"
#include "tools/fill.h"
#include "tools/stop.h"

namespace publish {
namespace {

constexpr std::size_t kPiece = std::size_t{256} << 10;

// Copies everything but the trailer; returns whether the trailer is that of the content.
bool CopyVerified(const std::string& entry, const std::string& archive, std::int64_t length) {
  const auto from = OpenToRead(entry);
  const auto to = OpenToWrite(archive);
  sha256::Stream stream;
  std::vector<char> buffer(kPiece);
  for (std::int64_t left = length; left > 0;) {
    tools::ThrowIfStopped();
    const std::size_t wanted = static_cast<std::size_t>(std::min<std::int64_t>(left, kPiece));
    const std::size_t got = ReadPiece(*from, buffer.data(), wanted, entry);
    if (got == 0) return false;
    stream.Update(buffer.data(), got);
    WritePiece(*to, {buffer.data(), got}, archive);
    left -= static_cast<std::int64_t>(got);
  }
  CloseWritten(*to, archive);
  sha256::IntegrityTrailer bytes{};
  std::size_t read = 0;
  while (read < bytes.size()) {
    const std::size_t got = ReadPiece(*from, buffer.data(), bytes.size() - read, entry);
    if (got == 0) return false;
    std::copy_n(buffer.data(), got, bytes.begin() + static_cast<std::ptrdiff_t>(read));
    read += got;
  }
  const auto facts = sha256::ParseIntegrityTrailer(std::span(bytes));
  return facts && facts->content_length == static_cast<std::uint64_t>(length) &&
         facts->digest == stream.Finish();
}

}  // namespace

PackageCache::PackageCache(std::string folder) : folder_(std::move(folder)) {
  if (!folder_.empty()) tmw::CreateFolderIfAbsent(folder_);
}

bool PackageCache::Find(const std::string& key, const std::string& archive) const {
  if (folder_.empty()) return false;
  const std::string entry = PathOf(key);
  if (!tmw::IsFileExists(entry)) return false;
  const std::int64_t length =
      tmw::GetFileLength(entry) - static_cast<std::int64_t>(sha256::kIntegrityTrailerLength);
  if (length >= 0 && CopyVerified(entry, archive, length)) return true;
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
