#pragma once

#include "companion/abi.h"

// Marks a function of the published interface. On Windows untmz.def names what is exported.
#ifdef _WIN32
#define COMPANION_EXPORT
#else
#define COMPANION_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

COMPANION_EXPORT companion::RarHandle COMPANION_CALL
RAROpenArchive(companion::RAROpenArchiveData* record);
COMPANION_EXPORT companion::RarHandle COMPANION_CALL
RAROpenArchiveEx(companion::RAROpenArchiveDataEx* record);
COMPANION_EXPORT int COMPANION_CALL RARReadHeader(companion::RarHandle handle,
                                                  companion::RARHeaderData* header);
COMPANION_EXPORT int COMPANION_CALL RARReadHeaderEx(companion::RarHandle handle,
                                                    companion::RARHeaderDataEx* header);
COMPANION_EXPORT int COMPANION_CALL RARProcessFile(companion::RarHandle handle, int operation,
                                                   const char* folder, const char* name);
COMPANION_EXPORT int COMPANION_CALL RARProcessFileW(companion::RarHandle handle, int operation,
                                                    const char16_t* folder, const char16_t* name);
COMPANION_EXPORT void COMPANION_CALL RARSetCallback(companion::RarHandle handle,
                                                    companion::RarCallback callback,
                                                    std::intptr_t user_data);
// Accepted and kept by nobody: no entry that needs a password can be read.
COMPANION_EXPORT void COMPANION_CALL RARSetPassword(companion::RarHandle handle,
                                                    const char* password);
COMPANION_EXPORT int COMPANION_CALL RARGetDllVersion();
COMPANION_EXPORT int COMPANION_CALL RARCloseArchive(companion::RarHandle handle);

COMPANION_EXPORT int COMPANION_CALL ZpInit(companion::ZpFunctions* functions);
COMPANION_EXPORT int COMPANION_CALL ZpSetOptions(companion::ZpOptions* options);
COMPANION_EXPORT companion::ZpOptions* COMPANION_CALL ZpGetOptions();
COMPANION_EXPORT int COMPANION_CALL ZpArchive(companion::ZpCommand command);

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
