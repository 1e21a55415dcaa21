#include "ports/settings_store.h"

#include <gtest/gtest.h>

#include "foundation/encodings.h"
#include "platform/factories.h"
#include "services/processes.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

namespace platform {
namespace {

using enum ports::SettingsRoot;

// One file: on Linux it is the store, on Windows the system's own editor brings it into the
// registry. The machine's values go to the place of 32-bit programs.
constexpr const char* kFile =
    "Windows Registry Editor Version 5.00\r\n\r\n"
    "[-HKEY_CURRENT_USER\\Software\\TmWebUpdateTest]\r\n"
    "[HKEY_CURRENT_USER\\Software\\TmWebUpdateTest\\Раздел]\r\n"
    "@=\"default\"\r\n"
    "\"Text\"=\"Ёлка \\\"1\\\" c:\\\\x\"\r\n"
    "\"Empty\"=\"\"\r\n"
    "\"Expand\"=hex(2):25,00,41,00,\\\r\n  25,00,00,00\r\n"
    "\"Long\"=dword:ffffffff\r\n"
    "\"Binary\"=hex:01,02,03,04\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\TmWebUpdateTest]\r\n"
    "\"Text\"=\"machine\"\r\n";
constexpr const char* kCleanUp =
    "REGEDIT4\r\n\r\n[-HKEY_CURRENT_USER\\Software\\TmWebUpdateTest]\r\n"
    "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\TmWebUpdateTest]\r\n";

void Import(const std::string& file) {
  if (!tests::kOnWindows) return;
  ASSERT_EQ(tmw::RunProcess("", "regedit /S \"" + file + "\"", "", true, 0), 0);
}

TEST(SettingsStore, ReadsTextsAndDoubleWordsOfBothRoots) {
  const tests::Sandbox sandbox;
  const std::string file =
      sandbox.Write("all.reg", "\xFF\xFE" + tmw::Utf16ToBytes(tmw::Utf8ToUtf16(kFile)));
  const tests::ScopedVariable machine("TAMRIN_MACHINE_REG", file);
  const tests::ScopedVariable user("TAMRIN_USER_REG", file);
  Import(file);
  const auto store = MakeSettingsStore();
  const std::string key = "Software\\TmWebUpdateTest\\Раздел";
  EXPECT_EQ(store->ReadString(kUser, "SOFTWARE\\tmwebupdatetest\\РАЗДЕЛ", "TEXT").value,
            "Ёлка \"1\" c:\\x");
  EXPECT_EQ(store->ReadString(kUser, key, "").value, "default");
  EXPECT_EQ(store->ReadString(kUser, key, "Empty").value, "");
  const tests::ScopedVariable variable("A", "Әлия");
  EXPECT_EQ(store->ReadString(kUser, key, "Expand").value, tests::kOnWindows ? "Әлия" : "%A%");
  EXPECT_EQ(store->ReadLong(kUser, key, "Long").value, -1);
  EXPECT_EQ(store->ReadString(kMachine, "SOFTWARE\\TmWebUpdateTest", "Text").value, "machine");

  for (const auto& missing :
       {store->ReadString(kUser, key, "Long"), store->ReadString(kUser, key, "Binary"),
        store->ReadString(kUser, key, "Other"), store->ReadString(kUser, key + "\\x", "Text"),
        store->ReadString(kMachine, key, "Text")}) {
    EXPECT_FALSE(missing.value);
    EXPECT_TRUE(missing);
  }
  EXPECT_TRUE(store->Exists(kUser, key, "Binary"));
  EXPECT_FALSE(store->Exists(kUser, key, "Missing"));
  EXPECT_FALSE(store->ReadLong(kUser, key, "Text").value);
  EXPECT_FALSE(store->ReadLong(kUser, key, "Binary").value);
  Import(sandbox.Write("clean up.reg", kCleanUp));
}

}  // namespace
}  // namespace platform
