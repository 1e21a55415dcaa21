#pragma once

#include <cstddef>
#include <cstdint>

// The published C interface of the companion library: record layouts, entry points and their names.
// Both sides of the boundary include it: the library itself and the program's port that loads it.
//
// 8-bit texts come in three forms: archive names in code page 866, passwords, zip names and file
// names in code page 1251; on Linux every path and name is UTF-8 instead. 16-bit texts are UTF-16
// units on both systems.
//
// The build defines COMPANION_CALL, the calling convention of entry points and callbacks:
// __stdcall on Windows, nothing on Linux.

namespace ports {

// Result codes of the RAR interface.
enum RarResult : std::int32_t {
  kRarOk = 0,
  kRarEndOfArchive = 10,
  kRarNoMemory = 11,
  kRarBadData = 12,
  kRarBadArchive = 13,
  kRarUnknownFormat = 14,
  kRarOpenFailed = 15,
  kRarCreateFailed = 16,
  kRarCloseFailed = 17,
  kRarReadFailed = 18,
  kRarWriteFailed = 19,
  kRarSmallBuffer = 20,
  kRarUnknown = 21,
  kRarMissingPassword = 22,
};

enum RarOpenMode : std::uint32_t { kRarList = 0, kRarExtract = 1 };
enum RarOperation : std::int32_t { kRarSkip = 0, kRarTest = 1, kRarExtractFile = 2 };

// Flags of a header record.
enum RarHeaderFlags : std::uint32_t {
  kRarSplitBefore = 1,
  kRarSplitAfter = 2,
  kRarEncrypted = 4,
  kRarSolid = 0x10,
  kRarDirectory = 0x20,
};

// Flags that opening fills in.
enum RarArchiveFlags : std::uint32_t {
  kRarArchiveVolume = 1,
  kRarArchiveLocked = 4,
  kRarArchiveSolid = 8,
  kRarArchiveNewNames = 0x10,
  kRarArchiveRecovery = 0x40,
  kRarArchiveEncryptedHeaders = 0x80,
  kRarArchiveFirstVolume = 0x100,
};

// Message 1 hands over extracted bytes (address, length); an answer of -1 stops the extraction.
inline constexpr std::uint32_t kRarProcessData = 1;
using RarCallback = int(COMPANION_CALL*)(std::uint32_t message, std::intptr_t user_data,
                                         std::intptr_t p1, std::intptr_t p2);

#pragma pack(push, 1)

struct RAROpenArchiveData {
  const char* ArcName;
  std::uint32_t OpenMode;
  std::uint32_t OpenResult;
  char* CmtBuf;
  std::uint32_t CmtBufSize;
  std::uint32_t CmtSize;
  std::uint32_t CmtState;
};

struct RAROpenArchiveDataEx {
  const char* ArcName;
  const char16_t* ArcNameW;
  std::uint32_t OpenMode;
  std::uint32_t OpenResult;
  char* CmtBuf;
  std::uint32_t CmtBufSize;
  std::uint32_t CmtSize;
  std::uint32_t CmtState;
  std::uint32_t Flags;
  RarCallback Callback;
  std::intptr_t UserData;
  std::uint32_t Reserved[28];
};

struct RARHeaderData {
  char ArcName[260];
  char FileName[260];
  std::uint32_t Flags;
  std::uint32_t PackSize;
  std::uint32_t UnpSize;
  std::uint32_t HostOS;
  std::uint32_t FileCRC;
  std::uint32_t FileTime;
  std::uint32_t UnpVer;
  std::uint32_t Method;
  std::uint32_t FileAttr;
  char* CmtBuf;
  std::uint32_t CmtBufSize;
  std::uint32_t CmtSize;
  std::uint32_t CmtState;
};

struct RARHeaderDataEx {
  char ArcName[1024];
  char16_t ArcNameW[1024];
  char FileName[1024];
  char16_t FileNameW[1024];
  std::uint32_t Flags;
  std::uint32_t PackSize;
  std::uint32_t PackSizeHigh;
  std::uint32_t UnpSize;
  std::uint32_t UnpSizeHigh;
  std::uint32_t HostOS;
  std::uint32_t FileCRC;
  std::uint32_t FileTime;  // DOS form, local time
  std::uint32_t UnpVer;
  std::uint32_t Method;
  std::uint32_t FileAttr;
  char* CmtBuf;
  std::uint32_t CmtBufSize;
  std::uint32_t CmtSize;
  std::uint32_t CmtState;
  std::uint32_t DictSize;  // KiB
  std::uint32_t HashType;  // 0 none, 1 CRC32, 2 BLAKE2sp
  std::uint8_t Hash[32];
  std::uint32_t RedirType;
  char16_t* RedirName;
  std::uint32_t RedirNameSize;
  std::uint32_t DirTarget;
  std::uint32_t MtimeLow;  // 100 ns since 1601, UTC
  std::uint32_t MtimeHigh;
  std::uint32_t CtimeLow;
  std::uint32_t CtimeHigh;
  std::uint32_t AtimeLow;
  std::uint32_t AtimeHigh;
  std::uint32_t Reserved[988];
};

#pragma pack(pop)

// Result codes of the zip interface.
enum ZipResult : std::int32_t {
  kZipOk = 0,
  kZipBadStructure = 3,
  kZipNoMemory = 4,
  kZipInternal = 5,
  kZipAborted = 9,
  kZipTemporaryFile = 10,
  kZipReadFailed = 11,
  kZipNothingToDo = 12,
  kZipMissingZip = 13,
  kZipWriteFailed = 14,
  kZipCreateFailed = 15,
  kZipBadOptions = 16,
  kZipOpenFailed = 18,
};

// The option record; dates have the form "MM/DD/YY". Flags are 0 or 1 where nothing else is said.
struct ZpOptions {
  const char* Date;
  const char* RootDir;
  const char* TempDir;
  std::int32_t Temp;
  std::int32_t Suffix;
  std::int32_t Encrypt;
  std::int32_t System;
  std::int32_t Volume;
  std::int32_t Extra;
  std::int32_t NoDirEntries;
  std::int32_t ExcludeDate;
  std::int32_t IncludeDate;
  std::int32_t Verbose;
  std::int32_t Quiet;
  std::int32_t CRLF_LF;
  std::int32_t LF_CRLF;
  std::int32_t JunkDir;
  std::int32_t Grow;
  std::int32_t Force;
  std::int32_t Move;
  std::int32_t DeleteEntries;
  std::int32_t Update;
  std::int32_t Freshen;
  std::int32_t JunkSFX;
  std::int32_t LatestTime;
  std::int32_t Comment;
  std::int32_t Offsets;
  std::int32_t Privilege;
  std::int32_t Encryption;
  std::int32_t Recurse;  // 0, 1 or 2
  std::int32_t Repair;   // 0, 1 or 2
  char Level;            // '0' to '9'
};

// The caller's functions; each may be absent.
struct ZpFunctions {
  int(COMPANION_CALL* Print)(const char* text, std::uint32_t length);
  int(COMPANION_CALL* Comment)(char* buffer);  // of kZpCommentSize bytes
  int(COMPANION_CALL* Password)(char* buffer, int size, const char* prompt, const char* again);
  int(COMPANION_CALL* Service)(const char* name, std::uint32_t size);  // not 0: stop
};
inline constexpr std::size_t kZpCommentSize = 4096;

struct ZpCommand {
  std::int32_t Count;
  const char* ZipName;
  const char* const* Names;
};

#define COMPANION_SIZE(type, on32, on64) \
  static_assert(sizeof(type) == (sizeof(void*) == 4 ? (on32) : (on64)))
#define COMPANION_OFFSET(type, member, on32, on64) \
  static_assert(offsetof(type, member) == (sizeof(void*) == 4 ? (on32) : (on64)))
COMPANION_SIZE(RAROpenArchiveData, 28, 36);
COMPANION_SIZE(RAROpenArchiveDataEx, 156, 176);
COMPANION_OFFSET(RAROpenArchiveDataEx, OpenMode, 8, 16);
COMPANION_OFFSET(RAROpenArchiveDataEx, Flags, 32, 44);
COMPANION_OFFSET(RAROpenArchiveDataEx, Reserved, 44, 64);
COMPANION_SIZE(RARHeaderData, 572, 576);
COMPANION_SIZE(RARHeaderDataEx, 10236, 10244);
static_assert(offsetof(RARHeaderDataEx, FileNameW) == 4096);
static_assert(offsetof(RARHeaderDataEx, Flags) == 6144);
COMPANION_OFFSET(RARHeaderDataEx, DictSize, 6204, 6208);
COMPANION_OFFSET(RARHeaderDataEx, MtimeLow, 6260, 6268);
COMPANION_OFFSET(RARHeaderDataEx, Reserved, 6284, 6292);
COMPANION_SIZE(ZpOptions, 128, 144);
COMPANION_OFFSET(ZpOptions, Temp, 12, 24);
COMPANION_OFFSET(ZpOptions, Level, 124, 136);
COMPANION_SIZE(ZpFunctions, 16, 32);
COMPANION_SIZE(ZpCommand, 12, 24);
#undef COMPANION_SIZE
#undef COMPANION_OFFSET

using RarHandle = void*;

// The entry points that the program calls. Functions with a path take it as
// CompanionLibrary::NarrowPath gives it.
struct EntryPoints {
  RarHandle(COMPANION_CALL* RAROpenArchiveEx)(RAROpenArchiveDataEx* record);
  int(COMPANION_CALL* RARReadHeaderEx)(RarHandle handle, RARHeaderDataEx* header);
  int(COMPANION_CALL* RARProcessFileW)(RarHandle handle, int operation, const char16_t* folder,
                                       const char16_t* name);
  void(COMPANION_CALL* RARSetPassword)(RarHandle handle, const char* password);
  int(COMPANION_CALL* RARCloseArchive)(RarHandle handle);
  int(COMPANION_CALL* ZpInit)(ZpFunctions* functions);  // 0: failed
  int(COMPANION_CALL* ZpSetOptions)(ZpOptions* options);
  ZpOptions*(COMPANION_CALL* ZpGetOptions)();
  int(COMPANION_CALL* ZpArchive)(ZpCommand command);
  std::int32_t(COMPANION_CALL* Sha256_GetHashLength)();
  // 1 on success; else the reason is in the last system error.
  std::int32_t(COMPANION_CALL* Sha256_GetFileHash)(const char* path, std::uint8_t* digest);
  void(COMPANION_CALL* Sha256_GetMemoryHash)(const void* data, std::int32_t length,
                                             std::uint8_t* digest);
  // Not 0 if the file has integrity data and they are right; otherwise the last system error says
  // why.
  std::int32_t(COMPANION_CALL* Sha256_GetFileCrc)(const char* path);
  std::int32_t(COMPANION_CALL* Sha256_GetFileCrcEx)(const char* path);
  // 0 or an error code.
  std::int32_t(COMPANION_CALL* RegisterDll)(const char* path);
  std::int32_t(COMPANION_CALL* UnregisterDll)(const char* path);
};

// Calls visit(name, pointer) for every entry point of the table.
template <typename Visitor>
void ForEachEntryPoint(EntryPoints& table, Visitor visit) {
  visit("RAROpenArchiveEx", table.RAROpenArchiveEx);
  visit("RARReadHeaderEx", table.RARReadHeaderEx);
  visit("RARProcessFileW", table.RARProcessFileW);
  visit("RARSetPassword", table.RARSetPassword);
  visit("RARCloseArchive", table.RARCloseArchive);
  visit("ZpInit", table.ZpInit);
  visit("ZpSetOptions", table.ZpSetOptions);
  visit("ZpGetOptions", table.ZpGetOptions);
  visit("ZpArchive", table.ZpArchive);
  visit("Sha256_GetHashLength", table.Sha256_GetHashLength);
  visit("Sha256_GetFileHash", table.Sha256_GetFileHash);
  visit("Sha256_GetMemoryHash", table.Sha256_GetMemoryHash);
  visit("Sha256_GetFileCrc", table.Sha256_GetFileCrc);
  visit("Sha256_GetFileCrcEx", table.Sha256_GetFileCrcEx);
  visit("RegisterDll", table.RegisterDll);
  visit("UnregisterDll", table.UnregisterDll);
}

}  // namespace ports
