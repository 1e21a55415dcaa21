#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine/digest.h"
#include "engine/run_messages.h"
#include "engine/server_list.h"
#include "tests/support/caught.h"

namespace tmw {
namespace {

using Words = std::vector<std::string>;

TEST(Digest, MinorNumbersCountEvenBelowAGreaterMajorOne) {
  const struct {
    const char* required;
    UpdaterVersionCheck result;
  } cases[] = {
      {"3.5", UpdaterVersionCheck::kGood},
      {"3.5.9.9", UpdaterVersionCheck::kGood},
      {"3.6", UpdaterVersionCheck::kUpdateNeeded},
      {"2.6", UpdaterVersionCheck::kUpdateNeeded},
      {"4.0", UpdaterVersionCheck::kTooOld},
      {"", UpdaterVersionCheck::kUnreadable},
      {"2.4", UpdaterVersionCheck::kGood},
      {"99999999999", UpdaterVersionCheck::kUnreadable},
  };
  for (const auto& c : cases)
    EXPECT_EQ(CheckForUpdaterVersion(c.required, 3, 5), c.result) << c.required;
}

TEST(Digest, ComponentLinesAreReadFromTheThirdLineOn) {
  const std::string fault = "Ошибка формата файла версии: ";
  const std::string size = fault + "ошибка размера файла в сроке Update.";
  const struct {
    const char* line;
    std::string reason;
    std::string result;  // of the components: name/size/hash
  } cases[] = {
      {"UPDATER:a.exe|100|abc", "", "a.exe/100/abc"},
      {"updater:a.exe| 7 |  abc  |more|fields", "", "a.exe/7/abc"},
      {"news:a|b", "", ""},
      {" updater:a.exe|1|x", "", ""},
      {"updater:", fault + "строка Update пустая.", ""},
      {"updater:a.exe|100", fault + "количество параметров в строке Update меньше ожидаемого.", ""},
      {"updater:a.exe|x|abc", size, ""},
      {"updater:a.exe||abc", size, ""},
      {"updater:a.exe|12k|abc", size, ""},
      {"updater:a.exe|-1|abc", size, ""},
      {"updater:a.exe|3000000000|abc", size, ""},
  };
  for (const auto& c : cases) {
    std::vector<WuUpdaterComponent> read;
    std::string reason;
    EXPECT_EQ(TryParseUpdaterDigestPart({"updater:", "updater:", c.line}, read, reason),
              c.reason.empty());
    EXPECT_EQ(reason, c.reason) << c.line;
    std::string result;
    for (const auto& r : read)
      result += r.Name + "/" + std::to_string(r.Size) + "/" + r.Hash;
    EXPECT_EQ(result, c.result) << c.line;
  }
}

TEST(Digest, FaultsAreNamed) {
  const std::string format = "Ошибка формата файла версии: ";
  const struct {
    std::string text;
    std::string reason;
    UpdaterVersionCheck updater = UpdaterVersionCheck::kGood;
  } cases[] = {
      {"3.6.0.2\r\n3.5", ""},
      {"3.6.0.2\r\n3.5\r\nupdater:", ""},
      {"3.6\r\n99.0\r\nupdater:", "", UpdaterVersionCheck::kTooOld},
      {"3.6.0.2\r\n3.6\r\nupdater:a|1|b", "", UpdaterVersionCheck::kUpdateNeeded},
      {"", "Файл с информацией о версии пуст."},
      {"3.6.0.2", "Ошибка в файле версии."},
      {"3.6.0.2\n1.0", "Ошибка в файле версии."},
      {"3.6.0.2\r\n",
       format + "невозможно определить минимальную необходимую версию программы "
                "обновления.",
       UpdaterVersionCheck::kUnreadable},
      {"3.6.0\r\n1.0", format + "невозможно определить версию загружаемого обновления."},
      {"3.6.0.2\r\n3.6\r\nupdater:", format + "строка Update пустая.",
       UpdaterVersionCheck::kUpdateNeeded},
  };
  for (const auto& c : cases) {
    Digest digest;
    std::string reason;
    EXPECT_EQ(TryParseDigest(c.text, 3, 5, digest, reason), c.reason.empty()) << c.text;
    EXPECT_EQ(reason, c.reason) << c.text;
    EXPECT_EQ(digest.Updater, c.updater) << c.text;
  }
  Digest digest;
  std::string reason;
  ASSERT_TRUE(TryParseDigest("3.6.0.2\r\n3.6\r\nx\r\nupdater:a|1|b", 3, 5, digest, reason));
  EXPECT_EQ(digest.Version, "3.6.0.2");
  EXPECT_EQ(digest.VersionNumbers[3], 2);
  ASSERT_EQ(digest.UpdaterComponents.size(), 1U);
  const auto error = tests::Caught([&] {
    static_cast<void>(
        TryParseDigest("3.6.0.2\r\n3.6\r\nupdater:../evil|1|b", 3, 5, digest, reason));
  });
  EXPECT_TRUE(error.Description.starts_with("Недопустимое имя")) << error.Description;
}

TEST(ServerList, TakesLinesWithoutASchemeAsPlainHttp) {
  const char* const text =
      "\r\n  a.ru/x  \r\nHTTPS://B.ru\r\n   \r\nftp://c.ru\r\nhttp://d.ru/\r\nwww.e.ru";
  EXPECT_EQ(ParseServerList(text, false), (Words{"http://a.ru/x", "HTTPS://B.ru", "ftp://c.ru",
                                                 "http://d.ru/", "http://www.e.ru"}));
  EXPECT_EQ(ParseServerList(text, true).size(), 4U);
  EXPECT_TRUE(ParseServerList("FTP://c.ru\r\nftp://d.ru", true).empty());
  for (const std::string& line :
       {std::string("<html>"), std::string("a.ru\tb"), std::string("HTTP:/x"),
        std::string("https//x"), std::string("ftp:x"), std::string(2001, 'a')})
    EXPECT_TRUE(ParseServerList(line, false).empty()) << line;
  EXPECT_EQ(ParseServerList(std::string(2000, 'a') + "\r\nftp.x\r\nhttps.x/http//", false).size(),
            3U);
  std::string server;
  std::string reason;
  EXPECT_TRUE(TryChooseServer(text, false, 0x1000000 + 7, server, reason));
  EXPECT_EQ(server, "ftp://c.ru") << "number 7 of 5";
  EXPECT_FALSE(TryChooseServer("", false, 0, server, reason));
  EXPECT_EQ(reason, "Файл со списком серверов для загрузки пуст.");
  EXPECT_FALSE(TryChooseServer(" \r\n\r\n", false, 0, server, reason));
  EXPECT_EQ(reason, "Не найдено ни одного сервера для загрузки обновления.");
}

TEST(FriendlySize, SwitchesUnitsAtEightHundred) {
  const struct {
    double bytes;
    const char* words;
    const char* letters;
  } cases[] = {
      {0, "0байт", "0"},
      {2047, "2047байт", "2047"},
      {2048, "2,0 килобайт", "2,0 К"},
      {819200, "800,0 килобайт", "800,0 К"},
      {819201, "0,8 мегабайт", "0,8 М"},
      {1'598'029, "1,5 мегабайт", "1,5 М"},
      {838860800, "800,0 мегабайт", "800,0 М"},
      {838860801, "0,8 гигабайт", "0,8 ГБ"},
      {1'127'428'916, "1,1 гигабайт", "1,1 ГБ"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetFriendlySizeString(c.bytes, false), c.words);
    EXPECT_EQ(GetFriendlySizeString(c.bytes, true), c.letters);
  }
}

}  // namespace
}  // namespace tmw
