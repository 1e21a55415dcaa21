#include "platform/windows/file_holders.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/windows/wide.h"

namespace {

std::vector<std::wstring> listed;  // what the manager knows
std::size_t capacity = 0;          // of the list in its first answer; later ones are right
int open_sessions = 0;
std::wstring asked;

DWORD WINAPI Start(DWORD* session, DWORD /*flags*/, WCHAR* /*key*/) {
  *session = 7;
  ++open_sessions;
  return ERROR_SUCCESS;
}

DWORD WINAPI AddFiles(DWORD /*session*/, UINT /*count*/, LPCWSTR* files, UINT /*programs*/,
                      RM_UNIQUE_PROCESS* /*ids*/, UINT /*services*/, LPCWSTR* /*names*/) {
  asked = files[0];
  return ERROR_SUCCESS;
}

DWORD WINAPI List(DWORD /*session*/, UINT* needed, UINT* count, RM_PROCESS_INFO* found,
                  DWORD* /*reasons*/) {
  if (*count < listed.size()) {
    *needed = static_cast<UINT>(std::exchange(capacity, listed.size()));
    return ERROR_MORE_DATA;
  }
  for (std::size_t i = 0; i < listed.size(); ++i)
    listed[i].copy(found[i].strAppName, listed[i].size());
  *count = static_cast<UINT>(listed.size());
  return ERROR_SUCCESS;
}

DWORD WINAPI End(DWORD /*session*/) {
  --open_sessions;
  return ERROR_SUCCESS;
}

TEST(FileHolders, ProgramsAreNamedOnceAndAMissingManagerNamesNobody) {
  const platform::RestartManager whole = {&Start, &AddFiles, &List, &End};
  using Names = std::vector<std::string>;
  for (const std::size_t first : {0U, 1U, 3U}) {
    listed = {L"Книга", L"Excel", L"Книга"};
    capacity = first;
    EXPECT_EQ(platform::HoldersOf("C:\\книга.xls", whole), (Names{"Книга", "Excel"})) << first;
    EXPECT_EQ(open_sessions, 0);
    EXPECT_EQ(asked, L"C:\\книга.xls");
  }
  EXPECT_EQ(platform::HoldersOf("C:\\x", platform::RestartManager()), Names{});
  EXPECT_EQ(platform::HoldersOf("C:\\x", platform::RestartManager::OfSystem()), Names{});
}

}  // namespace
