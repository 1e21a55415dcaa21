#include "engine/component_check.h"

#include <utility>

#include "engine/engine_texts.h"
#include "foundation/api_errors.h"
#include "foundation/error_handling.h"
#include "foundation/file_utils.h"
#include "packages/companion_functions.h"
#include "packages/hash_api.h"
#include "packages/rar_archive.h"
#include "ports/ports.h"
#include "services/message_boxes.h"
#include "services/run_module.h"

namespace tmw {
namespace {

bool Refuse(std::string& fault, std::string message, const std::string& file) {
  fault = std::move(message);
  DeleteFile(file);
  return false;
}

// Returns the words for what is wrong with the file, or null.
const char* FindFault(const std::string& file, std::int32_t length, const std::string& hash) {
  if (GetFileLength(file) != length) return engine_texts::kLengthDiffers;
  return GetFileHash(file) != hash ? engine_texts::kHashDiffers : nullptr;
}

// An entry point of the companion library; 0 means that the check has failed.
using IntegrityCheck = std::int32_t(COMPANION_CALL*)(const char* path);

ports::Status CheckIntegrity(IntegrityCheck check, const std::string& file) {
  const std::string name = ports::CurrentPorts().companion->NarrowPath(file);
  const std::int32_t result = check(name.c_str());
  const ports::SystemCode code = ports::CurrentPorts().companion->LastError();
  return result != 0 ? ports::Status::Success() : ports::Status::Failure(code);
}

std::string CheckFailure(const std::string& file, ports::SystemCode code) {
  return code == 0 ? engine_texts::CheckFailedUnknown(file)
                   : engine_texts::CheckFailed(file, GetApiErrorText(code, ""));
}

}  // namespace

bool IsLoadedFileReusable(const std::string& loaded, const ComponentFacts& expected) {
  if (!IsFileExists(loaded)) return false;
  const bool has_length =
      expected.PackType == kPackText || GetFileLength(loaded) == expected.ExpectedLength;
  if (has_length && GetFileHash(loaded) == expected.ExpectedHash) return true;
  DeleteFileRepeatedly(loaded);
  return false;
}

bool TryUnpackComponent(const ComponentPlaces& places, const ComponentFacts& expected,
                        std::string& fault) {
  const std::string& part = places.Part;
  const std::string& unpacked = places.Unpacked;
  const std::int32_t method = expected.PackType;
  if (method != kPackPlain && method != kPackIntegrity && method != kPackText) {
    // The message shows the size in the place of the method, as users quote it.
    fault = engine_texts::UnknownPackMethod(expected.Name, expected.ServerSize);
    return false;
  }
  if (method == kPackIntegrity && !CheckFileCrcEx(part, fault)) {
    DeleteFile(part);
    return false;
  }
  DeleteFile(unpacked);
  std::string reason;
  // Of a text only the hash counts.
  const std::int64_t max_length =
      method == kPackText ? MaxUnpacked(expected.ServerSize) : expected.ExpectedLength;
  if (!UnrarOneFile(part, expected.Name, SplitFileName(unpacked).Folder, "", reason, max_length)) {
    return Refuse(fault, engine_texts::NotUnpacked(expected.Name, reason + "."), part);
  }
  DeleteFile(part);
  if (!IsFileExists(unpacked)) {
    // The next steps then fail on the missing file.
    DownloadError(engine_texts::NotUnpacked(expected.Name, engine_texts::kUnpackedAbsent),
                  FailureKind::kVanished);
  }
  ClearReadOnlyAttributeFromFile(unpacked);
  return method != kPackIntegrity || CheckFileCrc(unpacked, fault);
}

bool TryVerifyComponent(const std::string& unpacked, const ComponentFacts& expected,
                        std::string& fault) {
  const char* what = nullptr;
  if (expected.PackType != kPackText) {
    what = FindFault(unpacked, expected.ExpectedLength, expected.ExpectedHash);
  } else if (GetStringHash(ReadUnicodeFileToString(unpacked)) != expected.ExpectedHash) {
    what = engine_texts::kHashDiffers;
  }
  return what == nullptr ||
         Refuse(fault, engine_texts::LoadingFault(expected.Name, what), unpacked);
}

bool TryVerifyPackage(const std::string& url, const std::string& file, const WuPackage& package,
                      std::string& fault) {
  if (!IsFileExists(file)) {
    fault = engine_texts::LoadingFault(url, engine_texts::kFileAbsent);
    return false;
  }
  const char* const what = FindFault(file, package.PackSize, package.PackHash);
  return what == nullptr || Refuse(fault, engine_texts::LoadingFault(url, what), file);
}

FailureKind KindOfRefusal() {
  return TakeNotedFailure() == FailureKind::kDiskFull ? FailureKind::kDiskFull
                                                      : FailureKind::kDamagedFile;
}

bool CheckFileCrc(const std::string& file, std::string& fault) try {
  const ports::Status status = CheckIntegrity(CompanionFunctions().Sha256_GetFileCrc, file);
  if (status) return true;
  DeleteFile(file);
  fault = CheckFailure(file, status.code);
  return false;
} catch (...) {
  ReRaiseError(kRunModule, "CheckFileCrc");
}

bool CheckFileCrcEx(const std::string& file, std::string& fault) try {
  const ports::Status status = CheckIntegrity(CompanionFunctions().Sha256_GetFileCrcEx, file);
  if (status) return true;
  fault = CheckFailure(file, status.code);
  return false;
} catch (...) {
  ReRaiseError(kRunModule, "CheckFileCrcEx");
}

}  // namespace tmw
