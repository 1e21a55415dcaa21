#pragma once

#include "ports/companion_abi.h"

// The published interface; untmz.def and untmz.map name what is exported.
extern "C" {

ports::RarHandle COMPANION_CALL RAROpenArchive(ports::RAROpenArchiveData* record);
ports::RarHandle COMPANION_CALL RAROpenArchiveEx(ports::RAROpenArchiveDataEx* record);
int COMPANION_CALL RARReadHeader(ports::RarHandle handle, ports::RARHeaderData* header);
int COMPANION_CALL RARReadHeaderEx(ports::RarHandle handle, ports::RARHeaderDataEx* header);
int COMPANION_CALL RARProcessFile(ports::RarHandle handle, int operation, const char* folder,
                                  const char* name);
int COMPANION_CALL RARProcessFileW(ports::RarHandle handle, int operation, const char16_t* folder,
                                   const char16_t* name);
void COMPANION_CALL RARSetCallback(ports::RarHandle handle, ports::RarCallback callback,
                                   std::intptr_t user_data);
// Accepted but ignored: no entry that needs a password can be read.
void COMPANION_CALL RARSetPassword(ports::RarHandle handle, const char* password);
int COMPANION_CALL RARGetDllVersion();
int COMPANION_CALL RARCloseArchive(ports::RarHandle handle);

int COMPANION_CALL ZpInit(ports::ZpFunctions* functions);
int COMPANION_CALL ZpSetOptions(ports::ZpOptions* options);
ports::ZpOptions* COMPANION_CALL ZpGetOptions();
int COMPANION_CALL ZpArchive(ports::ZpCommand command);

std::int32_t COMPANION_CALL Sha256_GetHashLength();
std::int32_t COMPANION_CALL Sha256_GetFileHash(const char* path, std::uint8_t* digest);
void COMPANION_CALL Sha256_GetMemoryHash(const void* data, std::int32_t length,
                                         std::uint8_t* digest);
std::int32_t COMPANION_CALL Sha256_GetFileCrc(const char* path);
std::int32_t COMPANION_CALL Sha256_GetFileCrcEx(const char* path);

std::int32_t COMPANION_CALL RegisterDll(const char* path);
std::int32_t COMPANION_CALL UnregisterDll(const char* path);
}
