#include "foundation/file_utils.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string_view>
#include <utility>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/foundation_texts.h"
#include "foundation/patience.h"
#include "foundation/text.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {
namespace {

namespace texts = foundation_texts;
using ports::FileKind;

constexpr const char* kModule = "mTmFilesOld";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr char16_t kUtf16Mark = 0xFEFF;
constexpr std::size_t kReadBytes = std::size_t{64} << 10;

constexpr int kDeleteAttempts = 40;
constexpr int kPatientDeleteAttempts = 10;
constexpr std::int32_t kDeleteIntervalMs = 100;
constexpr std::int32_t kLastDeleteIntervalMs = 1000;

ports::FileSystem& Files() {
  return *ports::CurrentPorts().files;
}

[[noreturn]] void RaiseAccessError(const std::string& path, ports::SystemCode code) {
  RaiseApiErrorWithMessage(texts::Failed(texts::kAccess, path), code);
}

ports::FileFacts Examine(const std::string& path) {
  const auto facts = TryPatiently(kPatientAttempts, [&] { return Files().Examine(path); });
  if (!facts) RaiseAccessError(path, facts.code);
  return facts.value;
}

[[noreturn]] void RaiseReadError(const std::string& path, ports::SystemCode code) {
  RaiseApiErrorWithMessage(texts::Failed(texts::kReading, path), code);
}

[[noreturn]] void RaiseDeleteError(const std::string& path, ports::SystemCode code) {
  RaiseApiErrorWithMessage(texts::Failed(texts::kDeleting, path), code);
}

ports::Status RemoveIfThere(const std::string& path) {
  const ports::Status status = Files().RemoveFile(path);
  return !status && Files().MeansMissing(status.code) ? ports::Status::Success() : status;
}

// Entries that are no folders: files and dangling links.
std::vector<std::string> ListFiles(const std::string& folder, const std::string& mask) {
  const auto entries = Files().List(folder);
  if (!entries) {
    if (Files().MeansMissing(entries.code)) return {};
    RaiseApiErrorWithMessage(texts::Failed(texts::kListing, folder), entries.code);
  }
  std::vector<std::pair<std::string, std::string>> found;  // the key of the order, the name
  for (const ports::FolderEntry& entry : entries.value) {
    if (entry.kind != FileKind::kFolder && MatchesMask(entry.name, mask))
      found.emplace_back(LowerCase(entry.name), entry.name);
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> names;
  names.reserve(found.size());
  for (auto& entry : found)
    names.push_back(std::move(entry.second));
  return names;
}

// Another process may create the folder between the check and the creation.
void CreateMissingFolder(const std::string& path) {
  if (Examine(path).kind == FileKind::kFolder) return;
  const std::string parent = SplitFileName(path).Folder;
  if (!parent.empty() && parent.size() < path.size()) CreateMissingFolder(parent);
  const ports::Status status = Files().CreateFolder(path);
  if (!status && Examine(path).kind != FileKind::kFolder)
    RaiseApiErrorWithMessage(texts::Failed(texts::kCreatingFolder, path), status.code);
}

}  // namespace

bool IsFileExists(const std::string& path) try {
  return Examine(path).kind == FileKind::kFile;
} catch (...) {
  ReRaiseError(kModule, "IsFileExists");
}

bool IsFolderExists(const std::string& path) try {
  return Examine(path).kind == FileKind::kFolder;
} catch (...) {
  ReRaiseError(kModule, "IsFolderExists");
}

std::string FollowLinks(const std::string& path) try {
  const auto followed = Files().FollowLinks(path);
  if (!followed) RaiseAccessError(path, followed.code);
  return followed.value;
} catch (...) {
  ReRaiseError(kModule, "FollowLinks");
}

std::int64_t GetFileLength(const std::string& path) try {
  const ports::FileFacts facts = Examine(path);
  if (facts.kind != FileKind::kFile) {
    const auto opened = Files().Open(path, ports::FileMode::kRead);
    RaiseApiErrorWithMessage(texts::Failed(texts::kMeasuring, path), opened.code);
  }
  return facts.length;
} catch (...) {
  ReRaiseError(kModule, "GetFileLength");
}

std::string ReadFileBytes(const std::string& path) try {
  const auto opened = OpenPatiently(path, ports::FileMode::kRead);
  if (!opened) RaiseApiErrorWithMessage(texts::Failed(texts::kOpening, path), opened.code);
  std::string bytes;
  for (;;) {
    const std::size_t length = bytes.size();
    bytes.resize(length + std::max(kReadBytes, length / 2));
    const auto count = opened.value->Read(bytes.data() + length, bytes.size() - length);
    if (!count) RaiseReadError(path, count.code);
    bytes.resize(length + count.value);
    if (count.value == 0) return bytes;
  }
} catch (...) {
  ReRaiseError(kModule, "ReadFileBytes");
}

std::string ReadFileToString(const std::string& path) try {
  return FileTextOf(ReadFileBytes(path));
} catch (...) {
  ReRaiseError(kModule, "ReadFileToString");
}

std::string FileTextOf(std::string_view bytes) {
  if (!bytes.starts_with(kUtf8Mark)) return CodePageToUtf8(CodePage::k1251, bytes);
  // Through UTF-16, so that the text is well-formed whatever the file holds.
  return Utf16ToUtf8(Utf8ToUtf16(bytes.substr(kUtf8Mark.size())));
}

std::string UnicodeBytesToString(std::string_view bytes) {
  const std::u16string units = BytesToUtf16(bytes);
  const bool has_mark = !units.empty() && units.front() == kUtf16Mark;
  return Utf16ToUtf8(std::u16string_view(units).substr(has_mark ? 1 : 0));
}

std::string ReadUnicodeFileToString(const std::string& path) try {
  return UnicodeBytesToString(ReadFileBytes(path));
} catch (...) {
  ReRaiseError(kModule, "ReadUnicodeFileToString");
}

void CreateFolderIfAbsent(const std::string& path) try { CreateMissingFolder(path); } catch (...) {
  ReRaiseError(kModule, "CreateFolderIfAbsent");
}

bool TryCreateFolderIfAbsent(const std::string& path, std::string& error_text) {
  try {
    CreateMissingFolder(path);
    return true;
  } catch (...) {
    error_text = CurrentError().Description;
    return false;
  }
}

void CreateEmptyFile(const std::string& path) try {
  const auto opened = OpenPatiently(path, ports::FileMode::kWriteNew);
  const ports::Status closed = opened ? opened.value->Close() : opened.ToStatus();
  if (!closed) RaiseApiErrorWithMessage(texts::Failed(texts::kCreating, path), closed.code);
} catch (...) {
  ReRaiseError(kModule, "CreateEmptyFile");
}

ports::Status WriteFileBytes(const std::string& path, std::string_view bytes) {
  const auto opened = OpenPatiently(path, ports::FileMode::kWriteNew);
  if (!opened) return opened.ToStatus();
  ports::File& file = *opened.value;
  if (const auto written = file.Write(bytes.data(), bytes.size()); !written) return written;
  if (const auto flushed = file.Flush(); !flushed) return flushed;
  return file.Close();
}

bool DeleteFile(const std::string& path, bool is_quiet) try {
  if (is_quiet) return RemoveIfThere(path).ok;
  const ports::Status status =
      TryPatiently(kPatientDeleteAttempts, [&] { return RemoveIfThere(path); });
  if (!status) RaiseDeleteError(path, status.code);
  return true;
} catch (...) {
  ReRaiseError(kModule, "DeleteFile");
}

bool DeleteFiles(const std::string& mask_path, bool is_quiet) {
  try {
    const SplitName split = SplitFileName(mask_path);
    const std::string folder = split.Folder.empty() ? "." : split.Folder;
    ports::Status first_failure;
    std::string first_failed;
    for (const std::string& name : ListFiles(folder, split.FileName())) {
      // Not JoinPath: a name from the disk is taken as it stands.
      const std::string path = std::string(folder).append(1, Files().Separator()).append(name);
      const ports::Status status = RemoveIfThere(path);
      if (status || !first_failure) continue;
      first_failure = status;
      first_failed = path;
    }
    if (!first_failure && !is_quiet) RaiseDeleteError(first_failed, first_failure.code);
    return first_failure.ok;
  } catch (...) {
    if (is_quiet) return false;
    ReRaiseError(kModule, "DeleteFiles");
  }
}

void DeleteFolderTree(const std::string& folder) {
  ports::FileSystem& files = *ports::CurrentPorts().files;
  const auto entries = files.List(folder);
  if (!folder.empty() && entries) {
    for (const ports::FolderEntry& entry : entries.value) {
      const std::string path = JoinPath(folder, entry.name);
      // Systems differ in which call removes a link to a folder; neither touches its target.
      if (files.RemoveFile(path) || files.RemoveFolder(path)) continue;
      const auto followed = files.FollowLinks(path);
      const bool is_link = !followed || followed.value != path;
      if (entry.kind == ports::FileKind::kFolder && !is_link) DeleteFolderTree(path);
    }
  }
  static_cast<void>(files.RemoveFolder(folder));
}

void DeleteFileRepeatedly(const std::string& path) try {
  ports::Clock& clock = *ports::CurrentPorts().clock;
  for (int attempt = 0; attempt < kDeleteAttempts; ++attempt) {
    if (attempt > 0) clock.Sleep(kDeleteIntervalMs);
    if (DeleteFile(path, true)) return;
  }
  clock.Sleep(kLastDeleteIntervalMs);
  if (const ports::Status last = RemoveIfThere(path); !last) RaiseDeleteError(path, last.code);
} catch (...) {
  ReRaiseError(kModule, "DeleteFileRepeatedly");
}

void ClearReadOnlyAttributeFromFile(const std::string& path) try {
  const ports::Status status = Files().SetReadOnly(path, false);
  if (!status) RaiseApiErrorWithMessage(texts::Failed(texts::kClearingReadOnly, path), status.code);
} catch (...) {
  ReRaiseError(kModule, "ClearReadOnlyAttributeFromFile");
}

std::vector<std::string> CollectFileNamesInFolder(const std::string& folder,
                                                  const std::string& mask) try {
  return ListFiles(folder, mask);
} catch (...) {
  ReRaiseError(kModule, "CollectFileNamesInFolder");
}

std::string GetTemporaryFolder() try {
  const auto folder = Files().TemporaryFolder();
  if (!folder) {
    RaiseApiErrorWithMessage(folder.value.empty() ? texts::kNoTemporaryFolder
                                                  : texts::TemporaryFolderRefused(folder.value),
                             folder.code);
  }
  return folder.value;
} catch (...) {
  ReRaiseError(kModule, "GetTemporaryFolder");
}

}  // namespace tmw
