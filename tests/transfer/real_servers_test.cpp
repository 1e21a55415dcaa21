#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "platform/linux/proxy_choice.h"
#include "startup/services/processes.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

using tests::Connect;
using tests::Fetch;
using tests::ScopedVariable;

constexpr std::size_t kBigSize = 5 << 20;

// Unrepeating enough that a byte in the wrong place is seen.
std::string BigFile() {
  std::string text(kBigSize, '\0');
  std::uint32_t state = 1;
  for (char& byte : text) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 24U);
  }
  return text;
}

// An authority, and certificates for the right name, another name and a time that is over.
constexpr const char* kMakeCertificates = R"(set -e
cd "$1"
new="-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes"
openssl req -x509 $new -subj "/CN=Test authority" -days 2 -keyout ca.key -out ca.pem
for name in right:IP:127.0.0.1:2 wrong:DNS:other.test:2 old:IP:127.0.0.1:-1; do
  file=${name%%:*}; days=${name##*:}; names=${name#*:}; names=${names%:*}
  openssl req $new -subj "/CN=$file" -keyout $file.key -out $file.csr
  echo "subjectAltName=$names" >$file.ext
  openssl x509 -req -in $file.csr -CA ca.pem -CAkey ca.key -CAcreateserial -days $days \
    -extfile $file.ext -out $file.pem
done
)";

constexpr const char* kNginx = R"(daemon off; master_process off; pid nginx.pid;
events {}
http {
  log_format proof '$uri $http_range $status $body_bytes_sent';
  access_log access.log proof;
  client_body_temp_path tmp; proxy_temp_path tmp; fastcgi_temp_path tmp; uwsgi_temp_path tmp;
  scgi_temp_path tmp;
  root files;
  server { listen 127.0.0.1:{http};
    location /slow/ { alias files/; limit_rate 2m; }
    location /norange/ { alias files/; max_ranges 0; } }
  server { listen 127.0.0.1:{right} ssl; ssl_certificate right.pem; ssl_certificate_key right.key;
    location /down { return 302 http://127.0.0.1:{http}/small; } }
  server { listen 127.0.0.1:{wrong} ssl; ssl_certificate wrong.pem; ssl_certificate_key wrong.key; }
  server { listen 127.0.0.1:{old} ssl; ssl_certificate old.pem; ssl_certificate_key old.key; }
}
)";

constexpr const char* kTinyproxy =
    "Port {proxy}\nListen 127.0.0.1\nTimeout 10\nLogFile \"{root}/proxy.log\"\nLogLevel "
    "Connect\nMaxClients 20\n";

// The servers of all tests, on free ports, in one folder; they end with it.
class Servers {
 public:
  Servers() {
    for (const char* const name : {"http", "right", "wrong", "old", "ftp", "proxy"})
      ports_[name] = std::to_string(tests::UnusedPort());
    sandbox_.Write("files/small", "small file");
    sandbox_.Write("files/big", BigFile());
    sandbox_.Write("nginx.conf", Filled(kNginx));
    sandbox_.Write("tinyproxy.conf", Filled(kTinyproxy));
    sandbox_.Write("certificates.sh", kMakeCertificates);
    const std::string root = Path("");
    Run("exec sh '" + root + "/certificates.sh' '" + root + "' 2>'" + root + "/openssl.log'", true);
    Run("exec nginx -p '" + root + "' -e error.log -c nginx.conf", false);
    Run("exec tinyproxy -d -c '" + root + "/tinyproxy.conf' >/dev/null", false);
    Run("exec /usr/bin/python3 -m pyftpdlib -i 127.0.0.1 -p " + ports_["ftp"] + " -d '" + root +
            "/files' 2>'" + root + "/ftp.log'",
        false);
    Await(Connect(1), Http("/small"));
    Await(Connect(1), Ftp("/small"));
    Await(Connect(3, Proxy()), Http("/small"));
  }
  Servers(const Servers&) = delete;
  Servers& operator=(const Servers&) = delete;
  ~Servers() {
    for (const std::int32_t id : ids_)
      tests::KillProcess(id);
  }

  std::string Path(const std::string& name) const {
    return name.empty() ? sandbox_.Path() : sandbox_.Path(name);
  }
  std::string Http(const std::string& path) const { return "http://" + Host("http") + path; }
  std::string Https(const std::string& server, const std::string& path) const {
    return "https://" + Host(server) + path;
  }
  std::string Ftp(const std::string& path) const { return "ftp://" + Host("ftp") + path; }
  std::string Proxy() const { return Host("proxy"); }
  std::string Host(const std::string& server) const { return "127.0.0.1:" + ports_.at(server); }

  // Waits until a server has written those words into its log.
  void AwaitLog(const std::string& log, const std::string& words) const {
    for (int attempt = 0; attempt < 100; ++attempt) {
      if (sandbox_.Read(log).find(words) != std::string::npos) return;
      tests::Peer::Pause(20);
    }
    ADD_FAILURE() << words << " is not in\n" << sandbox_.Read(log);
  }

 private:
  std::string Filled(std::string text) const {
    std::map<std::string, std::string> values = ports_;
    values["root"] = Path("");
    for (const auto& [name, value] : values) {
      const std::string mark = "{" + name + "}";
      for (std::size_t at = 0; (at = text.find(mark)) != std::string::npos;)
        text.replace(at, mark.size(), value);
    }
    return text;
  }

  void Run(const std::string& script, bool is_awaited) {
    const std::int32_t result = RunProcess("", "sh -c \"" + script + "\"", "", is_awaited, 0);
    if (is_awaited) {
      EXPECT_EQ(result, 0) << script;
    } else {
      ids_.push_back(result);
    }
  }

  static void Await(const std::shared_ptr<InetConnection>& connection, const std::string& url) {
    for (int attempt = 0; attempt < 200; ++attempt) {
      if (Fetch(connection, url) == "small file") return;
      tests::Peer::Pause(50);
    }
    ADD_FAILURE() << url << ": " << Fetch(connection, url);
  }

  tests::Sandbox sandbox_;
  std::map<std::string, std::string> ports_;
  std::vector<std::int32_t> ids_;
};

class RealServers : public tests::DownloadTest {
 protected:
  static void SetUpTestSuite() { servers_ = new Servers; }
  static void TearDownTestSuite() { delete servers_; }

  static inline Servers* servers_ = nullptr;
};

TEST_F(RealServers, AKilledDownloadContinuesWithTheRestOnly) {
  const std::string child =
      tests::FromPath(tests::ToPath(tests::ChildProgram()).parent_path() / "download_child");
  const std::string big = BigFile();
  for (const std::size_t place : {1, 1'000'000, 2'500'000, 4'000'000}) {
    SCOPED_TRACE(place);
    const tests::Sandbox sandbox;
    const std::string target = sandbox.Path("big");
    const auto part = tests::ToPath(target + ".part");
    const std::int32_t id =
        RunProcess("", "\"" + child + "\" " + servers_->Http("/slow/big") + " \"" + target + "\"",
                   "", false, 0);
    std::error_code missing;
    for (int i = 0; i < 2000; ++i) {
      const auto size = std::filesystem::file_size(part, missing);
      if (!missing && size >= place) break;
      tests::Peer::Pause(5);
    }
    tests::KillProcess(id);
    tests::Peer::Pause(20);
    const std::size_t kept = sandbox.Read("big.part").size();
    ASSERT_GE(kept, place);
    ASSERT_LT(kept, kBigSize);
    tests::Listener listener;
    ASSERT_EQ(tests::Download(listener, servers_->Http("/big"), target), "done");
    EXPECT_EQ(static_cast<std::size_t>(listener.skipped), kept);
    EXPECT_EQ(static_cast<std::size_t>(listener.loaded), kBigSize - kept);
    EXPECT_TRUE(sandbox.Read("big") == big);
    servers_->AwaitLog("access.log", "/big bytes=" + std::to_string(kept) + "- 206 " +
                                         std::to_string(kBigSize - kept) + "\n");
  }
}

TEST_F(RealServers, AServerWithoutRangesSendsTheWholeAgain) {
  sandbox_.Write("big.part", "old bytes");
  tests::Listener listener;
  ASSERT_EQ(tests::Download(listener, servers_->Http("/norange/big"), sandbox_.Path("big")),
            "done");
  EXPECT_EQ(listener.skipped, -1);
  EXPECT_TRUE(sandbox_.Read("big") == BigFile());
}

TEST_F(RealServers, FtpContinuesTooAndMissingFilesAreTold) {
  const std::string big = BigFile();
  for (const std::size_t kept : {std::size_t{0}, std::size_t{3'000'000}, kBigSize}) {
    sandbox_.Write("big.part", big.substr(0, kept));
    tests::Listener listener;
    ASSERT_EQ(tests::Download(listener, servers_->Ftp("/big"), sandbox_.Path("big")), "done");
    EXPECT_EQ(static_cast<std::size_t>(listener.skipped), kept);
    EXPECT_TRUE(sandbox_.Read("big") == big);
  }
  servers_->AwaitLog("ftp.log", "completed=1 bytes=" + std::to_string(kBigSize - 3'000'000));
  sandbox_.Write("big.part", big + "more");
  tests::Listener listener;
  ASSERT_EQ(tests::Download(listener, servers_->Ftp("/big"), sandbox_.Path("big")), "done");
  EXPECT_EQ(listener.skipped, -1);
  EXPECT_EQ(Fetch(Connect(1), servers_->Ftp("/no")),
            "Ошибка загрузки файла \"" + servers_->Ftp("/no") +
                "\":\r\nСервер отказал в выполнении запроса.\r\n");
}

TEST_F(RealServers, WhatIsWrongWithAConnectionIsSaidInWords) {
  const std::string authority = servers_->Path("ca.pem");
  const std::string unused = "127.0.0.1:" + std::to_string(tests::UnusedPort());
  const std::string unknown = "Сертификат сервера выдан неизвестным центром сертификации.";
  const struct {
    std::string url;
    std::string trusted;  // the file of trusted certificates
    std::string outcome;
  } cases[] = {
      {servers_->Https("right", "/small"), authority, "small file"},
      {servers_->Https("right", "/small"), servers_->Path("wrong.pem"), unknown},
      {servers_->Https("wrong", "/small"), authority,
       "Имя сервера не соответствует его сертификату."},
      {servers_->Https("old", "/small"), authority,
       "Срок действия сертификата сервера истек или еще не наступил."},
      {servers_->Https("right", "/down"), authority,
       "Переадресация с защищенного соединения на незащищенное запрещена."},
      {servers_->Https("http", "/small"), authority, "Ошибка защищенного соединения (SSL)."},
      {servers_->Http("/no"), "", "Ошибка HTTP 404: Not Found"},
      {"http://" + unused + "/", "", "Не удается установить соединение с сервером."},
      {"http://no.such.host.invalid/", "", "Не удается определить адрес сервера по его имени."},
      {"http://a:port/", "", "Неправильный адрес (URL)."},
      {"http:/" + servers_->Host("http") + "/small", "",
       "Протокол, указанный в адресе (URL), не поддерживается."},
      {"file:///etc/passwd", "", "Протокол, указанный в адресе (URL), не поддерживается."},
  };
  for (const auto& c : cases) {
    const ScopedVariable trusted("CURL_CA_BUNDLE", c.trusted);
    const std::string line_end = c.outcome.ends_with('.') ? "\r\n" : "";
    EXPECT_TRUE(Fetch(Connect(1), c.url).ends_with(c.outcome + line_end))
        << c.url << ": " << Fetch(Connect(1), c.url) << "instead of " << c.outcome;
  }
}

TEST_F(RealServers, TheProxyOfTheSettingsIsUsed) {
  const std::string url = servers_->Http("/small?");
  const ScopedVariable trusted("CURL_CA_BUNDLE", servers_->Path("ca.pem"));
  EXPECT_EQ(Fetch(Connect(3, servers_->Proxy()), servers_->Https("right", "/small")), "small file");
  servers_->AwaitLog("proxy.log", "CONNECT " + servers_->Host("right"));
  const ScopedVariable variable("http_proxy", "http://" + servers_->Proxy());
  EXPECT_EQ(Fetch(Connect(0), url + "system"), "small file");
  servers_->AwaitLog("proxy.log", "?system");
  const ScopedVariable broken("http_proxy",
                              "http://127.0.0.1:" + std::to_string(tests::UnusedPort()));
  EXPECT_EQ(Fetch(Connect(1), url), "small file");
  EXPECT_NE(Fetch(Connect(0), url), "small file");
  EXPECT_NE(Fetch(Connect(4), url), "small file");
}

TEST(ProxyLists, AreReadAsTheSettingsWriteThem) {
  const struct {
    const char* proxies;
    const char* bypass;
    const char* scheme;
    const char* host;
    const char* expected;
  } cases[] = {
      {"p:3128", "", "ftp", "h.ru", "http://p:3128"},
      {"P", "", "http", "h.ru", "http://p:80"},
      {"http://[::1]/", "", "http", "h.ru", "http://[::1]:80"},
      {"http=a:1;https=b:2 ftp=c", "", "https", "h.ru", "http://b:2"},
      {"http=a:1;https=b:2 ftp=c", "", "ftp", "h.ru", "http://c:80"},
      {"http=a:1", "", "https", "h.ru", ""},
      {"http=a:1;d:4", "", "https", "h.ru", "http://d:4"},
      {"http=a:1;socks=s:9", "", "ftp", "h.ru", "socks4a://s:9"},
      {"p:1", "*.local;h.*", "http", "H.ru", ""},
      {"p:1", "<local>", "http", "h.ru", "http://p:1"},
      {"p:1", "<local>", "http", "server", ""},
      {"p:1", "10.*; https://x.ru", "http", "x.ru", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(platform::ChooseProxy(c.proxies, c.bypass, c.scheme, c.host), c.expected)
        << c.proxies;
}

}  // namespace
}  // namespace tmw
