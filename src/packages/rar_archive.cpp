#include "packages/rar_archive.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "foundation/path_guard.h"
#include "packages/companion_functions.h"
#include "packages/packages_texts.h"
#include "services/advice.h"

namespace tmw {
namespace {

constexpr const char* kModule = "RarArchive";

// Entry names may use either separator; they are compared and guarded with "/".
std::string WithSlashes(std::string name) {
  std::replace(name.begin(), name.end(), '\\', '/');
  return name;
}

std::string Folded(const std::string& name) {
  return LowerCase(WithSlashes(name));
}

template <std::size_t kSize>
std::string UpToZero(const char16_t (&units)[kSize]) {
  return Utf16ToUtf8(std::u16string(units, std::find(units, units + kSize, u'\0')));
}

}  // namespace

RarArchive::~RarArchive() {
  try {
    CloseHandle();
  } catch (const ProgramError&) {
    // A destructor has nobody to report to.
  }
}

void RarArchive::OpenArchive(const std::string& archive_name, std::uint32_t open_mode) try {
  CloseHandle();
  ArchiveName = archive_name;
  const std::string oem_name = Utf8ToCodePage(CodePage::k866, archive_name);
  const std::u16string wide_name = Utf8ToUtf16(archive_name);
  ports::RAROpenArchiveDataEx record{};
  record.ArcName = oem_name.c_str();
  record.ArcNameW = wide_name.c_str();
  record.OpenMode = open_mode;
  record.Callback = &RarArchive::OnLibraryEvent;
  record.UserData = reinterpret_cast<std::intptr_t>(this);
  unpacked_ = 0;
  handle_ = CompanionFunctions().RAROpenArchiveEx(&record);
  if (handle_ == nullptr) RaiseRarError(static_cast<std::int32_t>(record.OpenResult));
  ApplyPassword();
} catch (...) {
  ReRaiseError(kModule, "OpenArchive");
}

void RarArchive::SetPassword(const std::string& password) try {
  password_ = password;
  if (handle_ != nullptr) ApplyPassword();
} catch (...) {
  ReRaiseError(kModule, "SetPassword");
}

void RarArchive::ApplyPassword() const {
  if (password_.empty()) return;
  const std::string ansi = Utf8ToCodePage(CodePage::k1251, password_);
  CompanionFunctions().RARSetPassword(handle_, ansi.c_str());
}

bool RarArchive::ReadHeader(std::string& file_name, std::uint32_t& flags,
                            std::uint32_t& packed_size, std::uint32_t& unpacked_size) try {
  const auto record = std::make_unique<ports::RARHeaderDataEx>();
  current_name_.clear();
  const int result = CompanionFunctions().RARReadHeaderEx(handle_, record.get());
  if (result == ports::kRarEndOfArchive) return false;
  if (result != ports::kRarOk) RaiseRarError(result);
  current_name_ = UpToZero(record->FileNameW);
  file_name = current_name_;
  flags = record->Flags;
  packed_size = record->PackSize;
  unpacked_size = record->UnpSize;
  announced_ = std::uint64_t{record->UnpSizeHigh} << 32U | record->UnpSize;
  return true;
} catch (...) {
  ReRaiseError(kModule, "ReadHeader");
}

void RarArchive::ProcessFile(std::int32_t operation, const std::string& folder,
                             const std::string& name) try {
  RequireOpen();
  if (operation == ports::kRarExtractFile &&
      !CheckRelativeName(WithSlashes(current_name_)).IsAccepted()) {
    RaiseRarError(ports::kRarCreateFailed);
  }
  const auto left = static_cast<std::uint64_t>(max_unpacked_ - unpacked_);
  if (operation == ports::kRarExtractFile && announced_ > left) RaiseTooLarge();
  const std::u16string wide_folder = Utf8ToUtf16(folder);
  const std::u16string wide_name = Utf8ToUtf16(name);
  const int result = CompanionFunctions().RARProcessFileW(
      handle_, operation, folder.empty() ? nullptr : wide_folder.c_str(),
      name.empty() ? nullptr : wide_name.c_str());
  if (unpacked_ > max_unpacked_) RaiseTooLarge();
  if (result != ports::kRarOk) RaiseRarError(result);
} catch (...) {
  ReRaiseError(kModule, "ProcessFile");
}

void RarArchive::ExtractFile(const std::string& entry_name, const std::string& folder) try {
  RequireOpen();
  const std::string wanted = Folded(entry_name);
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t packed_size = 0;
  std::uint32_t unpacked_size = 0;
  for (;;) {
    if (!ReadHeader(name, flags, packed_size, unpacked_size)) {
      RaiseProgramError(packages_texts::EntryNotFound(entry_name, ArchiveName));
    }
    if (Folded(name) == wanted) break;
    ProcessFile(ports::kRarSkip, "", "");
  }
  ProcessFile(ports::kRarExtractFile, folder, "");
} catch (...) {
  ReRaiseError(kModule, "ExtractFile");
}

void RarArchive::ExtractAllFiles(const std::string& folder) try {
  RequireOpen();
  std::string name;
  std::uint32_t flags = 0;
  std::uint32_t packed_size = 0;
  std::uint32_t unpacked_size = 0;
  while (ReadHeader(name, flags, packed_size, unpacked_size)) {
    ProcessFile(ports::kRarExtractFile, folder, "");
  }
} catch (...) {
  ReRaiseError(kModule, "ExtractAllFiles");
}

void RarArchive::CloseHandle() try {
  if (handle_ == nullptr) return;
  CompanionFunctions().RARCloseArchive(std::exchange(handle_, nullptr));
} catch (...) {
  ReRaiseError(kModule, "CloseHandle");
}

// Called by the library before it writes extracted bytes; -1 ends the extraction. The other events
// are questions for a next volume or a password, which are answered with no.
int RarArchive::OnLibraryEvent(std::uint32_t message, std::intptr_t user_data, std::intptr_t /*p1*/,
                               std::intptr_t p2) {
  constexpr std::intptr_t kVolumeOpened = 1;
  if (message != ports::kRarProcessData) return p2 == kVolumeOpened ? 0 : -1;
  auto& self = *reinterpret_cast<RarArchive*>(user_data);
  self.unpacked_ += p2;
  if (self.goes_on_ && !self.goes_on_()) return -1;
  return self.unpacked_ > self.max_unpacked_ ? -1 : 0;
}

void RarArchive::RaiseTooLarge() const {
  RaiseProgramError(
      packages_texts::ProcessingFailed(ArchiveName, packages_texts::TooLarge(max_unpacked_)));
}

void RarArchive::RequireOpen() const {
  if (handle_ == nullptr) RaiseProgramError(packages_texts::kNotOpen);
}

void RarArchive::RaiseRarError(std::int32_t code) const try {
  // Mostly a full disk; the package itself may be sound.
  if (code == ports::kRarWriteFailed) NoteFailure(FailureKind::kDiskFull);
  RaiseProgramError(
      packages_texts::ProcessingFailed(ArchiveName, packages_texts::ResultText(code)));
} catch (...) {
  ReRaiseError(kModule, "RaiseRarError");
}

namespace {

// Opens the package, runs the action and closes it; returns false and the description of an error.
template <typename Action>
bool TryWithPackage(const std::string& package, const std::string& password,
                    std::string& error_text, std::int64_t max_bytes,
                    const std::function<bool()>& goes_on, Action action) {
  try {
    RarArchive archive;
    archive.SetGoesOn(goes_on);
    archive.LimitUnpacked(max_bytes);
    if (!password.empty()) archive.SetPassword(password);
    archive.OpenArchive(package, ports::kRarExtract);
    action(archive);
    archive.CloseHandle();
    return true;
  } catch (...) {
    error_text = CurrentError().Description;
    return false;
  }
}

}  // namespace

bool UnrarOneFile(const std::string& package, const std::string& entry_name,
                  const std::string& folder, const std::string& password, std::string& error_text,
                  std::int64_t max_bytes, const std::function<bool()>& goes_on) {
  return TryWithPackage(package, password, error_text, max_bytes, goes_on,
                        [&](RarArchive& archive) {
                          archive.ExtractFile(entry_name, folder);
                          // The companion uses the name as the package spells it. On a system where
                          // letter case counts, the caller would not find that file.
                          if (WithSlashes(archive.CurrentName()) == WithSlashes(entry_name)) return;
                          const std::string asked = JoinPath(folder, entry_name);
                          const std::string asked_folder = SplitFileName(asked).Folder;
                          if (!asked_folder.empty()) CreateFolderIfAbsent(asked_folder);
                          MoveFile(JoinPath(folder, archive.CurrentName()), asked);
                        });
}

bool UnrarAllFiles(const std::string& package, const std::string& folder,
                   const std::string& password, std::string& error_text, std::int64_t max_bytes,
                   const std::function<bool()>& goes_on) {
  return TryWithPackage(package, password, error_text, max_bytes, goes_on,
                        [&](RarArchive& archive) { archive.ExtractAllFiles(folder); });
}

}  // namespace tmw
