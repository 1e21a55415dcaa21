#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

#include "foundation/api_errors.h"
#include "foundation/text.h"
#include "platform/windows/internet.h"
#include "platform/windows/native_path.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"
#include "ports/clock.h"
#include "ports/front_end.h"
#include "ports/processes.h"
#include "tests/transfer/download_fixture.h"
#include "tests/transfer/windows/scripted_wininet.h"
#include "transfer/inet.h"
// The system's headers come first: this one builds on them.
#include <wininet.h>

namespace tmw {
namespace {

constexpr const char* kUrl = "http://server/f";
const std::string kBody = "0123456789";

std::string ScriptedLibrary() {
  const auto own = tests::ToPath(ports::CurrentPorts().processes->OwnProgram());
  return tests::FromPath(own.parent_path() / "scripted_wininet.dll");
}

class WinInet : public tests::DownloadTest {
 protected:
  WinInet() {
    HMODULE library = LoadLibraryW(platform::ToWide(ScriptedLibrary()).c_str());
    const auto call = reinterpret_cast<void*>(GetProcAddress(library, "SetScript"));
    reinterpret_cast<tests::SetScriptCall>(call)(&script_);
    script_.body = kBody;
    ports_->internet = scripted_.get();
  }

  std::string Resume(const std::string& part) {
    sandbox_.Write("f.part", part);
    return tests::Download(listener_, kUrl, sandbox_.Path("f"));
  }

  // Blocking calls that a test leaves behind must not outlive its script.
  static void LetLateCallsEnd() { Sleep(1500); }

  tests::InternetScript script_;
  std::unique_ptr<ports::Internet> scripted_ = platform::MakeWinInet(60'000, ScriptedLibrary());
  tests::Listener listener_;
};

using Log = std::vector<std::string>;

TEST_F(WinInet, ASeekCountsOnceBytesFromThereHaveArrived) {
  const Log begins_anew = {"open", "seek", "open anew", "read"};
  const Log fails_behind = {"open", "seek", "read", "open anew", "read"};
  struct Case {
    const char* name;
    std::array<int, 4> seek;  // the script's first four members
    std::string part;
    Log log;
    std::string whole;  // "" : the body
  };
  const Case cases[] = {
      {"bytes from there", {}, "ABCD", {"open", "seek", "read"}, "ABCD456789"},
      {"nothing left", {}, "ABCDEFGHIJ", {"open"}, "ABCDEFGHIJ"},
      {"an empty part", {}, "", {"open", "read"}, ""},
      {"refused", {ERROR_INTERNET_INVALID_OPERATION}, "ABCD", begins_anew, ""},
      {"another position", {0, -4}, "ABCD", begins_anew, ""},
      {"no read", {0, 0, ERROR_INTERNET_CONNECTION_RESET}, "ABCD", fails_behind, ""},
      {"no bytes", {0, 0, 0, 1}, "ABCD", fails_behind, ""}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    script_ = {c.seek[0], c.seek[1], c.seek[2], c.seek[3] != 0, 0, 0, kBody, 0, {}, 0, {}};
    EXPECT_EQ(Resume(c.part), "done");
    EXPECT_EQ(sandbox_.Read("f"), c.whole.empty() ? kBody : c.whole);
    EXPECT_EQ(script_.log, c.log);
  }
}

// The rest arrives in pieces, smaller and larger than what is read behind the seek.
TEST_F(WinInet, ALongFileGoesOnFromAnyPlaceWithOneRequest) {
  std::string body;
  for (int i = 0; body.size() < 100'000; ++i)
    body += std::to_string(i) + " ";
  for (const std::size_t piece : {0, 700, 4096}) {
    for (const std::size_t kept : {std::size_t{1}, std::size_t{50'000}, body.size() - 1024,
                                   body.size() - 1023, body.size() - 1}) {
      SCOPED_TRACE(std::to_string(piece) + ", " + std::to_string(kept));
      script_ = {0, 0, 0, false, 0, 0, body, piece, {}, 0, {}};
      listener_ = {};
      EXPECT_EQ(Resume(body.substr(0, kept)), "done");
      EXPECT_TRUE(sandbox_.Read("f") == body);
      EXPECT_EQ(listener_.skipped, static_cast<std::int32_t>(kept));
      EXPECT_EQ(listener_.loaded, static_cast<std::int64_t>(body.size() - kept));
      std::erase(script_.log, "read");
      EXPECT_EQ(script_.log, (Log{"open", "seek"}));
    }
  }
}

TEST_F(WinInet, EveryRequestMayPassFirewallsAndProxiesAndOnlySimpleOnesPassTheCache) {
  const unsigned long always = INTERNET_FLAG_PASSIVE | INTERNET_FLAG_KEEP_CONNECTION |
                               INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTPS;
  EXPECT_EQ(Resume("ABCD"), "done");
  EXPECT_EQ(script_.flags, always);
  const auto connection = tests::Connect(0);
  InetOpenedUrl simple;
  simple.OpenUrl(connection, kUrl, ports::kInternetReload);
  EXPECT_EQ(script_.flags, always | INTERNET_FLAG_RELOAD);
  // One retry would mean one address of a host that has several.
  EXPECT_EQ(
      std::count(script_.options.begin(), script_.options.end(), INTERNET_OPTION_CONNECT_RETRIES),
      0);
}

TEST_F(WinInet, AWindowAnswersWhileTheServerIsSilentAndACancelIsHeardWithinASecond) {
  const HWND window =
      CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  const auto real_clock = platform::MakeClock();
  ports_->clock = real_clock.get();
  for (const bool is_opening : {true, false}) {
    SCOPED_TRACE(is_opening ? "opening" : "reading");
    script_.silence_in_opening = is_opening ? 2500 : 0;
    script_.silence_in_reading = 2500;
    std::atomic<int> answers = 0;
    std::atomic<bool> is_over = false;
    std::thread asking([&] {
      while (!is_over) {
        DWORD_PTR result = 0;
        if (SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, 400, &result) != 0) ++answers;
        Sleep(50);
      }
    });
    ports::Clock& clock = *ports_->clock;
    const std::int64_t start = clock.TickCount();
    tests::Listener listener;
    listener.wants_cancel = [&] {
      ports_->front_end->RunPendingEvents();
      return clock.TickCount() - start >= 700;
    };
    EXPECT_EQ(tests::Download(listener, kUrl, sandbox_.Path("g")), "cancelled");
    EXPECT_LT(clock.TickCount() - start, 1700);
    is_over = true;
    asking.join();
    EXPECT_GE(answers, 4);
    LetLateCallsEnd();
  }
  DestroyWindow(window);
}

TEST_F(WinInet, TheSystemsLibraryIsTakenWhateverLiesBesideTheProgram) {
  const auto session = internet_->OpenSession({});
  ASSERT_TRUE(session) << session.code;
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(GetModuleHandleW(L"wininet.dll"), path, MAX_PATH);
  EXPECT_EQ(LowerCase(platform::FromWide(path)),
            LowerCase(platform::FromWide(platform::SystemFolder() + L"\\wininet.dll")));
}

}  // namespace
}  // namespace tmw
