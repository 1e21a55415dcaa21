#include "transfer/inet.h"

#include "foundation/encodings.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/support/caught.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"

namespace tmw {
namespace {

using tests::Caught;

// "/good" is a file of 5 bytes, "/cut" breaks off after 3 of 5, everything else is missing.
void Serve(tests::Peer& peer, const std::string& head) {
  const bool is_cut = head.starts_with("GET /cut");
  const bool is_there = is_cut || head.starts_with("GET /good");
  const std::string there = "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 5\r\n\r\n123";
  peer.Send(is_cut ? there
            : is_there
                ? there + "45"
                : "HTTP/1.1 404 Not Found\r\nConnection: close\r\nContent-Length: 4\r\n\r\npage");
}

class Inet : public tests::DownloadTest {
 protected:
  std::string NotFound(const std::string& path) const {
    return "Ошибка загрузки файла \"" + server_.Url(path) + "\":\r\nОшибка HTTP 404: Not Found";
  }

  tests::ScriptedServer server_{Serve};
  const std::string file_ = sandbox_.Path("f");
};

TEST(Urls, AreJoinedWithOneSlashAndClassifiedByTheirBeginning) {
  const char* const cases[][3] = {{"", "", ""},        {"", "/t", "/t"},     {"x", "", "x/"},
                                  {"x/", "/y", "x/y"}, {"x//", "y", "x//y"}, {"x", "//y", "x//y"}};
  for (const auto& c : cases)
    EXPECT_EQ(JoinUrl(c[0], c[1]), c[2]);
  EXPECT_EQ(ClassifyUrl("HTTP://X"), InetProtocol::kHttp);
  EXPECT_EQ(ClassifyUrl("Https://x"), InetProtocol::kHttps);
  EXPECT_EQ(ClassifyUrl("FTP://x"), InetProtocol::kFtp);
  EXPECT_EQ(ClassifyUrl("WWW.x"), InetProtocol::kHttp);
  EXPECT_EQ(ClassifyUrl("file:///x"), InetProtocol::kUnknown);
}

TEST_F(Inet, TheSessionFollowsTheSettings) {
  const struct {
    std::int32_t type;
    const char* server;
    std::int32_t access_type;
    const char* proxy;
  } cases[] = {{0, "p:1", 0, ""}, {1, "p:1", 1, ""}, {3, "p:1", 3, "p:1"}, {3, "", 1, ""}};
  for (const auto& c : cases) {
    UpdaterSettings settings;
    settings.ProxyType = c.type;
    settings.ProxyServer = c.server;
    const auto connection = MakeInetConnection(settings);
    EXPECT_EQ(connection->AccessType, c.access_type);
    EXPECT_EQ(connection->Proxy, c.proxy);
    connection->CloseHandle();
    InetOpenedUrl url;
    EXPECT_THROW(url.OpenUrl(connection, server_.Url("/good"), 0), ProgramError);
  }
}

TEST_F(Inet, ARaisedFailureNamesTheUrlTheStatusAndEveryProcedure) {
  DownloadFile(server_.Url("/good"), file_);
  const std::string head = server_.Heads().at(0);
  EXPECT_NE(head.find("User-Agent: Tamrin Web Updater/3.12\r\n"), std::string::npos);
  const ProgramError error = Caught([&] { DownloadFile(server_.Url("/no"), file_); });
  EXPECT_EQ(error.Number, 1001);
  EXPECT_EQ(error.Description, NotFound("/no"));
  std::string procedures;
  for (std::size_t at = 0; (at = error.Source.find("::", at)) != std::string::npos; ++at)
    procedures += error.Source.substr(at, error.Source.find(']', at) - at);
  EXPECT_EQ(procedures,
            "::miInet.DownloadFile::InetOpenedUrl.OpenUrl::InetOpenedUrl.CheckForHttpSuccess");
  EXPECT_EQ(sandbox_.Read("f"), "12345");
}

TEST_F(Inet, NamesAreAskedForInPercentEncodedUtf8) {
  std::string text;
  EXPECT_FALSE(TryDownloadFile(server_.Url("/Ставки/№1.tmz"), file_, text));
  // The case of the hexadecimal digits is each library's own.
  const std::string head = tmw::LowerCase(server_.Heads().at(0));
  EXPECT_TRUE(head.starts_with("get /%d0%a1%d1%82%d0%b0%d0%b2%d0%ba%d0%b8/%e2%84%961.tmz http"))
      << head;
}

TEST_F(Inet, TheSecondUrlIsTriedOnlyWhenTheFirstFailsAndBothFailuresAreTold) {
  tests::ScriptedFrontEnd front_end;
  ports_->front_end = &front_end;
  const std::string cut = Caught([&] { DownloadFile(server_.Url("/cut"), file_); }).Description;
  EXPECT_GT(front_end.event_rounds, 40);  // while it waits, and in every pause
  const struct {
    const char* first;
    std::string second;
    bool is_done;
    std::string text;
    std::size_t requests;
  } cases[] = {{"/good", "/no", true, "", 1},
               {"/cut", "/good", true, "", 2},
               {"/no", "", false, NotFound("/no"), 1},
               {"/no", "/nor", false, NotFound("/no") + "\r\n" + NotFound("/nor"), 2},
               {"/no", "/cut", false, NotFound("/no") + "\r\n" + cut, 6}};
  for (const auto& c : cases) {
    const std::size_t before = server_.Heads().size();
    const std::string second = c.second.empty() ? "" : server_.Url(c.second);
    std::string text = "old";
    EXPECT_EQ(TryDownloadFileFromTwoUrls(server_.Url(c.first), second, file_, text), c.is_done);
    EXPECT_EQ(text, c.text);
    EXPECT_TRUE(!c.is_done || sandbox_.Read("f") == "12345") << c.first;
    EXPECT_EQ(server_.Heads().size() - before, c.requests);
  }
  EXPECT_EQ(sandbox_.Read("f"), "123");  // what came before the break stays
}

TEST_F(Inet, ALongerFileThanAllowedIsRefusedAndALocalFailureIsRaised) {
  const tests::ScriptedServer endless([](tests::Peer& peer, const std::string&) {
    for (peer.Send("HTTP/1.1 200 OK\r\n\r\n"); peer.Send(std::string(65536, 'x'));) {
    }
  });
  std::string text;
  EXPECT_TRUE(TryDownloadFile(server_.Url("/good"), file_, text, 5));
  EXPECT_FALSE(TryDownloadFile(endless.Url("/"), file_, text, 1000000));
  EXPECT_EQ(text, "Файл \"" + endless.Url("/") + "\" больше допустимого (1000000 байт).");
  EXPECT_LE(sandbox_.Read("f").size(), 1000000U);
  int left = 3;  // a cancel ends a steady download, and the second URL is not tried
  EXPECT_FALSE(TryDownloadFileFromTwoUrls(endless.Url("/"), server_.Url("/no"), file_, text,
                                          kNoLimit, [&left] { return --left > 0; }));
  EXPECT_TRUE(text.starts_with("Ошибка загрузки файла \"" + endless.Url("/"))) << text;
  EXPECT_THROW((void)TryDownloadFile(server_.Url("/good"), sandbox_.Path("no/f"), text),
               ProgramError);
}

}  // namespace
}  // namespace tmw
