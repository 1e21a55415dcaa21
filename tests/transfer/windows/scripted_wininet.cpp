#include "tests/transfer/windows/scripted_wininet.h"

#include <algorithm>
#include <cstring>

#include "platform/windows/windows_headers.h"
// The system's headers come first: this one builds on them.
#include <wininet.h>

// A library with WinINet's entry points (their names stand in the .def file) that serves one body
// from memory, as its script says: the system's own cannot be made to fail at a given place, and
// that of Wine cannot seek at all.
namespace {

tests::InternetScript* script = nullptr;
std::size_t position = 0;
bool is_behind_seek = false;
char session = 0;
char request = 0;

BOOL Fail(int code) {
  SetLastError(static_cast<DWORD>(code));
  return FALSE;
}

}  // namespace

extern "C" {

void SetScript(tests::InternetScript* new_script) {
  script = new_script;
}

HINTERNET WINAPI OpenSession(LPCSTR, DWORD, LPCSTR, LPCSTR, DWORD) {
  return &session;
}

BOOL WINAPI Close(HINTERNET) {
  return TRUE;
}

BOOL WINAPI SetOption(HINTERNET, DWORD option, LPVOID, DWORD) {
  script->options.push_back(option);
  return TRUE;
}

HINTERNET WINAPI OpenUrl(HINTERNET, LPCSTR, LPCSTR, DWORD, DWORD flags, DWORD_PTR) {
  Sleep(static_cast<DWORD>(script->silence_in_opening));
  script->log.emplace_back((flags & INTERNET_FLAG_RELOAD) != 0 ? "open anew" : "open");
  script->flags = flags;
  position = 0;
  is_behind_seek = false;
  return &request;
}

BOOL WINAPI Query(HINTERNET, DWORD what, LPVOID buffer, LPDWORD size, LPDWORD) {
  if (what == (HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER)) {
    const DWORD status = HTTP_STATUS_OK;
    std::memcpy(buffer, &status, sizeof(status));
    return TRUE;
  }
  if (what != HTTP_QUERY_CONTENT_LENGTH) return Fail(ERROR_HTTP_HEADER_NOT_FOUND);
  const std::string length = std::to_string(script->body.size());
  std::memcpy(buffer, length.c_str(), length.size() + 1);
  *size = static_cast<DWORD>(length.size());
  return TRUE;
}

DWORD WINAPI Seek(HINTERNET, LONG asked, PVOID, DWORD, DWORD_PTR) {
  script->log.emplace_back("seek");
  if (script->seek_error != 0) {
    Fail(script->seek_error);
    return INVALID_SET_FILE_POINTER;
  }
  position = static_cast<std::size_t>(asked);
  is_behind_seek = true;
  return static_cast<DWORD>(asked + script->seek_shift);
}

// Without pieces as at the end of a body: a read says what is there.
BOOL WINAPI QueryAvailable(HINTERNET, LPDWORD count, DWORD, DWORD_PTR) {
  *count = static_cast<DWORD>(script->piece);
  return TRUE;
}

BOOL WINAPI Read(HINTERNET, LPVOID buffer, DWORD length, LPDWORD count) {
  script->log.emplace_back("read");
  Sleep(static_cast<DWORD>(script->silence_in_reading));
  *count = 0;
  if (is_behind_seek && script->error_behind_seek != 0) return Fail(script->error_behind_seek);
  if (is_behind_seek && script->is_empty_behind_seek) return TRUE;
  const std::string part = script->body.substr(std::min(position, script->body.size()), length);
  std::memcpy(buffer, part.data(), part.size());
  position += part.size();
  *count = static_cast<DWORD>(part.size());
  return TRUE;
}
}
