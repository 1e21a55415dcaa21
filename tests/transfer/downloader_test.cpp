#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <limits>
#include <memory>
#include <utility>

#include "tests/fakes/hand_clock.h"
#include "tests/support/environment.h"
#include "tests/support/scripted_server.h"
#include "tests/transfer/download_fixture.h"
#include "transfer/inet.h"
#include "transfer/stall_watch.h"

namespace tmw {
namespace {

using tests::Peer;

constexpr std::int32_t kChunk = 16384;

std::string Pattern(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < length; ++i)
    text += static_cast<char>('a' + (i / 7 + i / 1000) % 26);
  return text;
}

// Serves one body, or the rest of it from a requested position.
tests::Script Body(const std::string& body) {
  return [body](Peer& peer, const std::string& head) {
    const std::size_t range = head.find("Range: bytes=");
    const bool is_whole = range == std::string::npos;
    const std::size_t first = is_whole ? 0 : std::stoul(head.substr(range + 13));
    const std::string rest = body.substr(first);
    peer.Send("HTTP/1.1 " + std::string(is_whole ? "200 OK" : "206 Part") +
              "\r\nConnection: close\r\nContent-Range: bytes " + std::to_string(first) + "-" +
              std::to_string(body.size() - 1) + "/" + std::to_string(body.size()) +
              "\r\nContent-Length: " + std::to_string(rest.size()) + "\r\n\r\n" + rest);
  };
}

// Passes everything on, except the call of that number, which fails or does only a part.
class FaultyFiles final : public ports::BinaryFiles {
 public:
  int openings = 0;
  int flushes = 0;
  int calls = 0;
  int fault_at = 0;
  bool writes_nothing = false;

  explicit FaultyFiles(ports::BinaryFiles& real) : real_(real) {}
  ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>> Open(const std::string& path,
                                                                std::uint32_t access,
                                                                std::uint32_t share,
                                                                std::uint32_t disposition,
                                                                std::uint32_t flags) override {
    using Result = ports::Outcome<std::unique_ptr<ports::BinaryFileHandle>>;
    ++openings;
    if (Fails()) return Result::Failure(5);
    auto opened = real_.Open(path, access, share, disposition, flags);
    if (opened) opened.value = std::make_unique<Handle>(*this, std::move(opened.value));
    return opened;
  }

 private:
  struct Handle final : ports::BinaryFileHandle {
    FaultyFiles& files;
    std::unique_ptr<ports::BinaryFileHandle> real;

    Handle(FaultyFiles& all, std::unique_ptr<ports::BinaryFileHandle> handle)
        : files(all), real(std::move(handle)) {}
    std::uint32_t Size() override { return real->Size(); }
    ports::Status Seek(std::int32_t position, std::uint32_t method) override {
      return files.Judge(real->Seek(position, method));
    }
    ports::Outcome<std::uint32_t> Write(const void* data, std::uint32_t length) override {
      if (!files.Fails()) return real->Write(data, length);
      return {files.writes_nothing, 5, 0};
    }
    ports::Status Flush() override { return ++files.flushes, files.Judge(real->Flush()); }
    ports::Status Close() override { return files.Judge(real->Close()); }
  };

  ports::Status Judge(ports::Status status) { return Fails() ? ports::Status::Failure(5) : status; }
  bool Fails() { return ++calls == fault_at; }

  ports::BinaryFiles& real_;
};

class Downloader : public tests::DownloadTest {
 protected:
  std::string Get(const tests::ScriptedServer& server, bool check_for_continue = true) {
    return tests::Download(listener_, server.Url("/f"), sandbox_.Path("f"), check_for_continue);
  }

  tests::Listener listener_;
};

TEST_F(Downloader, ACancelAtEveryPlaceKeepsTheOldFileAndTheSideFileForTheNextRun) {
  const std::string body = Pattern(5 * kChunk);
  const tests::ScriptedServer server(Body(body));
  int cancelled_runs = 0;
  for (int check = 1;; ++check) {
    SCOPED_TRACE(check);
    const tests::Sandbox sandbox;
    const std::string target = sandbox.Write("f", "old");
    tests::Listener listener;
    listener.wants_cancel = [&] { return listener.checks >= check; };
    const std::string outcome = tests::Download(listener, server.Url("/f"), target);
    if (outcome == "done") break;
    ++cancelled_runs;
    ASSERT_EQ(outcome, "cancelled");
    EXPECT_EQ(sandbox.Read("f"), "old");
    // A slow opening asks more than once, before there is a side file.
    const std::string part = sandbox.Has("f.part") ? sandbox.Read("f.part") : "";
    EXPECT_EQ(part, body.substr(0, static_cast<std::size_t>(listener.loaded)));
    tests::Listener second;
    EXPECT_EQ(tests::Download(second, server.Url("/f"), target), "done");
    EXPECT_EQ(sandbox.Read("f"), body);
  }
  EXPECT_GE(cancelled_runs, 8);  // twice before the body, at every chunk, at the end
}

TEST_F(Downloader, TheSideFileIsClosedEveryMebibyteAndEveryTwoSeconds) {
  FaultyFiles files(*ports_->binary_files);
  tests::HandClock clock;
  ports_->binary_files = &files;
  ports_->clock = &clock;
  const tests::ScriptedServer server(Body(Pattern(3 << 20)));
  ASSERT_EQ(Get(server), "done");
  EXPECT_EQ(files.openings, 3 + 1);  // and once to flush it
  // Time passes at every chunk; a file that has been open for 2 seconds is closed behind a chunk.
  for (const auto& [milliseconds, chunks_an_opening] : {std::pair(2000, 2), {1999, 3}}) {
    files.openings = 0;
    listener_.chunks = 0;
    const int step = milliseconds;
    listener_.wants_cancel = [&clock, step] {
      clock.now += step;
      return false;
    };
    ASSERT_EQ(Get(server), "done");
    EXPECT_NEAR(files.openings, listener_.chunks / chunks_an_opening, 2);
  }
}

TEST_F(Downloader, AnyCallOfTheDiskThatFailsEndsTheDownloadAndKeepsTheOldFile) {
  const std::string body = Pattern(3 * kChunk);
  const tests::ScriptedServer server(Body(body));
  FaultyFiles files(*ports_->binary_files);
  ports_->binary_files = &files;
  for (const bool writes_nothing : {false, true}) {
    files.writes_nothing = writes_nothing;
    for (files.fault_at = 1;; ++files.fault_at) {
      SCOPED_TRACE(files.fault_at);
      sandbox_.Write("f", "old");
      sandbox_.Write("f.part", body.substr(0, 10));
      files.calls = 0;
      const std::string outcome = Get(server);
      if (outcome == "done") break;
      EXPECT_NE(outcome, "cancelled");
      EXPECT_EQ(sandbox_.Read("f"), "old");
      EXPECT_TRUE(body.starts_with(sandbox_.Read("f.part")));
    }
    EXPECT_GT(files.fault_at, 7);  // opening, seek, writes, closing; opening, flush, closing
    EXPECT_GT(std::exchange(files.flushes, 0), 1);  // the one that failed and the last
    EXPECT_EQ(sandbox_.Read("f"), body);
  }
}

TEST_F(Downloader, WithoutContinuingTheOldSideFileIsNotUsed) {
  const tests::ScriptedServer server(Body("0123456789"));
  sandbox_.Write("f.part", "ABCD");
  EXPECT_EQ(Get(server, false), "done");
  EXPECT_EQ(sandbox_.Read("f"), "0123456789");
  EXPECT_EQ(listener_.skipped, -1);
  EXPECT_EQ(server.Heads().size(), 1U);
}

TEST_F(Downloader, ASideFileBeyond32BitsIsAnOverflowAndStays) {
  const tests::ScriptedServer server(Body("0123456789"));
  sandbox_.Write("f.part", "");
  std::filesystem::resize_file(tests::ToPath(sandbox_.Path("f.part")), std::uintmax_t{1} << 31U);
  EXPECT_EQ(Get(server), "Переполнение: файлы от 2 ГБ не поддерживаются.");
  EXPECT_TRUE(sandbox_.Has("f.part"));
}

TEST_F(Downloader, ANamedProxyIsAskedExceptForBypassedHosts) {
  const tests::ScriptedServer proxy(Body("from the proxy"));
  const tests::ScriptedServer server(Body("from the server"));
  for (const auto& [bypass, expected] :
       {std::pair("", "from the proxy"), {"other.host;127.0.0.1", "from the server"}}) {
    const auto connection = tests::Connect(3, "http=" + proxy.Host(), bypass);
    EXPECT_EQ(tests::Fetch(connection, server.Url("/f")), expected);
  }
  EXPECT_TRUE(proxy.Heads().at(0).starts_with("GET " + server.Url("/f") + " HTTP/1."));
}

TEST_F(Downloader, AConnectionThatBreaksOffIsContinuedTwiceAfterPausesThatCanBeCancelled) {
  if (tests::kOnWindows) return;  // Wine's layer cannot continue
  const struct {
    std::size_t cuts;  // answers that break off after 4 bytes
    bool wants_cancel;
    const char* outcome;
    const char* left;
    std::size_t requests;
    int pauses;  // in slices
  } cases[] = {{2, false, "done", "0123456789abcdef", 5, 40},
               {3, false, "Соединение с сервером неожиданно прервано.", "0123456789ab", 5, 40},
               {3, true, "cancelled", "0123", 1, 1}};
  for (const auto& c : cases) {
    tests::HandClock clock;
    ports_->clock = &clock;
    const tests::ScriptedServer server([&c](Peer& peer, const std::string& head) {
      const std::size_t range = head.find("Range: bytes=");
      const std::size_t first =
          range == std::string::npos ? 0 : std::stoul(head.substr(range + 13));
      const std::string place =
          "206 Part\r\nContent-Range: bytes " + std::to_string(first) + "-15/16";
      peer.Send("HTTP/1.1 " + (first == 0 ? "200 OK" : place) + "\r\nConnection: close" +
                "\r\nContent-Length: " + std::to_string(16 - first) + "\r\n\r\n" +
                std::string("0123456789abcdef").substr(first, first < 4 * c.cuts ? 4 : 16));
    });
    const tests::Sandbox sandbox;
    tests::Listener listener;
    bool is_pausing = false;
    clock.on_sleep = [&] { is_pausing = clock.sleeps.back() == 100; };
    listener.wants_cancel = [&] { return c.wants_cancel && is_pausing; };
    // What this download has begun it continues, even if an earlier side file would not count.
    const std::string outcome =
        tests::Download(listener, server.Url("/f"), sandbox.Path("f"), c.cuts == 3);
    EXPECT_TRUE(outcome.starts_with(c.outcome)) << outcome;
    EXPECT_EQ(sandbox.Read(outcome == "done" ? "f" : "f.part"), c.left);
    EXPECT_EQ(server.Heads().size(), c.requests);
    EXPECT_EQ(std::count(clock.sleeps.begin(), clock.sleeps.end(), 100), c.pauses);
  }
}

TEST(StallWatch, AKibibyteMustArriveEveryMinuteThatIsSpentWaiting) {
  const tests::ScopedPorts ports;
  tests::HandClock clock;
  ports->clock = &clock;
  // Bytes at the start, bytes every second, milliseconds spent elsewhere; the stall, in seconds.
  for (const auto& [burst, a_second, elsewhere, stall] : {std::array{0, 0, 0, 60},
                                                          {100'000, 0, 0, 60},
                                                          {0, 17, 0, 60},
                                                          {0, 18, 0, 1000},
                                                          {0, 0, 5000, 65}}) {
    StallWatch watch;
    watch.Start();
    watch.NoteArrived(burst);
    watch.Excuse(elsewhere);
    int seconds = 0;
    for (; seconds < 1000 && !watch.IsStalled(); ++seconds) {
      clock.now += 1000;
      watch.NoteArrived(a_second);
    }
    EXPECT_EQ(seconds, stall);
  }
}

// Wherever a call waits for the server, the listener is asked.
TEST_F(Downloader, ACancelIsHeardWhileTheServerIsSilent) {
  const std::string whole =
      "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 10\r\n\r\n0123456789";
  struct Case {
    const char* name;
    std::vector<std::string> answers;  // of the requests in order; then silence
    const char* left;
  };
  const Case cases[] = {{"opening", {}, "ABCD"},
                        {"seek", {whole}, "ABCD"},
                        {"opening again", {whole, whole}, "ABCD"},
                        {"body", {whole, whole, whole.substr(0, whole.size() - 4)}, "012345"}};
  for (Case c : cases) {
    SCOPED_TRACE(c.name);
    // The internet layer of Wine refuses a seek without a request.
    if (tests::kOnWindows && !c.answers.empty()) c.answers.erase(c.answers.begin());
    std::size_t request = 0;
    ports::Clock& clock = *ports_->clock;
    std::atomic<std::int64_t> silent_since = std::numeric_limits<std::int64_t>::max();
    const tests::ScriptedServer server([&](Peer& peer, const std::string&) {
      if (request < c.answers.size()) peer.Send(c.answers[request]);
      if (++request < c.answers.size()) return;
      silent_since = clock.TickCount();
      peer.Stall();
    });
    sandbox_.Write("f.part", "ABCD");
    tests::Listener listener;
    listener.wants_cancel = [&] {
      return clock.TickCount() - ports::kInternetStallLimit / 2 >= silent_since;
    };
    EXPECT_EQ(tests::Download(listener, server.Url("/f"), sandbox_.Path("f")), "cancelled");
    EXPECT_EQ(sandbox_.Read("f.part"), c.left);
  }
}

}  // namespace
}  // namespace tmw
