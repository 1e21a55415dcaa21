#include <map>

#include "platform/linux/proxy_choice.h"
#include "services/processes.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

using tests::Connect;
using tests::Fetch;
using tests::ScopedVariable;

constexpr std::size_t kBigSize = 5 << 20;

// Varied enough that a byte in the wrong place shows.
std::string BigFile() {
  std::string text(kBigSize, '\0');
  std::uint32_t state = 1;
  for (char& byte : text) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24U);
  }
  return text;
}

// Makes a certificate that is its own authority and starts the servers. The ports are variables
// named after them.
constexpr const char* kStart = R"(
openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 \
  -subj "/CN=right" -addext "subjectAltName=IP:127.0.0.1" -keyout right.key -out right.pem
cat >nginx.conf <<END
pid nginx.pid; events {} http {
server { listen 127.0.0.1:$right ssl; ssl_certificate right.pem; ssl_certificate_key right.key; }
log_format proof '\$uri \$http_range \$status \$body_bytes_sent'; access_log access.log proof;
client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
root files; server { listen 127.0.0.1:$http; } }
END
timeout 120 nginx -p . -e error.log -c nginx.conf -g 'daemon off;' & echo $! >web.pid
printf 'Port %s\nListen 127.0.0.1\nLogFile "proxy.log"\n' $proxy >proxy.conf
timeout 120 tinyproxy -d -c proxy.conf >proxy.out & echo $! >proxy.pid
timeout 120 /usr/bin/python3 -m pyftpdlib -i 127.0.0.1 -p $ftp -d files 2>ftp.log & echo $! >ftp.pid
)";

// Real servers on free ports for all tests, in one folder; they end with the tests.
class RealServers : public tests::DownloadTest {
 protected:
  static void SetUpTestSuite() {
    root_ = new tests::Sandbox;
    root_->Write("files/small", "small file");
    root_->Write("files/big", BigFile());
    std::string variables;
    for (const char* const name : {"http", "right", "ftp", "proxy"}) {
      const std::string port = std::to_string(tests::UnusedPort());
      variables += std::string(name) + "=" + port + "\n";
      hosts_[name] = "127.0.0.1:" + port;
    }
    root_->Write("start.sh", variables + kStart);
    Run("sh start.sh >log 2>&1");
    Await(Connect(1), Http("/small"));
    Await(Connect(1), Ftp("/small"));
    Await(Connect(3, hosts_["proxy"]), Http("/small"));
  }

  static void TearDownTestSuite() {
    Run("kill $(cat *.pid)");
    delete root_;
  }

  static void Run(const std::string& script) {
    EXPECT_EQ(RunProcess("", "sh -c \"" + script + "\"", root_->Path(), true, 0), 0) << script;
  }

  static void Await(const std::shared_ptr<InetConnection>& connection, const std::string& url) {
    for (int i = 0; i < 200 && Fetch(connection, url) != "small file"; ++i)
      tests::Peer::Pause(50);
    EXPECT_EQ(Fetch(connection, url), "small file");
  }

  static std::string Http(const std::string& path) { return "http://" + hosts_["http"] + path; }
  static std::string Ftp(const std::string& path) { return "ftp://" + hosts_["ftp"] + path; }

  // Waits until a server has written those words into its log.
  static void AwaitLog(const std::string& log, const std::string& words) {
    for (int i = 0; i < 100 && root_->Read(log).find(words) == std::string::npos; ++i)
      tests::Peer::Pause(20);
    EXPECT_NE(root_->Read(log).find(words), std::string::npos) << words;
  }

  static inline tests::Sandbox* root_ = nullptr;
  static inline std::map<std::string, std::string> hosts_;
};

TEST_F(RealServers, ADownloadContinuesWithTheRestOnlyAndMissingFilesAreTold) {
  const std::string big = BigFile();
  const std::string rest = std::to_string(kBigSize - 3'000'000);
  for (const std::string& url : {Http("/big"), Ftp("/big")}) {
    for (const std::size_t kept : {std::size_t{0}, std::size_t{3'000'000}, kBigSize}) {
      sandbox_.Write("big.part", big.substr(0, kept));
      tests::Listener listener;
      ASSERT_EQ(tests::Download(listener, url, sandbox_.Path("big")), "done");
      EXPECT_EQ(static_cast<std::size_t>(listener.skipped), kept);
      EXPECT_TRUE(sandbox_.Read("big") == big);
    }
  }
  AwaitLog("access.log", "/big bytes=3000000- 206 " + rest + "\n");
  AwaitLog("ftp.log", "completed=1 bytes=" + rest);
  sandbox_.Write("big.part", big + "more");
  tests::Listener listener;
  EXPECT_EQ(tests::Download(listener, Ftp("/big"), sandbox_.Path("big")),
            "Ошибка загрузки файла \"" + Ftp("/big") +
                "\":\r\nСервер предлагает файл короче уже загруженной части. Загруженная часть "
                "сохранена.");
  EXPECT_TRUE(sandbox_.Read("big.part") == big + "more");
  EXPECT_EQ(Fetch(Connect(1), Ftp("/no")), "Ошибка загрузки файла \"" + Ftp("/no") +
                                               "\":\r\nСервер отказал в выполнении запроса.\r\n");
}

TEST_F(RealServers, WhatIsWrongWithAConnectionIsSaidInWords) {
  const std::string authority = root_->Path("right.pem");
  const std::string unused = "127.0.0.1:" + std::to_string(tests::UnusedPort());
  const std::string right = "https://" + hosts_["right"];
  const struct {
    std::string url;
    std::string trusted;  // the file of trusted certificates
    std::string outcome;
  } cases[] = {
      {right + "/small", authority, "small file"},
      {right + "/small", "", "small file"},  // empty is unset: the next variable counts
      {"https://" + hosts_["http"] + "/small", authority, "Ошибка защищенного соединения (SSL)."},
      {Http("/no"), "", "Ошибка HTTP 404: Not Found"},
      {"http://" + unused + "/", "", "Не удается установить соединение с сервером."},
      {"http://no.such.host.invalid/", "", "Не удается определить адрес сервера по его имени."},
      {"http://a:port/", "", "Неправильный адрес (URL)."},
      {"http:/" + hosts_["http"] + "/small", "",
       "Протокол, указанный в адресе (URL), не поддерживается."},
      {"file:///etc/passwd", "", "Протокол, указанный в адресе (URL), не поддерживается."},
  };
  const ScopedVariable next("SSL_CERT_FILE", authority);
  for (const auto& c : cases) {
    const ScopedVariable trusted("CURL_CA_BUNDLE", c.trusted);
    const std::string line_end = c.outcome.ends_with('.') ? "\r\n" : "";
    EXPECT_TRUE(Fetch(Connect(1), c.url).ends_with(c.outcome + line_end))
        << c.url << ": " << Fetch(Connect(1), c.url) << "instead of " << c.outcome;
  }
}

TEST_F(RealServers, TheProxyOfTheSettingsIsUsed) {
  const std::string url = Http("/small?");
  const ScopedVariable trusted("CURL_CA_BUNDLE", root_->Path("right.pem"));
  EXPECT_EQ(Fetch(Connect(3, hosts_["proxy"]), "https://" + hosts_["right"] + "/small"),
            "small file");
  AwaitLog("proxy.log", "CONNECT " + hosts_["right"]);
  const ScopedVariable variable("http_proxy", "http://" + hosts_["proxy"]);
  EXPECT_EQ(Fetch(Connect(0), url + "system"), "small file");
  AwaitLog("proxy.log", "?system");
  const ScopedVariable broken("http_proxy",
                              "http://127.0.0.1:" + std::to_string(tests::UnusedPort()));
  EXPECT_EQ(Fetch(Connect(1), url), "small file");
  EXPECT_NE(Fetch(Connect(0), url), "small file");
  EXPECT_NE(Fetch(Connect(4), url), "small file");
}

TEST(ProxyLists, AreReadAsTheSettingsWriteThem) {
  const char* const cases[][5] = {
      // proxies, bypassed hosts, scheme, host, what is used
      {"p:3128", "", "ftp", "h.ru", "http://p:3128"},
      {"P", "", "http", "h.ru", "http://P:80"},
      {"HTTP=User:Pass@p", "", "http", "h.ru", "http://User:Pass@p:80"},
      {"http://[::1]/", "", "http", "h.ru", "http://[::1]:80"},
      {"http=a:1;https=b:2 ftp=c", "", "https", "h.ru", "http://b:2"},
      {"http=a:1;https=b:2 ftp=c", "", "ftp", "h.ru", "http://c:80"},
      {"http=a:1", "", "https", "h.ru", ""},
      {"http=a:1;d:4", "", "https", "h.ru", "http://d:4"},
      {"http=a:1;socks=s:9", "", "ftp", "h.ru", "socks4a://s:9"},
      {"p:1", "*.local;H.*", "http", "h.ru", ""},
      {"p:1", "<local>", "http", "h.ru", "http://p:1"},
      {"p:1", "<local>", "http", "server", ""},
      {"p:1", "10.*; https://x.ru", "http", "x.ru", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(platform::ChooseProxy(c[0], c[1], c[2], c[3]), c[4]) << c[0];
}

}  // namespace
}  // namespace tmw
