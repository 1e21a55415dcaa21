#include "foundation/path_guard.h"

#include <gtest/gtest.h>

#include "foundation/program_error.h"

namespace tmw {
namespace {

using namespace std::string_literals;

// n times the letter, which has two bytes.
std::string Cyrillic(int n) {
  std::string text;
  for (int i = 0; i < n; ++i)
    text += "ж";
  return text;
}

struct BadName {
  std::string name;
  const char* reason;
};

constexpr const char* kEmpty = "имя пустое.";
constexpr const char* kFolderSign = "так обозначается папка, а не файл в ней.";
constexpr const char* kSeparator = "в нём есть разделитель папок.";
constexpr const char* kColon = "в нём есть двоеточие.";
constexpr const char* kReserved = "в нём есть один из символов < > \" | ? *.";
constexpr const char* kControl = "в нём есть управляющий символ.";
constexpr const char* kInvisible = "в нём есть невидимый символ.";
constexpr const char* kMalformed = "это не текст в кодировке UTF-8.";
constexpr const char* kDevice = "так в Windows называется устройство.";
constexpr const char* kStartsBlank = "оно начинается с пробела.";
constexpr const char* kEndsBlank = "оно оканчивается пробелом.";
constexpr const char* kEndsDot = "оно оканчивается точкой.";
constexpr const char* kTooLong = "оно слишком длинное.";

const BadName kBadNames[] = {
    {"", kEmpty},
    {".", kFolderSign},
    {"..", kFolderSign},
    {"...", kEndsDot},
    {"/", kSeparator},
    {"\\", kSeparator},
    {"..\\a.dll", kSeparator},
    {"../a.dll", kSeparator},
    {"a/b.dll", kSeparator},
    {"a\\b.dll", kSeparator},
    {"/etc/passwd", kSeparator},
    {"\\\\server\\share\\a", kSeparator},
    {"\\\\?\\C:\\a", kSeparator},
    {"C:", kColon},
    {"C:a.dll", kColon},
    {"C:\\a.dll", kColon},
    {"a.txt:stream", kColon},
    {"a.txt::$DATA", kColon},
    {"CON", kDevice},
    {"con", kDevice},
    {"Prn.txt", kDevice},
    {"AUX.tar.gz", kDevice},
    {"nul", kDevice},
    {"NUL.dll", kDevice},
    {"NUL .dll", kDevice},
    {"COM1", kDevice},
    {"com9.log", kDevice},
    {"COM\u00B9", kDevice},
    {"com\u00B2.txt", kDevice},
    {"LPT1", kDevice},
    {"lpt9", kDevice},
    {"LPT\u00B3.prn", kDevice},
    {"CONIN$", kDevice},
    {"conout$.txt", kDevice},
    {"CLOCK$", kDevice},
    {"a.", kEndsDot},
    {"a.dll.", kEndsDot},
    {"a ", kEndsBlank},
    {"a.dll ", kEndsBlank},
    {"a. ", kEndsBlank},
    {"a\u00A0", kEndsBlank},
    {" ", kStartsBlank},
    {" a", kStartsBlank},
    {".. ", kEndsBlank},
    {"a\0.dll"s, kControl},
    {"\0"s, kControl},
    {"a\x01", kControl},
    {"a\tb", kControl},
    {"a\r\nb", kControl},
    {"a\x1F", kControl},
    {"a\x7F", kControl},
    {"a\u0085b", kControl},
    {"a\u202Egpj.exe", kInvisible},
    {"a\u200B.dll", kInvisible},
    {"\uFEFFa.dll", kInvisible},
    {"a<b", kReserved},
    {"a>b", kReserved},
    {"a\"b", kReserved},
    {"a|b", kReserved},
    {"a?b", kReserved},
    {"*.dll", kReserved},
    {"a\xFF", kMalformed},
    {"\xC0\xAE\xC0\xAE", kMalformed},  // overlong dots
    {"\xC0\xAF", kMalformed},          // an overlong slash
    {"\xED\xA0\x80", kMalformed},      // a surrogate
    {"\xD0", kMalformed},
    {std::string(256, 'a'), kTooLong},
    {Cyrillic(128), kTooLong},
};

TEST(PathGuard, EveryBadNameIsRefusedForItsReason) {
  for (const BadName& bad : kBadNames) {
    const GuardVerdict verdict = CheckFileName(bad.name);
    EXPECT_TRUE(verdict.message.starts_with("Недопустимое имя файла \"")) << bad.name;
    EXPECT_TRUE(verdict.message.ends_with("\": "s + bad.reason))
        << bad.name << " -> " << verdict.message;
  }
}

TEST(PathGuard, ABadPartSpoilsAWholeNameAndAWholeFolder) {
  for (const BadName& bad : kBadNames) {
    if (bad.reason == kSeparator) continue;
    EXPECT_FALSE(CheckRelativeName("dir/" + bad.name + "/x.dll").IsAccepted()) << bad.name;
    if (bad.name.empty()) continue;  // two separators in a row mean one in a folder
    EXPECT_FALSE(CheckFolderUnderRoot("C:\\Tamrin\\" + bad.name, "c:\\tamrin").IsAccepted())
        << bad.name;
    EXPECT_FALSE(CheckFolderUnderRoot("/opt/tamrin/" + bad.name, "/opt/tamrin/").IsAccepted())
        << bad.name;
  }
}

TEST(PathGuard, OrdinaryNamesPass) {
  const std::string good[] = {
      "a",
      "TmWebUpdate.exe",
      "Отчёт за май 2024.xlt",
      "a.b.c",
      ".hidden",
      "..a",
      "консоль",
      "con1",
      "com",
      "com10.txt",
      "COM0",
      "nulls.dll",
      "конец файла (1).txt",
      "a b  c",
      "{guid}-1.tlb",
      "~a$#@!'%",
      "файл №5; копия.xml",
      "𝔘nicode",
      Cyrillic(127),
      std::string(255, 'a'),
  };
  for (const std::string& name : good) {
    EXPECT_EQ(CheckFileName(name).message, "") << name;
    EXPECT_EQ(CheckRelativeName("Папка/" + name).message, "") << name;
    EXPECT_EQ(CheckFolderUnderRoot("C:\\Тамрин\\" + name, "c:/ТАМРИН/").message, "") << name;
  }
}

TEST(PathGuard, TheMessageNamesTheWholeNameAndThePart) {
  EXPECT_EQ(CheckFileName("a\tb").message,
            "Недопустимое имя файла \"a\uFFFDb\": в нём есть управляющий символ.");
  EXPECT_EQ(CheckRelativeName("x/../y").message,
            "Недопустимое имя файла \"x/../y\": часть \"..\" — так обозначается папка, а не файл в "
            "ней.");
  EXPECT_EQ(CheckFileName(Cyrillic(300)).message,
            "Недопустимое имя файла \"" + Cyrillic(100) + "...\": оно слишком длинное.");
  std::string long_name = "a";
  while (long_name.size() < kLongestPathBytes)
    long_name += "/a";
  EXPECT_FALSE(CheckRelativeName(long_name).IsAccepted());
  for (const char* name : {"/a", "a/", "a//b", "a/b\\c", "C:/a"})
    EXPECT_FALSE(CheckRelativeName(name).IsAccepted()) << name;
}

TEST(PathGuard, AFolderIsAcceptedOnlyAtOrUnderItsRoot) {
  struct Case {
    const char* folder;
    const char* root;
    bool accepted;
  };
  const Case cases[] = {
      {"C:\\Tamrin", "C:\\Tamrin\\", true},
      {"C:\\Tamrin\\", "C:\\Tamrin", true},
      {"c:/ТАМРИН/Отчёты", "C:\\тамрин", true},
      {"C:\\Tamrin\\a/b\\\\c", "C:\\Tamrin\\", true},
      {"C:\\a", "C:\\", true},
      {"\\\\Сервер\\Диск\\T\\a", "\\\\сервер\\диск\\t", true},
      {"/opt/tamrin", "/opt/tamrin/", true},
      {"/opt/tamrin\\a", "/opt/tamrin", true},
      {"C:\\Tamrin2", "C:\\Tamrin", false},
      {"C:\\", "C:\\Tamrin", false},
      {"C:\\Tamrin\\..\\Windows", "C:\\Tamrin", false},
      {"C:\\Tamrin\\a\\..", "C:\\Tamrin", false},
      {"D:\\Tamrin\\a", "C:\\Tamrin", false},
      {"C:Tamrin\\a", "C:\\Tamrin", false},
      {"Tamrin\\a", "C:\\Tamrin", false},
      {"\\Tamrin\\a", "C:\\Tamrin", false},
      {"/Tamrin/a", "\\\\Tamrin", false},
      {"/opt/Tamrin/a", "/opt/tamrin", false},
      {"//opt/tamrin/../x", "/opt/tamrin", false},
      {"/etc", "/opt/tamrin", false},
      {"", "/opt/tamrin", false},
      {"", "", false},
      {"a", "", false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(CheckFolderUnderRoot(c.folder, c.root).IsAccepted(), c.accepted)
        << c.folder << " | " << c.root;
  EXPECT_EQ(CheckFolderUnderRoot("D:\\x", "C:\\T").message,
            "Недопустимая папка \"D:\\x\": она лежит вне папки \"C:\\T\".");
}

TEST(PathGuard, TheRaisingFormsRaiseTheSameWords) {
  EXPECT_NO_THROW(RequireFileName("a.dll"));
  EXPECT_NO_THROW(RequireRelativeName("b/a.dll"));
  EXPECT_NO_THROW(RequireFolderUnderRoot("/a/b", "/a"));
  EXPECT_THROW(RequireRelativeName("b//a.dll"), ProgramError);
  EXPECT_THROW(RequireFolderUnderRoot("/b", "/a"), ProgramError);
  try {
    RequireFileName("nul");
    FAIL() << "nothing was raised";
  } catch (const ProgramError& error) {
    EXPECT_EQ(error.Description,
              "Недопустимое имя файла \"nul\": так в Windows называется устройство.");
  }
}

}  // namespace
}  // namespace tmw
