#include "foundation/file_copy.h"

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/foundation_texts.h"
#include "foundation/patience.h"
#include "foundation/text.h"
#include "ports/clock.h"
#include "ports/file_system.h"
#include "ports/ports.h"

namespace tmw {
namespace {

namespace texts = foundation_texts;
using ports::Status;

constexpr const char* kModule = "mTmFilesOld";
constexpr std::size_t kCopyBytes = std::size_t{256} << 10;

constexpr const char* kGrowingEnding = ".copying";
constexpr const char* kReplacementEnding = ".new";
// Bytes of the target's name that the growing copy's name takes over, so that it fits wherever the
// target's own name does.
constexpr std::size_t kLongestNameTaken = 200;

ports::FileSystem& Files() {
  return *ports::CurrentPorts().files;
}

// Every copy to that target uses the same name, so that what a killed process left is replaced.
std::string NameOfGrowingCopy(const std::string& target) {
  const SplitName split = SplitFileName(target);
  std::string name = split.FileName();
  if (name.size() > kLongestNameTaken) {
    std::size_t length = kLongestNameTaken;
    while (ContinuesCharacter(name[length]))
      --length;
    name.resize(length);
  }
  return target.substr(0, target.size() - split.FileName().size()) + name + kGrowingEnding;
}

// Deletes its file unless Keep is called.
class GrowingCopy {
 public:
  explicit GrowingCopy(std::string path) : path_(std::move(path)) {}
  GrowingCopy(const GrowingCopy&) = delete;
  GrowingCopy& operator=(const GrowingCopy&) = delete;
  ~GrowingCopy() {
    if (!is_kept_) static_cast<void>(Files().RemoveFile(path_));
  }

  const std::string& Path() const { return path_; }
  void Keep() { is_kept_ = true; }

 private:
  std::string path_;
  bool is_kept_ = false;
};

Status CopyBytes(ports::File& source, ports::File& target, const CopyCheck& check) {
  std::vector<char> buffer(kCopyBytes);
  for (;;) {
    const auto count = source.Read(buffer.data(), buffer.size());
    if (!count) return count.ToStatus();
    if (count.value == 0) return Status::Success();
    if (const Status written = target.Write(buffer.data(), count.value); !written) return written;
    if (check.OnBytes) check.OnBytes(buffer.data(), count.value);
  }
}

Status CopyContent(ports::File& source, const std::string& target, const CopyCheck& check) {
  const auto opened = OpenPatiently(target, ports::FileMode::kCreateNew);
  if (!opened) return opened.ToStatus();
  ports::File& file = *opened.value;
  if (const Status copied = CopyBytes(source, file, check); !copied) return copied;
  if (const Status flushed = file.Flush(); !flushed) return flushed;
  return file.Close();
}

Status RenamePatiently(const std::string& from, const std::string& to) {
  return TryPatiently(kPatientAttempts, [&] { return Files().Rename(from, to); });
}

Status FlushFolderOf(const std::string& path) {
  const std::string folder = SplitFileName(path).Folder;
  return Files().FlushFolder(folder.empty() ? "." : folder);
}

// is_good stays true without a check.
Status CopySafely(ports::File& source, const std::string& source_path, const std::string& target,
                  const CopyCheck& check, bool& is_good) {
  GrowingCopy copy(NameOfGrowingCopy(target));
  static_cast<void>(Files().RemoveFile(copy.Path()));
  if (const Status status = CopyContent(source, copy.Path(), check); !status) return status;
  is_good = !check.IsGood || check.IsGood();
  if (!is_good) return Status::Success();
  if (const Status status = Files().CopyAttributes(source_path, copy.Path()); !status)
    return status;
  if (const Status status = RenamePatiently(copy.Path(), target); !status) return status;
  copy.Keep();
  return FlushFolderOf(target);
}

}  // namespace

bool CopyFileChecked(const std::string& source, const std::string& target,
                     const CopyCheck& check) try {
  const auto opened = OpenPatiently(source, ports::FileMode::kRead);
  if (!opened) RaiseApiErrorWithMessage(texts::Failed(texts::kOpening, source), opened.code);
  bool is_good = true;
  const Status status = CopySafely(*opened.value, source, target, check, is_good);
  if (!status)
    RaiseApiErrorWithMessage(texts::FailedInto(texts::kCopying, source, target), status.code);
  return is_good;
} catch (...) {
  ReRaiseError(kModule, "CopyFile");
}

void DeleteGrowingCopy(const std::string& target) {
  DeleteFile(NameOfGrowingCopy(target), true);
}

Status ReplaceFileBytes(const std::string& path, std::string_view bytes) {
  GrowingCopy copy(path + kReplacementEnding);
  Status status = WriteFileBytes(copy.Path(), bytes);
  if (status) status = RenamePatiently(copy.Path(), path);
  if (!status) return status;
  copy.Keep();
  return FlushFolderOf(path);
}

void DeleteReplacement(const std::string& path) {
  DeleteFile(path + kReplacementEnding, true);
}

void CopyFile(const std::string& source, const std::string& target) {
  static_cast<void>(CopyFileChecked(source, target, {}));
}

void CopyRights(const std::string& source, const std::string& target) try {
  const Status status = Files().CopyRights(source, target);
  if (!status) RaiseApiErrorWithMessage(texts::Failed(texts::kSettingRights, target), status.code);
} catch (...) {
  ReRaiseError(kModule, "CopyRights");
}

void MoveFile(const std::string& source, const std::string& target) try {
  Status status = RenamePatiently(source, target);
  if (!status && Files().MeansOtherDevice(status.code)) {
    CopyFile(source, target);
    DeleteFile(source);
    return;
  }
  if (status) status = FlushFolderOf(target);
  if (!status)
    RaiseApiErrorWithMessage(texts::FailedInto(texts::kMoving, source, target), status.code);
} catch (...) {
  ReRaiseError(kModule, "MoveFile");
}

}  // namespace tmw
