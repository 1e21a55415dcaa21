#include "platform/linux/reg_file.h"

#include <gtest/gtest.h>

#include "foundation/encodings.h"
#include "platform/factories.h"
#include "ports/settings_store.h"
#include "tests/support/environment.h"
#include "tests/support/sandbox.h"

namespace platform {
namespace {

const std::string kHead4 = "REGEDIT4\n[HKEY_CURRENT_USER\\A]\n";
const std::string kHead5 = "Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\A]\n";

// The value "v" below A: a text as it stands, a number as "#n", another type as "?".
std::string Value(const std::string& bytes) {
  const RegFileResult result = ParseRegFile(bytes);
  if (result.error)
    return "line " + std::to_string(result.error->line) + ": " + result.error->reason;
  const RegValue* const value = result.file.Find("hkey_current_user\\a", "V");
  if (value == nullptr) return "none";
  if (const auto* const number = std::get_if<std::uint32_t>(value))
    return "#" + std::to_string(*number);
  const auto* const text = std::get_if<std::string>(value);
  return text == nullptr ? "?" : *text;
}

std::string Utf16(const std::string& text) {
  return "\xFF\xFE" + tmw::Utf16ToBytes(tmw::Utf8ToUtf16(text));
}

TEST(RegFile, ValuesAreReadInEveryEncodingAndForm) {
  const std::pair<std::string, const char*> cases[] = {
      {kHead4 + "\"v\"=\"\xCF\xF3\xF2\xFC\"", "Путь"},
      {kHead5 + "\"v\"=\"Путь\"", "Путь"},
      {"\xEF\xBB\xBF" + kHead4 + "\"v\"=\"Путь\"", "Путь"},
      {Utf16("Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\A]\r\n"
             "\"v\"=\"Путь\"\r\n\r\n"),
       "Путь"},
      {kHead5 + "; note\n  \"v\" = \"a;b\" ; note", "a;b"},
      {kHead5 + "\"v\"=dword:0000000A;x", "#10"},
      {kHead5 + "\"v\"=hex(4):01,02,00,00", "#513"},
      {kHead5 + "\"v\"=hex(1):41,00,42,00,\\\n  43,00,00,00", "ABC"},
      {kHead4 + "\"v\"=hex(2):25,\\ ; note\n\t41,25,00", "%A%"},
      {kHead5 + "\"v\"=hex:", "?"},
      {kHead5 + "\"v\"=hex(7):61,00,00,00,00,00", "?"},
      {kHead5 + "\"v\"=\"1\"\n\"V\"=\"2\"", "2"},
      {kHead5 + "\"v\"=\"1\"\n\"v\"=-", "none"},
      {kHead5 + "\"v\"=\"1\"\n[-HKEY_CURRENT_USER\\a]\n\"v\"=\"2\"", "none"},
      {"REGEDIT4\n[HKEY_CURRENT_USER\\A\\B]\n[-HKEY_CURRENT_USER\\A\\B]\n"
       "[HKEY_CURRENT_USER\\A]\n\"v\"=\"1\"\n[-HKEY_CURRENT_USER\\AB]",
       "1"},
      {"", "none"},
  };
  for (const auto& [bytes, expected] : cases)
    EXPECT_EQ(Value(bytes), expected) << bytes;
}

TEST(RegFile, AFaultIsNamedWithItsLine) {
  const std::pair<std::string, int> cases[] = {
      {"[HKEY_CURRENT_USER\\A]\n", 1},
      {"\n\nREGEDIT5\n", 3},
      {"REGEDIT4\n\"v\"=\"1\"\n", 2},
      {kHead5 + "\"v\"=\"open\n", 3},
      {kHead5 + "\"v\"=\"c:\\x\"\n", 3},
      {kHead5 + "\"v\"=\"1\" 2\n", 3},
      {kHead5 + "\n\"v\"\n", 4},
      {kHead5 + "v=1\n", 3},
      {kHead5 + "\"v\"=dword:123456789\n", 3},
      {kHead5 + "\"v\"=dword:-1\n", 3},
      {kHead5 + "\"v\"=hex:01,,02\n", 3},
      {kHead5 + "\"v\"=hex:01,\\\n  zz\n", 4},
      {kHead5 + "\"v\"=hex(:01\n", 3},
      {kHead5 + "\"v\"=qword:1\n", 3},
      {kHead5 + "[HKEY_CURRENT_USER\\B\n", 3},
      {kHead5 + "\"v\"=\"\xCF\"\n", 3},
      {std::string("\xFE\xFF\0W", 4), 1},
  };
  for (const auto& [bytes, line] : cases) {
    const auto error = ParseRegFile(bytes).error;
    ASSERT_TRUE(error) << bytes;
    EXPECT_EQ(error->line, line) << bytes;
  }
}

TEST(RegFile, ABrokenOrUnreadableFileIsAnErrorThatNamesIt) {
  const tests::Sandbox sandbox;
  const std::string broken = sandbox.Write("a.reg", "REGEDIT4\n\n[x");
  const tests::ScopedVariable machine("TAMRIN_MACHINE_REG", broken);
  const tests::ScopedVariable user("TAMRIN_USER_REG", sandbox.Path());
  const auto store = MakeSettingsStore();
  for (int round = 0; round < 2; ++round) {
    const auto number = store->ReadLong(ports::SettingsRoot::kMachine, "k", "v");
    EXPECT_FALSE(number);
    EXPECT_EQ(number.code, 0);
    EXPECT_EQ(store->FailureText(ports::SettingsRoot::kMachine),
              "Ошибка чтения файла настроек \"" + broken +
                  "\", строка 3:\r\nимя ключа не закрыто скобкой \"]\".");
    const auto text = store->ReadString(ports::SettingsRoot::kUser, "k", "v");
    EXPECT_FALSE(text);
    EXPECT_EQ(text.code, EISDIR);
    EXPECT_EQ(store->FailureText(ports::SettingsRoot::kUser),
              "Ошибка чтения файла настроек \"" + sandbox.Path() + "\":");
  }
}

TEST(RegFile, TheUsersFileLiesInTheFolderForConfigurations) {
  const tests::Sandbox sandbox;
  const std::string bytes = "REGEDIT4\n[HKEY_CURRENT_USER\\k]\n\"v\"=\"";
  sandbox.Write("config/tamrin/user.reg", bytes + "config\"\n");
  sandbox.Write(".config/tamrin/user.reg", bytes + "home\"\n");
  const tests::ScopedVariable chosen("TAMRIN_USER_REG", "");
  const tests::ScopedVariable home("HOME", sandbox.Path());
  for (const std::string& folder : {sandbox.Path("config"), std::string("config"), std::string()}) {
    const tests::ScopedVariable config("XDG_CONFIG_HOME", folder);
    const auto store = MakeSettingsStore();
    EXPECT_EQ(store->ReadString(ports::SettingsRoot::kUser, "k", "v").value,
              folder.starts_with('/') ? "config" : "home");
    EXPECT_EQ(store->PlaceOf(ports::SettingsRoot::kUser),
              "файл \"" +
                  sandbox.Path(folder.starts_with('/') ? "config/tamrin/user.reg"
                                                       : ".config/tamrin/user.reg") +
                  "\"");
  }
}

}  // namespace
}  // namespace platform
