#include "foundation/path_guard.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/text.h"
#include "tests/foundation/bad_names.h"
#include "tests/support/caught.h"

namespace tmw {
namespace {

using namespace std::string_literals;
using tests::Cyrillic;
using tests::kSeparator;
using tests::Refused;

TEST(PathGuard, EveryBadNameIsRefusedForItsReason) {
  for (const Refused& refused : tests::kBadNames) {
    for (const std::string& name : refused.names) {
      const std::string message = CheckFileName(name).message;
      EXPECT_TRUE(message.starts_with("Недопустимое имя файла \"")) << name;
      EXPECT_TRUE(message.ends_with("\": "s + refused.reason)) << name << " -> " << message;
      if (refused.reason == kSeparator) continue;
      EXPECT_FALSE(CheckRelativeName("dir/" + name + "/x.dll").IsAccepted()) << name;
      if (name.empty()) continue;  // in a folder two separators in a row are one
      EXPECT_FALSE(CheckFolderUnderRoot("C:\\T\\" + name, "c:\\t").IsAccepted()) << name;
      EXPECT_FALSE(CheckFolderUnderRoot("/opt/t/" + name, "/opt/t/").IsAccepted()) << name;
    }
  }
}

TEST(PathGuard, OrdinaryNamesPass) {
  const std::string words =
      "a|TmWebUpdate.exe|Отчёт за май 2024.xlt|a.b.c|.hidden|..a|консоль|con1|com|com10.txt|COM0|"
      "nulls.dll|конец файла (1).txt|a b  c|{guid}-1.tlb|~a$#@!'%|файл №5; копия.xml|𝔘nicode|";
  const std::vector<std::string> good =
      Split(words + Cyrillic(127) + "|" + std::string(255, 'a'), "|");
  for (const std::string& name : good) {
    EXPECT_EQ(CheckFileName(name).message, "") << name;
    EXPECT_EQ(CheckRelativeName("Папка/" + name).message, "") << name;
    EXPECT_EQ(CheckFolderUnderRoot("C:\\Тамрин\\" + name, "c:/ТАМРИН/").message, "") << name;
  }
}

TEST(PathGuard, TheMessageNamesTheWholeNameAndThePart) {
  const auto raised = [](std::string_view name) {
    return tests::Caught([&] { RequireRelativeName(name); }).Description;
  };
  EXPECT_EQ(raised("a\tb"), "Недопустимое имя файла \"a\uFFFDb\": в нём есть управляющий символ.");
  EXPECT_EQ(
      raised("x/CON"),
      "Недопустимое имя файла \"x/CON\": часть \"CON\" — так в Windows называется устройство.");
  EXPECT_EQ(raised(Cyrillic(300)),
            "Недопустимое имя файла \"" + Cyrillic(100) + "...\": оно слишком длинное.");
  std::string long_name = "a";
  while (long_name.size() < kLongestPathBytes)
    long_name += "/a";
  for (const std::string& name : {long_name, "/a"s, "a/"s, "a//b"s, "a/b\\c"s, "C:/a"s})
    EXPECT_FALSE(CheckRelativeName(name).IsAccepted()) << name;
  EXPECT_THROW(RequireFileName("a/b"), ProgramError);
  EXPECT_THROW(RequireFolderUnderRoot("/b", "/a"), ProgramError);
}

TEST(PathGuard, AFolderIsAcceptedOnlyAtOrUnderItsRoot) {
  struct Case {
    const char* root;
    std::vector<std::string> accepted;
    std::vector<std::string> refused;
  };
  const Case cases[] = {
      {"C:\\Т",
       {"C:\\Т", "C:\\Т\\", "c:/т/Отчёты", "C:\\Т\\a/b\\\\c"},
       {"C:\\Т2", "C:\\", "C:\\Т\\..\\a", "C:\\Т\\a\\..", "D:\\Т\\a", "C:Т\\a", "Т\\a", "\\Т\\a"}},
      {"/opt/t/",
       {"/opt/t", "/opt/t/", "/opt/t\\a"},
       {"/opt/T/a", "//opt/t/../x", "/opt/t2", "/etc", "opt/t", ""}},
      {"\\\\Сервер\\Д", {"\\\\сервер\\д\\a"}, {"/Сервер/Д/a", "\\Сервер\\Д"}},
      {"C:\\", {"C:\\a"}, {"D:\\a", "\\a"}},
      {"", {}, {"", "a", "/a"}}};
  for (const Case& c : cases) {
    for (const std::string& folder : c.accepted)
      EXPECT_EQ(CheckFolderUnderRoot(folder, c.root).message, "") << folder;
    for (const std::string& folder : c.refused)
      EXPECT_FALSE(CheckFolderUnderRoot(folder, c.root).IsAccepted()) << folder << " " << c.root;
  }
  EXPECT_EQ(CheckFolderUnderRoot("D:\\x", "C:\\T").message,
            "Недопустимая папка \"D:\\x\": она лежит вне папки \"C:\\T\".");
}

}  // namespace
}  // namespace tmw
