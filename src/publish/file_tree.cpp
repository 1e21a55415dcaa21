#include "publish/file_tree.h"

#include <algorithm>
#include <memory>
#include <span>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/file_names.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "packages/hash_api.h"
#include "ports/file_system.h"
#include "ports/ports.h"
#include "publish/fault_texts.h"
#include "publish/faults.h"
#include "sha256/integrity_trailer.h"
#include "sha256/sha256.h"
#include "tools/fill.h"
#include "tools/stop.h"
#include "tools/tools_texts.h"

namespace publish {
namespace {

using ports::FileKind;

constexpr int kScratchAttempts = 1000;
constexpr std::int64_t kPieceBytes = 256 << 10;
constexpr int kMostLinks = 40;  // followed in one path

ports::FileSystem& Files() {
  return *ports::CurrentPorts().files;
}

void Require(const ports::Status& status, const char* text, const std::string& path) {
  if (!status) tmw::RaiseApiErrorWithMessage(tools::Fill(text, {tmw::Quoted(path)}), status.code);
}

std::vector<ports::FolderEntry> List(const std::string& folder) {
  auto listed = Files().List(folder);
  Require(listed.ToStatus(), texts::kCannotReadFolder, folder);
  return std::move(listed.value);
}

// The path with all links resolved, as far as the system can.
std::string RealPath(std::string path) {
  int links = 0;
  std::size_t end = 0;
  while (end != std::string::npos) {
    end = path.find(Files().Separator(), end + 1);
    const std::string start = path.substr(0, end);
    const auto followed = Files().FollowLinks(start);
    if (!followed || followed.value == start || ++links > kMostLinks) continue;
    const std::string rest = end == std::string::npos ? "" : path.substr(end);
    path = tmw::GetAbsoluteFileName(followed.value + rest);
    end = 0;
  }
  return path;
}

class TreeLister {
 public:
  // Lists a folder; real is the same folder without links.
  void Add(const std::string& folder, const std::string& real, const std::string& prefix) {
    above_.push_back(real);
    for (const ports::FolderEntry& entry : List(folder)) {
      const std::string name = prefix + entry.name;
      if (entry.kind == FileKind::kFolder) {
        AddFolder(tmw::JoinPath(folder, entry.name), tmw::JoinPath(real, entry.name), name);
      } else {
        files_.push_back({name, entry.kind == FileKind::kFile ? "" : texts::kNotAFile});
      }
    }
    above_.pop_back();
  }

  std::vector<TreeEntry> TakeFiles() { return std::move(files_); }

 private:
  void AddFolder(const std::string& folder, const std::string& entry, const std::string& name) {
    const auto followed = Files().FollowLinks(entry);
    const bool is_link = followed && followed.value != entry;
    const std::string real = is_link ? RealPath(tmw::GetAbsoluteFileName(followed.value)) : entry;
    const bool leads_back =
        is_link && std::any_of(above_.begin(), above_.end(),
                               [&](const std::string& above) { return IsWithin(above, real); });
    if (leads_back) {
      files_.push_back({name, texts::kLinkLeadsBack});
    } else {
      Add(folder, real, name + "/");
    }
  }

  std::vector<std::string> above_;  // the current folder and those that contain it, without links
  std::vector<TreeEntry> files_;
};

}  // namespace

std::vector<TreeEntry> ListTree(const std::string& folder) {
  TreeLister lister;
  lister.Add(folder, RealPath(tmw::GetAbsoluteFileName(folder)), "");
  std::vector<TreeEntry> files = lister.TakeFiles();
  std::sort(files.begin(), files.end(),
            [](const TreeEntry& a, const TreeEntry& b) { return a.path < b.path; });
  return files;
}

bool IsWithin(const std::string& path, const std::string& folder) {
  const char separator = Files().Separator();
  const auto key = [&](const std::string& name) {
    std::string text = separator == '\\' ? tmw::LowerCase(name) : name;
    if (!text.ends_with(separator)) text += separator;
    return text;
  };
  return key(path).starts_with(key(folder));
}

void RemoveTree(const std::string& folder) {
  if (!tmw::IsFolderExists(folder)) return;
  for (const ports::FolderEntry& entry : List(folder)) {
    const std::string path = tmw::JoinPath(folder, entry.name);
    // A link to a folder is removed like a file; its target stays.
    const ports::Status removed = Files().RemoveFile(path);
    if (removed) continue;
    if (entry.kind != FileKind::kFolder) Require(removed, texts::kCannotRemove, path);
    RemoveTree(path);
  }
  Require(Files().RemoveFolder(folder), texts::kCannotRemoveFolder, folder);
}

void WriteWholeFile(const std::string& path, std::string_view bytes) {
  Require(tmw::WriteFileBytes(path, bytes), tools::texts::kCannotWrite, path);
}

void ReplaceFile(const std::string& path, std::string_view bytes) {
  const std::string fresh = path + ".new";
  WriteWholeFile(fresh, bytes);
  Require(Files().Rename(fresh, path), texts::kCannotReplace, path);
  Require(Files().FlushFolder(tmw::SplitFileName(path).Folder), texts::kCannotReplace, path);
}

std::unique_ptr<ports::File> OpenToRead(const std::string& path) {
  auto opened = Files().Open(path, ports::FileMode::kRead);
  Require(opened.ToStatus(), texts::kCannotRead, path);
  return std::move(opened.value);
}

std::size_t ReadPiece(ports::File& file, char* buffer, std::size_t length,
                      const std::string& path) {
  tools::ThrowIfStopped();
  const auto got = file.Read(buffer, length);
  Require(got.ToStatus(), texts::kCannotRead, path);
  return got.value;
}

std::unique_ptr<ports::File> OpenToWrite(const std::string& path) {
  auto opened = Files().Open(path, ports::FileMode::kWriteNew);
  Require(opened.ToStatus(), tools::texts::kCannotWrite, path);
  return std::move(opened.value);
}

void WritePiece(ports::File& file, std::string_view bytes, const std::string& path) {
  Require(file.Write(bytes.data(), bytes.size()), tools::texts::kCannotWrite, path);
}

void CloseWritten(ports::File& file, const std::string& path) {
  Require(file.Close(), tools::texts::kCannotWrite, path);
}

std::string HashOfFile(const std::string& path) {
  const auto file = OpenToRead(path);
  std::vector<char> buffer(kPieceBytes);
  sha256::Stream stream;
  for (;;) {
    const std::size_t got = ReadPiece(*file, buffer.data(), buffer.size(), path);
    if (got == 0) return tmw::GetHashString(stream.Finish());
    stream.Update(buffer.data(), got);
  }
}

std::unique_ptr<ports::FileLock> LockFile(const std::string& path, const char* held,
                                          const std::string& folder) {
  if (!tmw::IsFileExists(path)) tmw::CreateEmptyFile(path);
  auto locked = ports::CurrentPorts().file_locks->TryLock(path, ports::FileLockMode::kExclusive);
  Require(locked.ToStatus(), texts::kCannotLock, path);
  if (locked.value.verdict != ports::FileLockVerdict::kLocked) Raise(held, folder);
  return std::move(locked.value.lock);
}

bool ReadWithTrailer(const std::string& path, const std::function<void(std::string_view)>& take) {
  constexpr auto kTrailer = static_cast<std::int64_t>(sha256::kIntegrityTrailerLength);
  const std::int64_t length = tmw::GetFileLength(path) - kTrailer;
  if (length < 0) return false;
  const auto file = OpenToRead(path);
  std::vector<char> buffer(kPieceBytes);
  sha256::Stream stream;
  for (std::int64_t left = length; left > 0;) {
    const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(left, kPieceBytes));
    const std::size_t got = ReadPiece(*file, buffer.data(), wanted, path);
    if (got == 0) return false;
    stream.Update(buffer.data(), got);
    take({buffer.data(), got});
    left -= static_cast<std::int64_t>(got);
  }
  sha256::IntegrityTrailer bytes{};
  for (std::size_t read = 0; read < bytes.size();) {
    const std::size_t got = ReadPiece(*file, buffer.data(), bytes.size() - read, path);
    if (got == 0) return false;
    std::copy_n(buffer.data(), got, bytes.begin() + static_cast<std::ptrdiff_t>(read));
    read += got;
  }
  const auto facts = sha256::ParseIntegrityTrailer(bytes);
  return facts && facts->content_length == static_cast<std::uint64_t>(length) &&
         facts->digest == stream.Finish();
}

void CopyContent(const std::string& source, const std::string& target) {
  const auto from = OpenToRead(source);
  const auto to = OpenToWrite(target);
  std::vector<char> buffer(kPieceBytes);
  for (;;) {
    const std::size_t got = ReadPiece(*from, buffer.data(), buffer.size(), source);
    if (got == 0) break;
    WritePiece(*to, {buffer.data(), got}, target);
  }
  CloseWritten(*to, target);
}

ScratchFolder::ScratchFolder(const std::string& parent) {
  const std::string base = parent.empty() ? tmw::GetTemporaryFolder() : parent;
  tmw::CreateFolderIfAbsent(base);
  ports::Status status;
  for (int i = 0; i < kScratchAttempts; ++i) {
    path_ = tmw::JoinPath(base, "tmpublish" + std::to_string(i));
    status = Files().CreateFolder(path_);
    if (status) return;
  }
  Require(status, texts::kCannotCreateFolder, path_);
}

ScratchFolder::~ScratchFolder() {
  try {
    RemoveTree(path_);
  } catch (const std::exception&) {
    // What cannot be removed is left in the folder for temporary files.
  }
}

}  // namespace publish
