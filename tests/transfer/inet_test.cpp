#include "transfer/inet.h"

#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"

namespace tmw {
namespace {

using tests::Caught;
using tests::Peer;

// "/good" is a file of 5 bytes, "/cut" breaks off after 3 of 5, everything else is missing.
void Serve(Peer& peer, const std::string& head) {
  const std::string ok = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n";
  if (head.starts_with("GET /good")) {
    peer.Send(ok + "12345");
  } else if (head.starts_with("GET /cut")) {
    peer.Send(ok + "123");
  } else {
    peer.Send("HTTP/1.1 404 Not Found\r\nContent-Length: 4\r\n\r\npage");
  }
}

class Inet : public tests::DownloadTest {
 protected:
  std::string NotFound(const std::string& path) const {
    return "Ошибка загрузки файла \"" + server_.Url(path) + "\":\r\nОшибка HTTP 404: Not Found";
  }

  tests::ScriptedServer server_{Serve};
};

TEST(Urls, AreJoinedWithOneSlash) {
  const char* const cases[][3] = {{"", "", ""},        {"", "/t", "/t"},     {"x", "", "x/"},
                                  {"x/", "/y", "x/y"}, {"x//", "y", "x//y"}, {"x", "//y", "x//y"}};
  for (const auto& c : cases)
    EXPECT_EQ(JoinUrl(c[0], c[1]), c[2]);
}

TEST(Urls, AreClassifiedByTheirBeginning) {
  EXPECT_EQ(ClassifyUrl("HTTP://X"), InetProtocol::kHttp);
  EXPECT_EQ(ClassifyUrl("Https://x"), InetProtocol::kHttps);
  EXPECT_EQ(ClassifyUrl("FTP://x"), InetProtocol::kFtp);
  EXPECT_EQ(ClassifyUrl("WWW.x"), InetProtocol::kHttp);
  EXPECT_EQ(ClassifyUrl("file:///x"), InetProtocol::kUnknown);
  EXPECT_EQ(ClassifyUrl("http:/x"), InetProtocol::kUnknown);
}

TEST_F(Inet, TheSharedSessionFollowsTheSettings) {
  struct Case {
    std::int32_t type;
    const char* server;
    std::int32_t access_type;
    const char* proxy;
  };
  for (const Case& c : {Case{0, "p:1", 0, ""},
                        {1, "p:1", 1, ""},
                        {3, "p:1", 3, "p:1"},
                        {3, "", 1, ""},
                        {4, "", 4, ""}}) {
    UpdaterSettings settings;
    settings.ProxyType = c.type;
    settings.ProxyServer = c.server;
    const auto connection = MakeInetConnection(settings);
    EXPECT_EQ(connection->AccessType, c.access_type);
    EXPECT_EQ(connection->Proxy, c.proxy);
    EXPECT_EQ(connection->Agent, "Tamrin Web Updater/3.12");
    EXPECT_NE(connection->Handle(), nullptr);
  }
  EXPECT_EQ(GetInetConnection(), GetInetConnection());
}

TEST_F(Inet, ARaisedFailureNamesTheUrlTheStatusAndEveryProcedure) {
  DownloadFile(server_.Url("/good"), sandbox_.Path("f"));
  EXPECT_EQ(sandbox_.Read("f"), "12345");
  EXPECT_NE(server_.Heads().at(0).find("User-Agent: Tamrin Web Updater/3.12\r\n"),
            std::string::npos);
  const ProgramError error = Caught([&] { DownloadFile(server_.Url("/no"), sandbox_.Path("f")); });
  EXPECT_EQ(error.Number, 1001);
  EXPECT_EQ(error.Description, NotFound("/no"));
  std::string procedures;
  for (std::size_t at = 0; (at = error.Source.find("::", at)) != std::string::npos; ++at)
    procedures += error.Source.substr(at, error.Source.find(']', at) - at);
  EXPECT_EQ(procedures,
            "::miInet.DownloadFile::InetOpenedUrl.OpenUrl::InetOpenedUrl.CheckForHttpSuccess");
  EXPECT_EQ(sandbox_.Read("f"), "12345");
}

TEST_F(Inet, TheSecondUrlIsTriedOnlyWhenTheFirstFailsAndBothFailuresAreTold) {
  struct Case {
    const char* first;
    const char* second;
    bool is_done;
    std::string text;
    std::size_t requests;
  };
  const std::string cut =
      tests::Caught([&] { DownloadFile(server_.Url("/cut"), sandbox_.Path("f")); }).Description;
  const Case cases[] = {
      {"/good", "/no", true, "", 1},
      {"/no", "/good", true, "", 2},
      {"/cut", "/good", true, "", 2},
      {"/no", "", false, NotFound("/no"), 1},
      {"/no", "/nor", false, NotFound("/no") + "\r\n" + NotFound("/nor"), 2},
      {"/no", "/cut", false, NotFound("/no") + "\r\n" + cut, 2},
  };
  for (const Case& c : cases) {
    const std::size_t before = server_.Heads().size();
    std::string text = "old";
    const std::string second = *c.second == '\0' ? "" : server_.Url(c.second);
    EXPECT_EQ(TryDownloadFileFromTwoUrls(server_.Url(c.first), second, sandbox_.Path("f"), text),
              c.is_done);
    EXPECT_EQ(text, c.text);
    EXPECT_TRUE(!c.is_done || sandbox_.Read("f") == "12345") << c.first;
    EXPECT_EQ(server_.Heads().size() - before, c.requests);
  }
  EXPECT_EQ(sandbox_.Read("f"), "123");  // what came before the break stays
}

TEST_F(Inet, ALongerFileThanAllowedIsRefused) {
  std::string text;
  EXPECT_TRUE(TryDownloadFile(server_.Url("/good"), sandbox_.Path("f"), text, 5));
  EXPECT_FALSE(TryDownloadFile(server_.Url("/good"), sandbox_.Path("f"), text, 4));
  EXPECT_EQ(text, "Файл на сервере больше допустимого (4 байт).");
  EXPECT_EQ(Caught([&] { DownloadFile(server_.Url("/good"), sandbox_.Path("f"), 4); }).Description,
            text);
  const tests::ScriptedServer endless([](Peer& peer, const std::string&) {
    peer.Send("HTTP/1.1 200 OK\r\n\r\n");
    while (peer.Send(std::string(65536, 'x'))) {
    }
  });
  EXPECT_FALSE(TryDownloadFile(endless.Url("/"), sandbox_.Path("f"), text, 1 << 20));
  EXPECT_LE(sandbox_.Read("f").size(), 1U << 20);
}

TEST_F(Inet, ALocalFileThatCannotBeMadeIsRaisedNotTold) {
  std::string text;
  const ProgramError error = Caught(
      [&] { EXPECT_TRUE(TryDownloadFile(server_.Url("/good"), sandbox_.Path("no/f"), text)); });
  EXPECT_NE(error.Source.find("::miInet.TryDownloadFile]"), std::string::npos);
}

}  // namespace
}  // namespace tmw
