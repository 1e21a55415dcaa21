#include <algorithm>

#include "companion/boundary.h"
#include "companion/exports.h"
#include "companion/os.h"
#include "companion/rar/archive.h"
#include "companion/rar/failure.h"
#include "companion/text_forms.h"

namespace companion {
namespace {

// What a handle stands for.
struct OpenedArchive {
  rar::Archive archive;
  ports::RarCallback callback = nullptr;
  std::intptr_t user_data = 0;
};

std::unique_ptr<os::ReadableFile> OpenVolume(const std::string& path) {
  os::ErrorCode error = 0;
  return os::OpenForReading(path, error);
}

template <typename Action>
std::int32_t Guarded(Action action) noexcept {
  return WithoutExceptions<std::int32_t>(ports::kRarNoMemory, ports::kRarUnknown, [&] {
    try {
      return static_cast<std::int32_t>(action());
    } catch (const rar::Failure& failure) {
      return static_cast<std::int32_t>(failure.code);
    }
  });
}

void SetCallback(OpenedArchive& opened, ports::RarCallback callback, std::intptr_t user_data) {
  opened.callback = callback;
  opened.user_data = user_data;
  if (callback == nullptr) {
    opened.archive.SetListener(nullptr);
    return;
  }
  opened.archive.SetListener([callback, user_data](const std::uint8_t* data, std::size_t length) {
    return callback(ports::kRarProcessData, user_data, reinterpret_cast<std::intptr_t>(data),
                    static_cast<std::intptr_t>(length)) != -1;
  });
}

std::string PathOf(const ports::RAROpenArchiveData& record) {
  return FromOem(record.ArcName);
}

std::string PathOf(const ports::RAROpenArchiveDataEx& record) {
  const bool has_wide_name = record.ArcNameW != nullptr && record.ArcNameW[0] != 0;
  return has_wide_name ? FromUnits(record.ArcNameW) : FromOem(record.ArcName);
}

// Fills the result of either open record.
template <typename Record, typename Prepare>
OpenedArchive* Open(Record& record, Prepare prepare) {
  std::unique_ptr<OpenedArchive> opened;
  record.CmtSize = 0;
  record.CmtState = 0;
  const std::int32_t result = Guarded([&] {
    const bool extracts = record.OpenMode == ports::kRarExtract;
    auto archive = std::make_unique<OpenedArchive>(
        OpenedArchive{rar::Archive(PathOf(record), extracts, OpenVolume)});
    prepare(*archive);
    opened = std::move(archive);
    return ports::kRarOk;
  });
  record.OpenResult = static_cast<std::uint32_t>(result);
  return opened.release();
}

OpenedArchive* FromHandle(ports::RarHandle handle) {
  return static_cast<OpenedArchive*>(handle);
}

std::uint32_t HeaderFlags(const rar::Entry& entry) {
  return (entry.split_before ? ports::kRarSplitBefore : 0U) |
         (entry.split_after ? ports::kRarSplitAfter : 0U) |
         (entry.encrypted ? ports::kRarEncrypted : 0U) | (entry.solid ? ports::kRarSolid : 0U) |
         (entry.directory ? ports::kRarDirectory : 0U);
}

std::uint32_t Low(std::uint64_t value) {
  return static_cast<std::uint32_t>(value);
}
std::uint32_t High(std::uint64_t value) {
  return static_cast<std::uint32_t>(value >> 32U);
}

// The fields that both header records have.
template <typename Record>
void FillCommon(const rar::Archive& archive, Record& record) {
  const rar::Entry& entry = archive.Current();
  PutOem(record.ArcName, archive.VolumePath());
  PutOem(record.FileName, entry.name);
  record.Flags = HeaderFlags(entry);
  record.PackSize = Low(entry.packed_size);
  record.UnpSize = Low(entry.unpacked_size.value_or(0));
  record.HostOS = entry.host_os;
  record.FileCRC = entry.crc.value_or(0);
  record.FileTime = entry.dos_time;
  record.UnpVer = entry.version;
  record.Method = entry.method + 0x30U;
  record.FileAttr = entry.attributes;
  record.CmtSize = 0;
  record.CmtState = 0;
}

void FillExtended(const rar::Archive& archive, ports::RARHeaderDataEx& record) {
  const rar::Entry& entry = archive.Current();
  PutUnits(record.ArcNameW, archive.VolumePath());
  PutUnits(record.FileNameW, entry.name);
  record.PackSizeHigh = High(entry.packed_size);
  record.UnpSizeHigh = High(entry.unpacked_size.value_or(0));
  record.DictSize = entry.dictionary_kib;
  record.HashType = entry.blake2sp ? 2 : entry.crc ? 1 : 0;
  if (entry.blake2sp) std::copy(entry.blake2sp->begin(), entry.blake2sp->end(), record.Hash);
  record.RedirType = entry.redirection;
  if (entry.redirection != 0 && record.RedirName != nullptr && record.RedirNameSize > 0) {
    const std::u16string target = tmw::Utf8ToUtf16(entry.redirection_target);
    const std::size_t length = std::min<std::size_t>(target.size(), record.RedirNameSize - 1);
    std::copy_n(target.begin(), length, record.RedirName);
    record.RedirName[length] = 0;
  }
  if (!entry.modified) return;
  constexpr std::int64_t kUnixEpoch = 11644473600;
  const auto ticks = static_cast<std::uint64_t>((*entry.modified + kUnixEpoch) * 10000000);
  record.MtimeLow = Low(ticks);
  record.MtimeHigh = High(ticks);
}

// The folder and the name are converted by the given function.
template <typename Text, typename Convert>
int Process(ports::RarHandle handle, int operation, Text folder, Text name, Convert convert) {
  if (handle == nullptr) return ports::kRarUnknown;
  return Guarded([&] {
    rar::Archive& archive = FromHandle(handle)->archive;
    switch (operation) {
      case ports::kRarSkip:
        return archive.Skip();
      case ports::kRarTest:
        return archive.Test();
      default:
        return archive.Extract(convert(folder), convert(name));
    }
  });
}

}  // namespace
}  // namespace companion

using companion::FromHandle;
using ports::RarHandle;

ports::RarHandle COMPANION_CALL RAROpenArchive(ports::RAROpenArchiveData* record) {
  if (record == nullptr) return nullptr;
  return companion::Open(*record, [](companion::OpenedArchive&) {});
}

ports::RarHandle COMPANION_CALL RAROpenArchiveEx(ports::RAROpenArchiveDataEx* record) {
  if (record == nullptr) return nullptr;
  return companion::Open(*record, [record](companion::OpenedArchive& opened) {
    record->Flags = opened.archive.Flags();
    companion::SetCallback(opened, record->Callback, record->UserData);
  });
}

int COMPANION_CALL RARReadHeader(ports::RarHandle handle, ports::RARHeaderData* header) {
  if (handle == nullptr || header == nullptr) return ports::kRarUnknown;
  return companion::Guarded([&] {
    const auto result = FromHandle(handle)->archive.ReadHeader();
    if (result == ports::kRarOk) companion::FillCommon(FromHandle(handle)->archive, *header);
    return result;
  });
}

int COMPANION_CALL RARReadHeaderEx(ports::RarHandle handle, ports::RARHeaderDataEx* header) {
  if (handle == nullptr || header == nullptr) return ports::kRarUnknown;
  return companion::Guarded([&] {
    const auto result = FromHandle(handle)->archive.ReadHeader();
    if (result == ports::kRarOk) {
      companion::FillCommon(FromHandle(handle)->archive, *header);
      companion::FillExtended(FromHandle(handle)->archive, *header);
    }
    return result;
  });
}

int COMPANION_CALL RARProcessFile(ports::RarHandle handle, int operation, const char* folder,
                                  const char* name) {
  return companion::Process(handle, operation, folder, name, companion::FromOem);
}

int COMPANION_CALL RARProcessFileW(ports::RarHandle handle, int operation, const char16_t* folder,
                                   const char16_t* name) {
  return companion::Process(handle, operation, folder, name, companion::FromUnits);
}

void COMPANION_CALL RARSetCallback(ports::RarHandle handle, ports::RarCallback callback,
                                   std::intptr_t user_data) {
  if (handle == nullptr) return;
  companion::Guarded([&] {
    companion::SetCallback(*FromHandle(handle), callback, user_data);
    return ports::kRarOk;
  });
}

void COMPANION_CALL RARSetPassword(ports::RarHandle /*handle*/, const char* /*password*/) {}

int COMPANION_CALL RARGetDllVersion() {
  return 6;
}

int COMPANION_CALL RARCloseArchive(ports::RarHandle handle) {
  if (handle == nullptr) return ports::kRarCloseFailed;
  delete FromHandle(handle);
  return ports::kRarOk;
}
