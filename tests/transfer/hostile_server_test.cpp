#include <memory>
#include <string>
#include <vector>

#include "foundation/api_errors.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"

namespace tmw {
namespace {

using tests::Peer;
using tests::Script;
using Text = std::string;

const Text kBody = "0123456789";
const Text kTen = "200 OK\r\nConnection: close\r\nContent-Length: 10";
const Text kWhole = "HTTP/1.1 " + kTen + "\r\n\r\n" + kBody;
const Text kChunks = "200 OK\r\nTransfer-Encoding: chunked";
const Text kPart = "206 Partial Content\r\nContent-Range: bytes ";
const Text kNoMore = "416 No\r\nContent-Range: bytes */10";

Script Raw(const Text& bytes, void (Peer::*ending)() const = nullptr) {
  return [=](Peer& peer, const Text&) {
    peer.Send(bytes);
    if (ending == nullptr) return;
    Peer::Pause(50);
    (peer.*ending)();
  };
}

// Status and headers, then the body, then how it ends.
Script Answer(const Text& head, const Text& body, void (Peer::*ending)() const = nullptr) {
  return Raw("HTTP/1.1 " + head + "\r\n\r\n" + body, ending);
}

// Without a range the whole body, with one the given answer.
Script ToRange(const Text& head, const Text& body) {
  return [=](Peer& peer, const Text& request) {
    const bool has_range = request.find("\r\nRange:") != Text::npos;
    peer.Send(has_range ? "HTTP/1.1 " + head + "\r\n\r\n" + body : kWhole);
  };
}

void Drip(Peer& peer, const Text& /*head*/) {
  peer.Send("HTTP/1.1 200 OK\r\nContent-Length: 5120\r\n\r\n");
  for (int i = 0; i < 5; ++i) {
    Peer::Pause(200);
    peer.Send(Text(1024, 'x'));
  }
}

void FloodHeaders(Peer& peer, const Text& /*head*/) {
  const Text line = "X-Flood: " + Text(1000, 'x') + "\r\n";
  peer.Send("HTTP/1.1 200 OK\r\n");
  for (int i = 0; i < 100'000 && peer.Send(line); ++i) {
  }
}

// Whole at first; silent when asked for the rest or again.
Script SilentSecondTime() {
  auto requests = std::make_shared<int>(0);
  return [requests](Peer& peer, const Text&) {
    if ((*requests)++ > 0) return peer.Stall();
    peer.Send(kWhole);
  };
}

// A page of the network, whatever was asked for.
Script Login(const Text& header) {
  return Answer("200 OK\r\nConnection: close\r\n" + header, "<html>");
}

const Text kShorter =
    "Сервер предлагает файл короче уже загруженной части. Загруженная часть сохранена.";

struct Case {
  const char* name;
  Script script;
  Text part;                 // an earlier download's side file; "": there is none
  Text outcome;              // "done", the end of an HTTP error, or a code of the internet layer
  Text left;                 // in the target or, after a failure, the side file; "-": no file
  std::size_t requests = 1;  // that reached the server
};

// clang-format off
const std::vector<Case>& OnEverySystem() {
  static const std::vector<Case> cases = {
      {"the whole body", Answer(kTen, kBody), "", "done", kBody},
      {"an empty body", Answer("200 OK\r\nContent-Length: 0", ""), "", "done", ""},
      {"a body up to the connection's end", Answer("200 OK", kBody), "", "done", kBody},
      {"more than announced", Answer(kTen, kBody + "more"), "", "done", kBody},
      {"chunks", Answer(kChunks, "4\r\n0123\r\n1\r\n4\r\n0\r\n\r\n"), "", "done", "01234"},
      {"a packed body", Answer("200 OK\r\nContent-Encoding: gzip", kBody), "", "done", kBody},
      {"an interim answer first", Answer("100 Continue", kWhole), "", "done", kBody},
      {"drops that never pause for long", Drip, "", "done", Text(5120, 'x')},
      {"a redirect without a target", Answer("302 Found", kBody), "", "done", kBody},
      {"less than announced", Answer(kTen, "0123"), "", "12030", "0123", 7},
      {"nothing of what was announced", Answer(kTen, ""), "", "12030", "", 3},
      {"404 with a page", Answer("404 Not Found", "<html>"), "", "HTTP 404: Not Found", "-"},
      {"500 keeps the side file", Answer("500 Oops", "<html>"), "ABCD", "HTTP 500: Oops", "ABCD"},
      {"an endless reason", Answer("403 " + Text(300, 'x') + "\t", ""), "", "403: " + Text(200, 'x') + "…", "-"},
      {"a status without words", Answer("599", ""), "", "Ошибка HTTP 599: ", "-"},
      {"words of 1251", Answer("403 \xCD\xE5\xEB\xFC\xE7\xFF", ""), "", "HTTP 403: Нельзя", "-"},
      {"the rest", ToRange(kPart + "4-9/10", "456789"), "ABCD", "done", "ABCD456789", 2},
      {"of an unknown whole", ToRange(kPart + "4-9/*", "456789"), "ABCD", "done", "ABCD456789", 2},
      {"nothing left", ToRange(kNoMore, "<html>"), "ABCDEFGHIJ", "done", "ABCDEFGHIJ", 2},
      {"nothing left, no numbers", ToRange("416 No", "<"), "ABCDEFGHIJ", "done", "ABCDEFGHIJ", 2},
      {"beyond the end", ToRange(kNoMore, "<html>"), "ABCDEFGHIJKL", kShorter, "ABCDEFGHIJKL", 3},
      {"the whole, not the rest", ToRange(kTen, kBody), "ABCD", "done", kBody, 3},
      {"another range", ToRange(kPart + "5-9/10", "56789"), "ABCD", "done", kBody, 3},
      {"a gap at the end", ToRange(kPart + "4-8/10", "45678"), "ABCD", "done", kBody, 3},
      {"a range of another whole", ToRange(kPart + "4-19/20", "4"), "ABCD", "done", kBody, 3},
      {"a range that is not told", ToRange("206 Part", "456789"), "ABCD", "done", kBody, 3},
      {"an error for the rest", ToRange("503 Busy", "<html>"), "ABCD", "done", kBody, 3},
      {"a rest that breaks off", ToRange(kPart + "4-9/10\r\nContent-Length: 6", "45"), "ABCD",
       "done", kBody, 5},
      {"a login page", Login("Content-Length: 6"), "ABCDEFGHIJ", kShorter, "ABCDEFGHIJ", 3},
      {"one without a length", Login("A: b"), "ABCDEFGHIJ", kShorter, "ABCDEFGHIJ", 3},
      {"the whole, without a length", Answer("200 OK", kBody), "ABCD", "done", kBody, 3},
  };
  return cases;
}

// What Wine's WinINet forgives or reports with another code.
const std::vector<Case>& OnLinux() {
  static const std::vector<Case> cases = {
      {"a reset in the body", Answer(kTen, "0123", &Peer::Reset), "", "12031", "0123", 7},
      {"cut chunks", Answer(kChunks, "4\r\n0123\r\n8\r\n4"), "", "12030", "01234", 7},
      {"chunks without a length", Answer(kChunks, "zz\r\n0123"), "", "12031", "", 3},
      {"a stall in the body", Answer(kTen, "0123", &Peer::Stall), "", "12002", "0123", 7},
      {"no answer", Raw("", &Peer::Stall), "", "12002", "-", 3},
      {"a stall in the headers", Raw("HTTP/1.1 200 OK\r\nA: b\r\n", &Peer::Stall), "", "12002", "-", 3},
      {"an end instead of an answer", Raw(""), "", "12030", "-", 3},
      {"a reset instead of an answer", Raw("", &Peer::Reset), "", "12031", "-", 3},
      {"another protocol", Raw("220 ready\r\n\r\n"), "", "12152", "-"},
      {"no length", Answer("200 OK\r\nContent-Length: ten", kBody), "", "12152", "-"},
      {"endless headers", FloodHeaders, "", "12152", "-"},
      {"a part nobody asked for", Answer(kPart + "0-3/10", "0123"), "", "12152", "-"},
      {"an endless redirect", Answer("302 Found\r\nLocation: /again", ""), "", "12156", "-", 11},
      {"a redirect to a file", Answer("302 Found\r\nLocation: file:///f", ""), "", "12006", "-"},
      {"silence keeps the side file", SilentSecondTime(), "ABCD", "12002", "ABCD", 4},
  };
  return cases;
}
// clang-format on

// The internet layer of Wine cannot seek in a body, unless to its end.
constexpr bool kCanSeek = !tests::kOnWindows;

class HostileServer : public tests::DownloadTest {
 protected:
  static void Play(const Case& c) {
    SCOPED_TRACE(c.name);
    const tests::ScriptedServer server(c.script);
    const tests::Sandbox sandbox;
    if (!c.part.empty()) sandbox.Write("Файл.tmz.part", c.part);
    tests::Listener listener;
    const Text outcome = tests::Download(listener, server.Url("/a"), sandbox.Path("Файл.tmz"));
    const bool resumes = !c.part.empty() && c.requests == 2;
    const bool can_seek = kCanSeek || c.part.size() == kBody.size();
    const bool starts_again =
        !can_seek && !c.part.empty() && c.requests > 1 && c.outcome != kShorter;
    const Text expected = starts_again ? "done"
                          : c.outcome.starts_with("12")
                              ? GetApiErrorText(std::stoi(c.outcome), "wininet.dll")
                              : c.outcome;
    EXPECT_TRUE(outcome.ends_with(expected)) << outcome;
    const bool is_done = expected == "done";
    EXPECT_EQ(sandbox.Has("Файл.tmz"), is_done);
    EXPECT_EQ(sandbox.Has("Файл.tmz.part"), !is_done && c.left != "-");
    const Text left = c.left == "-" ? "-" : sandbox.Read(is_done ? "Файл.tmz" : "Файл.tmz.part");
    EXPECT_EQ(left, starts_again ? kBody : c.left);
    EXPECT_FALSE(sandbox.Has("Файл.tmz.part.new"));
    if (c.requests <= 3 && is_done) {
      EXPECT_EQ(listener.skipped, resumes && can_seek ? static_cast<int>(c.part.size()) : -1);
    }
    EXPECT_TRUE(!kCanSeek || server.Heads().size() == c.requests) << server.Heads().size();
  }
};

TEST_F(HostileServer, EveryMisbehaviourEndsInTheWholeFileOrAClearError) {
  for (const Case& c : OnEverySystem())
    Play(c);
}

TEST_F(HostileServer, BrokenAnswersAreNeverTakenForAFile) {
  for (const Case& c : kCanSeek ? OnLinux() : std::vector<Case>())
    Play(c);
}

}  // namespace
}  // namespace tmw
