#include <cstdlib>

#include "tests/whole/attacks.h"

// Attacks on the connection to a server: certificates, redirects, proxies.
namespace tests {
namespace {

// An authority, certificates made by it and by another one, and a server on a port for each, which
// hands on what the test's own server says. Times are relative to now.
constexpr const char* kStart = R"(
new="-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes"
moment() { date -u -d "$1" +%y%m%d%H%M%SZ; }
for authority in ca stranger; do
  openssl req -x509 $new -subj "/CN=$authority" -days 2 -keyout $authority.key -out $authority.pem
done
printf '[ca]\ndefault_ca=d\n[d]\ndatabase=index\nserial=serial\nnew_certs_dir=.\npolicy=p\n' >cnf
printf 'default_md=sha256\ncopy_extensions=copy\nunique_subject=no\n[p]\ncommonName=supplied\n' >>cnf
touch index; echo 1000 >serial
# NAME ADDRESS AUTHORITY BEGINNING END PORT PROTOCOL PATH
serve() {
  openssl req $new -subj "/CN=$1" -addext "subjectAltName=$2" -keyout $1.key -out $1.csr
  openssl ca -batch -config cnf -cert $3.pem -keyfile $3.key -in $1.csr -out $1.pem -notext \
    -startdate $(moment "$4") -enddate $(moment "$5")
  echo "server { listen 127.0.0.1:$6 ssl; ssl_certificate $1.pem; ssl_certificate_key $1.key;
    ssl_protocols $7; ssl_ciphers ALL:@SECLEVEL=0; location / { proxy_pass http://$plain; }
    location $8 { return 302 http://$plain\$request_uri; } }" >>servers
}
serve good IP:127.0.0.1 ca -1day +1day $good TLSv1.3 /none
serve expired IP:127.0.0.1 ca -2days -1minute $expired TLSv1.3 /none
serve future IP:127.0.0.1 ca +10minutes +1day $future TLSv1.3 /none
serve host DNS:other.test ca -1day +1day $host TLSv1.3 /none
serve unknown IP:127.0.0.1 stranger -1day +1day $unknown TLSv1.3 /none
serve old IP:127.0.0.1 ca -1day +1day $old TLSv1.1 /none
serve digest IP:127.0.0.1 ca -1day +1day $digest TLSv1.3 /TMW_version.dat
serve program IP:127.0.0.1 ca -1day +1day $program TLSv1.3 /TMW_3.6.2.0/f1.tmz
cat >nginx.conf <<END
pid nginx.pid; events {} http { include servers; access_log off;
client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t; }
END
nginx -p . -e error.log -c nginx.conf
)";

class ConnectionAttacks : public AttackTest {
 protected:
  ConnectionAttacks() {
    std::string variables = "plain=" + server_.Host() + "\n";
    for (const char* const name :
         {"good", "expired", "future", "host", "unknown", "old", "digest", "program"}) {
      ports_of_[name] = std::to_string(UnusedPort());
      variables += name + ("=" + ports_of_[name]) + "\n";
    }
    tls_.Write("start.sh", variables + kStart);
    Shell("sh start.sh >log 2>&1");
  }
  ~ConnectionAttacks() override {
    OpenSession(1);
    Shell("kill $(cat nginx.pid)");
  }

  void Shell(const std::string& script) const {
    const std::string line = "cd '" + tls_.Path() + "' && " + script;
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
  }

  // Everything is to be had from that server.
  std::function<void()> From(const std::string& name) {
    return [=, this] {
      url_ = "https://127.0.0.1:" + ports_of_[name];
      sandbox_.Write("server/TMW_links.dat", url_ + "\r\n");
    };
  }

  // Through a proxy that answers every request so.
  std::function<void()> Through(const std::string& answer) {
    return [=, this] {
      proxy_ = std::make_unique<ScriptedServer>(
          [=](Peer& peer, const std::string&) { peer.Send("HTTP/1.1 " + answer); });
      OpenSession(3, proxy_->Host());
    };
  }

  Sandbox tls_;
  std::map<std::string, std::string> ports_of_;
  std::unique_ptr<ScriptedServer> proxy_;
};

TEST_F(ConnectionAttacks, OnCertificatesRedirectsAndProxies) {
  const ScopedVariable trusted("CURL_CA_BUNDLE", tls_.Path("ca.pem"));
  const std::string page = "200 OK\r\nConnection: close\r\nContent-Length: 6\r\n\r\n<html>";
  const std::string to_plain = "Переадресация с защищенного соединения на незащищенное запрещена.";
  const std::string time = "Срок действия сертификата сервера истек или еще не наступил.";
  const Attack attacks[] = {
      {"certificate: none of these", From("good"), "ignored"},
      {"certificate: expired", From("expired"), "refused", time},
      {"certificate: not yet valid", From("future"), "refused", time},
      {"certificate: another host", From("host"), "refused",
       "Имя сервера не соответствует его сертификату."},
      {"certificate: unknown authority", From("unknown"), "refused",
       "Сертификат сервера выдан неизвестным центром сертификации."},
      {"certificate: an old protocol", From("old"), "refused",
       "Ошибка защищенного соединения (SSL)."},
      {"redirect to plain text: the digest", From("digest"), "refused", to_plain},
      {"redirect to plain text: a program", From("program"), "refused", to_plain},
      {"proxy: a page of its own", Through(page), "refused", "получена веб-страница"},
      {"proxy: demands a password",
       Through("407 Proxy Authentication Required\r\nProxy-Authenticate: Basic realm=\"a\"\r\n"
               "Connection: close\r\nContent-Length: 0\r\n\r\n"),
       "refused", "407"},
      {"proxy: in the way of a secure connection",
       [&] {
         From("good")();
         Through("200 OK\r\n\r\nHTTP/1.1 " + page)();
       },
       "refused", "Ошибка"},
  };
  for (const Attack& attack : attacks)
    Try(attack);
  OpenSession(1);
  const ScopedVariable planted("http_proxy", "http://127.0.0.1:" + std::to_string(UnusedPort()));
  Try({"proxy: planted in the environment, where the settings say none", [] {}, "ignored"});
}

}  // namespace
}  // namespace tests
