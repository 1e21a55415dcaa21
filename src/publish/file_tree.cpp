#include "publish/file_tree.h"

#include <algorithm>
#include <memory>
#include <span>

#include "foundation/api_errors.h"
#include "foundation/file_utils.h"
#include "foundation/text.h"
#include "packages/hash_api.h"
#include "packages/sha256.h"
#include "platform/file_system.h"
#include "platform/ports.h"
#include "publish/stop.h"

namespace publish {
namespace {

using platform::FileKind;

constexpr int kScratchAttempts = 1000;

platform::FileSystem& Files() {
  return *platform::CurrentPorts().files;
}

void Require(const platform::Status& status, const std::string& what, const std::string& path) {
  if (status) return;
  tmw::RaiseApiErrorWithMessage("Cannot " + what + " " + tmw::Quoted(path) + ": ", status.code);
}

std::vector<platform::FolderEntry> List(const std::string& folder) {
  auto listed = Files().List(folder);
  Require({listed.ok, listed.code}, "read the folder", folder);
  return std::move(listed.value);
}

void AddTree(const std::string& folder, const std::string& prefix, std::vector<TreeEntry>& files) {
  for (const platform::FolderEntry& entry : List(folder)) {
    const std::string path = tmw::JoinPath(folder, entry.name);
    if (entry.kind == FileKind::kFolder) {
      AddTree(path, prefix + entry.name + "/", files);
    } else {
      files.push_back({prefix + entry.name, entry.kind == FileKind::kFile});
    }
  }
}

std::string TextOf(tmw::Sha256Stream& stream) {
  return tmw::GetHashString(stream.Finish());
}

}  // namespace

std::vector<TreeEntry> ListTree(const std::string& folder) {
  std::vector<TreeEntry> files;
  AddTree(folder, "", files);
  std::sort(files.begin(), files.end(),
            [](const TreeEntry& a, const TreeEntry& b) { return a.path < b.path; });
  return files;
}

void RemoveTree(const std::string& folder) {
  if (!tmw::IsFolderExists(folder)) return;
  for (const platform::FolderEntry& entry : List(folder)) {
    const std::string path = tmw::JoinPath(folder, entry.name);
    // A link to a folder goes as a file does; what it leads to stays.
    const platform::Status removed = Files().RemoveFile(path);
    if (removed) continue;
    if (entry.kind != FileKind::kFolder) Require(removed, "remove", path);
    RemoveTree(path);
  }
  Require(Files().RemoveFolder(folder), "remove the folder", folder);
}

void WriteWholeFile(const std::string& path, std::string_view bytes) {
  const auto file = OpenToWrite(path);
  WritePiece(*file, bytes, path);
  Require(file->Flush(), "write", path);
  CloseWritten(*file, path);
}

void ReplaceFile(const std::string& path, std::string_view bytes) {
  const std::string fresh = path + ".new";
  WriteWholeFile(fresh, bytes);
  Require(Files().Rename(fresh, path), "replace", path);
  Require(Files().FlushFolder(tmw::SplitFileName(path).Folder), "replace", path);
}

std::unique_ptr<platform::File> OpenToRead(const std::string& path) {
  auto opened = Files().Open(path, platform::FileMode::kRead);
  Require({opened.ok, opened.code}, "read", path);
  return std::move(opened.value);
}

std::size_t ReadPiece(platform::File& file, char* buffer, std::size_t length,
                      const std::string& path) {
  const auto got = file.Read(buffer, length);
  Require({got.ok, got.code}, "read", path);
  return got.value;
}

std::unique_ptr<platform::File> OpenToWrite(const std::string& path) {
  auto opened = Files().Open(path, platform::FileMode::kWriteNew);
  Require({opened.ok, opened.code}, "write", path);
  return std::move(opened.value);
}

void WritePiece(platform::File& file, std::string_view bytes, const std::string& path) {
  Require(file.Write(bytes.data(), bytes.size()), "write", path);
}

void CloseWritten(platform::File& file, const std::string& path) {
  Require(file.Close(), "write", path);
}

std::string HashOfFile(const std::string& path) {
  const auto file = OpenToRead(path);
  std::vector<char> buffer(256U << 10U);
  tmw::Sha256Stream stream;
  for (;;) {
    ThrowIfStopped();
    const std::size_t got = ReadPiece(*file, buffer.data(), buffer.size(), path);
    if (got == 0) return TextOf(stream);
    stream.Update(buffer.data(), got);
  }
}

std::string HashOfBytes(std::string_view bytes) {
  tmw::Sha256Stream stream;
  stream.Update(bytes.data(), bytes.size());
  return TextOf(stream);
}

ScratchFolder::ScratchFolder(const std::string& parent) {
  const std::string base = parent.empty() ? tmw::GetTemporaryFolder() : parent;
  tmw::CreateFolderIfAbsent(base);
  platform::Status status;
  for (int i = 0; i < kScratchAttempts; ++i) {
    path_ = tmw::JoinPath(base, "tmpublish" + std::to_string(i));
    status = Files().CreateFolder(path_);
    if (status) return;
  }
  Require(status, "create the folder", path_);
}

ScratchFolder::~ScratchFolder() {
  try {
    RemoveTree(path_);
  } catch (const std::exception&) {
    // What cannot be removed stays in the folder for temporary files.
  }
}

}  // namespace publish
