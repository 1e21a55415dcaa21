#include "engine/component_check.h"

#include "engine/engine_texts.h"
#include "engine/ks_updater.h"
#include "foundation/api_errors.h"
#include "foundation/encodings.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/companion_functions.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "ports/ports.h"

namespace tmw {
namespace {

constexpr const char* kModule = "KsUpdater";

bool Refuse(const std::string& message, const std::string& file) {
  DownloadError(message);
  DeleteFile(file);
  return false;
}

// What the companion library says of a file's integrity data.
using IntegrityCheck = std::int32_t(COMPANION_CALL*)(const char* path);

ports::Status CheckIntegrity(IntegrityCheck check, const std::string& file) {
  const std::string ansi_name = Utf8ToCodePage(CodePage::k1251, file);
  const std::int32_t result = check(ansi_name.c_str());
  const ports::SystemCode code = ports::CurrentPorts().companion->LastError();
  return result != 0 ? ports::Status::Success() : ports::Status::Failure(code);
}

// The text of a failed integrity check; code 0 is a failure without a reason.
void TellCheckFailure(const std::string& file, ports::SystemCode code) {
  DownloadError(code == 0 ? engine_texts::CheckFailedUnknown(file)
                          : engine_texts::CheckFailed(file, GetApiErrorText(code, "")));
}

}  // namespace

bool IsLoadedFileReusable(const std::string& loaded, const ComponentFacts& expected) {
  if (!IsFileExists(loaded)) return false;
  const bool has_length =
      expected.pack_method == kPackText || GetFileLength(loaded) == expected.expected_length;
  if (has_length && GetFileHash(loaded) == expected.expected_hash) return true;
  DeleteFileRepeatedly(loaded);
  return false;
}

bool UnpackComponent(const ReleasePaths& release, const ComponentFacts& expected) {
  const std::string part = PartPath(release, expected.name);
  const std::string unpacked = UnpackedPath(release, expected.name);
  const std::int32_t method = expected.pack_method;
  if (method != kPackPlain && method != kPackIntegrity && method != kPackText) {
    // The number told is the size, not the method: users have learnt to quote it.
    DownloadError(engine_texts::UnknownPackMethod(expected.name, expected.server_size));
    return false;
  }
  if (method == kPackIntegrity && !CheckFileCrcEx(part)) {
    DeleteFile(part);
    return false;
  }
  DeleteFile(unpacked);
  std::string reason;
  if (!UnrarOneFile(part, expected.name, release.Parts, "", reason)) {
    return Refuse(engine_texts::NotUnpacked(expected.name, reason + "."), part);
  }
  DeleteFile(part);
  if (!IsFileExists(unpacked)) {
    // The steps behind fail on the missing file with the system's words.
    DownloadError(engine_texts::NotUnpacked(expected.name, engine_texts::kUnpackedAbsent));
  }
  ClearReadOnlyAttributeFromFile(unpacked);
  return method != kPackIntegrity || CheckFileCrc(unpacked);
}

bool VerifyComponent(const ReleasePaths& release, const ComponentFacts& expected) {
  const std::string unpacked = UnpackedPath(release, expected.name);
  const bool is_text = expected.pack_method == kPackText;
  if (!is_text && GetFileLength(unpacked) != expected.expected_length) {
    return Refuse(engine_texts::LoadingFault(expected.name, engine_texts::kLengthDiffers),
                  unpacked);
  }
  const std::string hash =
      is_text ? GetStringHash(ReadUnicodeFileToString(unpacked)) : GetFileHash(unpacked);
  if (hash != expected.expected_hash) {
    return Refuse(engine_texts::LoadingFault(expected.name, engine_texts::kHashDiffers), unpacked);
  }
  return true;
}

bool VerifyPackage(const std::string& url, const std::string& file, const WuPackage& package) {
  if (!IsFileExists(file)) {
    DownloadError(engine_texts::LoadingFault(url, engine_texts::kFileAbsent));
    return false;
  }
  if (GetFileLength(file) != package.PackSize) {
    return Refuse(engine_texts::LoadingFault(url, engine_texts::kLengthDiffers), file);
  }
  if (GetFileHash(file) != package.PackHash) {
    return Refuse(engine_texts::LoadingFault(url, engine_texts::kHashDiffers), file);
  }
  return true;
}

bool CheckFileCrc(const std::string& file) try {
  const ports::Status status = CheckIntegrity(CompanionFunctions().Sha256_GetFileCrc, file);
  if (status) return true;
  DeleteFile(file);
  TellCheckFailure(file, status.code);
  return false;
} catch (...) {
  ReRaiseError(kModule, "CheckFileCrc");
}

bool CheckFileCrcEx(const std::string& file) try {
  const ports::Status status = CheckIntegrity(CompanionFunctions().Sha256_GetFileCrcEx, file);
  if (status) return true;
  TellCheckFailure(file, status.code);
  return false;
} catch (...) {
  ReRaiseError(kModule, "CheckFileCrcEx");
}

}  // namespace tmw
