#include <memory>
#include <string>
#include <vector>

#include "foundation/api_errors.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"
#include "transfer/inet.h"

namespace tmw {
namespace {

using tests::Peer;

const std::string kBody = "0123456789";
const std::string kDone = "done";

std::string Answer(const std::string& status, const std::string& headers, const std::string& body) {
  return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n" + body;
}

std::string Ok(const std::string& headers, const std::string& body) {
  return Answer("200 OK", headers, body);
}

std::string Redirect(const std::string& location) {
  return Answer("302 Found", "Content-Length: 0\r\nLocation: " + location + "\r\n", "");
}

std::string Partial(const std::string& range, const std::string& body) {
  return Answer("206 Partial Content", "Content-Range: bytes " + range + "\r\n", body);
}

const std::string kWhole = Ok("Content-Length: 10\r\n", kBody);

tests::Script Always(const std::string& answer) {
  return [answer](Peer& peer, const std::string&) { peer.Send(answer); };
}

// Without a range the whole body, with one the given answer.
tests::Script ToRange(const std::string& answer) {
  return [answer](Peer& peer, const std::string& head) {
    peer.Send(head.find("\r\nRange:") == std::string::npos ? kWhole : answer);
  };
}

enum class Ending { kClose, kReset, kStall };

tests::Script CutAfter(const std::string& bytes, Ending ending) {
  return [=](Peer& peer, const std::string&) {
    peer.Send(bytes);
    Peer::Pause(50);
    if (ending == Ending::kReset) peer.Reset();
    if (ending == Ending::kStall) peer.Stall();
  };
}

void Drip(Peer& peer, const std::string& /*head*/) {
  peer.Send(Ok("Content-Length: 5\r\n", ""));
  for (const char* const byte : {"0", "1", "2", "3", "4"}) {
    Peer::Pause(200);
    peer.Send(byte);
  }
}

void FloodHeaders(Peer& peer, const std::string& /*head*/) {
  peer.Send("HTTP/1.1 200 OK\r\n");
  const std::string line = "X-Flood: " + std::string(1000, 'x') + "\r\n";
  for (int i = 0; i < 100'000 && peer.Send(line); ++i) {
  }
}

// Whole at first; silent when asked for the rest or again.
tests::Script SilentSecondTime() {
  auto is_first = std::make_shared<bool>(true);
  return [is_first](Peer& peer, const std::string&) {
    if (*is_first) {
      peer.Send(kWhole);
    } else {
      peer.Stall();
    }
    *is_first = false;
  };
}

struct Case {
  const char* name;
  tests::Script script;
  std::string part;     // an earlier download's side file; "": there is none
  std::string outcome;  // kDone, the last line of an HTTP error, or "" for the code
  platform::SystemCode code = 0;
  std::string left;          // in the target or, after a failure, in the side file; "-": no file
  std::size_t requests = 1;  // that reached the server
};

const std::vector<Case>& OnEverySystem() {
  static const std::vector<Case> cases = {
      {"the whole body", Always(kWhole), "", kDone, 0, kBody},
      {"an empty body", Always(Ok("Content-Length: 0\r\n", "")), "", kDone, 0, ""},
      {"a body up to the connection's end", Always(Ok("", kBody)), "", kDone, 0, kBody},
      {"more than announced", Always(Ok("Content-Length: 4\r\n", kBody)), "", kDone, 0, "0123"},
      {"chunks", Always(Ok("Transfer-Encoding: chunked\r\n", "4\r\n0123\r\n1\r\n4\r\n0\r\n\r\n")),
       "", kDone, 0, "01234"},
      {"a packed body stays packed", Always(Ok("Content-Encoding: gzip\r\n", kBody)), "", kDone, 0,
       kBody},
      {"an interim answer first", Always(Answer("100 Continue", "", "") + kWhole), "", kDone, 0,
       kBody},
      {"drops that never pause for long", Drip, "", kDone, 0, "01234"},
      {"a redirect without a target", Always(Answer("302 Found", "", kBody)), "", kDone, 0, kBody},
      {"less than announced", CutAfter(Ok("Content-Length: 10\r\n", "0123"), Ending::kClose), "",
       "", 12030, "0123"},
      {"nothing of what was announced", Always(Ok("Content-Length: 10\r\n", "")), "", "", 12030,
       ""},
      {"404 with a page", Always(Answer("404 Not Found", "", "<html>")), "",
       "Ошибка HTTP 404: Not Found", 0, "-"},
      {"500 leaves the side file alone", Always(Answer("500 Oops", "", "<html>")), "ABCD",
       "Ошибка HTTP 500: Oops", 0, "ABCD"},
      {"a status without words", Always("HTTP/1.1 599\r\n\r\n"), "", "Ошибка HTTP 599: ", 0, "-"},
      {"words of an old server", Always(Answer("403 \xCD\xE5\xEB\xFC\xE7\xFF", "", "")), "",
       "Ошибка HTTP 403: Нельзя", 0, "-"},
      {"the rest", ToRange(Partial("4-9/10", "456789")), "ABCD", kDone, 0, "ABCD456789", 2},
      {"the rest of an unknown whole", ToRange(Partial("4-9/*", "456789")), "ABCD", kDone, 0,
       "ABCD456789", 2},
      {"nothing left to send", ToRange(Answer("416 No", "Content-Range: bytes */10\r\n", "<html>")),
       "ABCDEFGHIJ", kDone, 0, "ABCDEFGHIJ", 2},
      {"nothing left, without numbers", ToRange(Answer("416 No", "", "<html>")), "ABCDEFGHIJ",
       kDone, 0, "ABCDEFGHIJ", 2},
      {"beyond the end", ToRange(Answer("416 No", "Content-Range: bytes */10\r\n", "<html>")),
       "ABCDEFGHIJKL", kDone, 0, kBody, 3},
      {"the whole instead of the rest", ToRange(kWhole), "ABCD", kDone, 0, kBody, 3},
      {"another range", ToRange(Partial("5-9/10", "56789")), "ABCD", kDone, 0, kBody, 3},
      {"a range with a gap at the end", ToRange(Partial("4-8/10", "45678")), "ABCD", kDone, 0,
       kBody, 3},
      {"a range of another whole", ToRange(Partial("4-19/20", "456789")), "ABCD", kDone, 0, kBody,
       3},
      {"a range that is not told", ToRange(Answer("206 Partial Content", "", "456789")), "ABCD",
       kDone, 0, kBody, 3},
      {"an error instead of the rest", ToRange(Answer("503 Busy", "", "<html>")), "ABCD", kDone, 0,
       kBody, 3},
      {"a rest that breaks off",
       ToRange(Answer("206 Partial Content", "Content-Range: bytes 4-9/10\r\nContent-Length: 6\r\n",
                      "45")),
       "ABCD", "", 12030, "ABCD45", 2},
  };
  return cases;
}

// What Wine's WinINet forgives or reports with another code.
const std::vector<Case>& OnLinux() {
  static const std::vector<Case> cases = {
      {"a reset in the body", CutAfter(Ok("Content-Length: 10\r\n", "0123"), Ending::kReset), "",
       "", 12031, "0123"},
      {"cut chunks", Always(Ok("Transfer-Encoding: chunked\r\n", "4\r\n0123\r\n8\r\n4")), "", "",
       12030, "01234"},
      {"chunks without a length", Always(Ok("Transfer-Encoding: chunked\r\n", "zz\r\n0123")), "",
       "", 12031, ""},
      {"a stall in the body", CutAfter(Ok("Content-Length: 10\r\n", "0123"), Ending::kStall), "",
       "", 12002, "0123"},
      {"no answer", CutAfter("", Ending::kStall), "", "", 12002, "-"},
      {"a stall in the headers", CutAfter("HTTP/1.1 200 OK\r\nA: b\r\n", Ending::kStall), "", "",
       12002, "-"},
      {"an end instead of an answer", Always(""), "", "", 12152, "-"},
      {"a reset instead of an answer", CutAfter("", Ending::kReset), "", "", 12031, "-"},
      {"another protocol", Always("220 ready\r\n\r\n"), "", "", 12152, "-"},
      {"a length that is no number", Always(Ok("Content-Length: ten\r\n", kBody)), "", "", 12152,
       "-"},
      {"endless headers", FloodHeaders, "", "", 12152, "-"},
      {"a part that nobody asked for", Always(Partial("0-3/10", "0123")), "", "", 12152, "-"},
      {"an endless redirect", Always(Redirect("/again")), "", "", 12156, "-", 11},
      {"a redirect to a file", Always(Redirect("file:///etc/passwd")), "", "", 12006, "-"},
      {"a server that falls silent keeps the side file", SilentSecondTime(), "ABCD", "", 12002,
       "ABCD", 3},
  };
  return cases;
}

class HostileServer : public tests::DownloadTest {
 protected:
  // The internet layer of Windows that the tests run on cannot seek in a body.
  static constexpr bool kCanSeek = !tests::kOnWindows;

  void Play(const Case& c);
};

void HostileServer::Play(const Case& c) {
  SCOPED_TRACE(c.name);
  const tests::ScriptedServer server(c.script);
  const tests::Sandbox sandbox;
  if (!c.part.empty()) sandbox.Write("Файл.tmz.part", c.part);
  tests::Listener listener;
  const std::string outcome = tests::Download(listener, server.Url("/a"), sandbox.Path("Файл.tmz"));

  const bool resumes = kCanSeek && !c.part.empty() && c.requests == 2;
  const bool starts_again = !kCanSeek && !c.part.empty() && c.requests > 1;
  const std::string reason = starts_again        ? kDone
                             : c.outcome.empty() ? GetApiErrorText(c.code, "wininet.dll")
                                                 : c.outcome;
  EXPECT_TRUE(outcome.ends_with(reason)) << outcome;
  const bool is_done = reason == kDone;
  EXPECT_EQ(sandbox.Has("Файл.tmz"), is_done);
  EXPECT_EQ(sandbox.Has("Файл.tmz.part"), !is_done && c.left != "-");
  if (c.left != "-") {
    EXPECT_EQ(sandbox.Read(is_done ? "Файл.tmz" : "Файл.tmz.part"), starts_again ? kBody : c.left);
  }
  EXPECT_EQ(listener.skipped, resumes ? static_cast<int>(c.part.size()) : -1);
  EXPECT_TRUE(!kCanSeek || server.Heads().size() == c.requests) << server.Heads().size();
}

TEST_F(HostileServer, EveryMisbehaviourEndsInTheWholeFileOrAClearError) {
  for (const Case& c : OnEverySystem())
    Play(c);
}

TEST_F(HostileServer, BrokenAnswersAreNeverTakenForAFile) {
  if (!kCanSeek) return;
  for (const Case& c : OnLinux())
    Play(c);
}

}  // namespace
}  // namespace tmw
