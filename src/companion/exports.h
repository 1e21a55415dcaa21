#pragma once

#include "ports/companion_abi.h"

// Marks a function of the published interface. On Windows untmz.def names what is exported.
#ifdef _WIN32
#define COMPANION_EXPORT
#else
#define COMPANION_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

COMPANION_EXPORT ports::RarHandle COMPANION_CALL RAROpenArchive(ports::RAROpenArchiveData* record);
COMPANION_EXPORT ports::RarHandle COMPANION_CALL
RAROpenArchiveEx(ports::RAROpenArchiveDataEx* record);
COMPANION_EXPORT int COMPANION_CALL RARReadHeader(ports::RarHandle handle,
                                                  ports::RARHeaderData* header);
COMPANION_EXPORT int COMPANION_CALL RARReadHeaderEx(ports::RarHandle handle,
                                                    ports::RARHeaderDataEx* header);
COMPANION_EXPORT int COMPANION_CALL RARProcessFile(ports::RarHandle handle, int operation,
                                                   const char* folder, const char* name);
COMPANION_EXPORT int COMPANION_CALL RARProcessFileW(ports::RarHandle handle, int operation,
                                                    const char16_t* folder, const char16_t* name);
COMPANION_EXPORT void COMPANION_CALL RARSetCallback(ports::RarHandle handle,
                                                    ports::RarCallback callback,
                                                    std::intptr_t user_data);
// Accepted and kept by nobody: no entry that needs a password can be read.
COMPANION_EXPORT void COMPANION_CALL RARSetPassword(ports::RarHandle handle, const char* password);
COMPANION_EXPORT int COMPANION_CALL RARGetDllVersion();
COMPANION_EXPORT int COMPANION_CALL RARCloseArchive(ports::RarHandle handle);

COMPANION_EXPORT int COMPANION_CALL ZpInit(ports::ZpFunctions* functions);
COMPANION_EXPORT int COMPANION_CALL ZpSetOptions(ports::ZpOptions* options);
COMPANION_EXPORT ports::ZpOptions* COMPANION_CALL ZpGetOptions();
COMPANION_EXPORT int COMPANION_CALL ZpArchive(ports::ZpCommand command);

COMPANION_EXPORT std::int32_t COMPANION_CALL Sha256_GetHashLength();
COMPANION_EXPORT std::int32_t COMPANION_CALL Sha256_GetFileHash(const char* path,
                                                                std::uint8_t* digest);
COMPANION_EXPORT void COMPANION_CALL Sha256_GetMemoryHash(const void* data, std::int32_t length,
                                                          std::uint8_t* digest);
COMPANION_EXPORT std::int32_t COMPANION_CALL Sha256_GetFileCrc(const char* path);
COMPANION_EXPORT std::int32_t COMPANION_CALL Sha256_GetFileCrcEx(const char* path);

COMPANION_EXPORT std::int32_t COMPANION_CALL RegisterDll(const char* path);
COMPANION_EXPORT std::int32_t COMPANION_CALL UnregisterDll(const char* path);
}
