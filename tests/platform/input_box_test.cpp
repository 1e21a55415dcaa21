#include "platform/windows/input_box.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/front_end.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_headers.h"

namespace platform {
namespace {

// The user: finds the box, notes what it shows, types and presses a button or a key.
struct User {
  std::string title;
  std::string typed;
  int button = 0;    // 0: the keyboard
  WPARAM key = 0;    // a virtual key, to the line
  std::string seen;  // prompt, focus, buttons, whether the line is secret

  void Act() {
    HWND box = nullptr;
    for (int i = 0; i < 1000 && box == nullptr; ++i) {
      Sleep(10);
      box = FindWindowW(nullptr, ToWide(title).c_str());
    }
    ASSERT_NE(box, nullptr);
    Sleep(50);
    HWND line = GetDlgItem(box, kInputBoxLineId);
    GUITHREADINFO state{};
    state.cbSize = sizeof(state);
    GetGUIThreadInfo(GetWindowThreadProcessId(box, nullptr), &state);
    seen = TextOf(box, kInputBoxPromptId) + "|" + TextOf(box, IDOK) + "|" + TextOf(box, IDCANCEL) +
           (state.hwndFocus == line ? "|focus" : "") +
           ((GetWindowLongPtrW(line, GWL_STYLE) & ES_PASSWORD) != 0 ? "|secret" : "");
    for (const wchar_t c : ToWide(typed))
      PostMessageW(line, WM_CHAR, c, 0);
    if (button != 0) {
      PostMessageW(GetDlgItem(box, button), BM_CLICK, 0, 0);
    } else {
      PostMessageW(line, WM_KEYDOWN, key, 0);
    }
  }

  static std::string TextOf(HWND box, int id) {
    wchar_t text[256] = {};
    const UINT length = GetDlgItemTextW(box, id, text, 256);
    return FromWide({text, length});
  }
};

TEST(InputBox, GivesTheTypedLineOrNothing) {
  const struct {
    const char* typed;
    int button;
    WPARAM key;
    bool is_secret;
    std::optional<std::string> result;
  } cases[] = {
      {"Пароль & №", IDOK, 0, false, "Пароль & №"},
      {"тайна", 0, VK_RETURN, true, "тайна"},
      {"", IDOK, 0, true, ""},
      {"abc", IDCANCEL, 0, false, std::nullopt},
      {"abc", 0, VK_ESCAPE, true, std::nullopt},
  };
  const auto front_end = MakeFrontEnd();
  for (const auto& c : cases) {
    User user{"Пароль архива", c.typed, c.button, c.key, ""};
    std::thread thread([&] { user.Act(); });
    const auto answer = front_end->AskText(user.title, "Введите A&B:\r\nвторая", c.is_secret);
    thread.join();
    EXPECT_EQ(answer, c.result) << c.typed;
    EXPECT_EQ(user.seen, std::string("Введите A&B:\r\nвторая|OK|Отмена|focus") +
                             (c.is_secret ? "|secret" : ""));
  }
}

std::atomic<int> ticks{0};

void CALLBACK OnTick(HWND /*window*/, UINT /*message*/, UINT_PTR /*timer*/, DWORD /*time*/) {
  ++ticks;
}

TEST(FrontEndEvents, PendingEventsRunAndAnEndingStaysAsked) {
  const auto front_end = MakeFrontEnd();
  front_end->RunPendingEvents();
  SetTimer(nullptr, 0, 10, OnTick);
  for (int i = 0; i < 300 && ticks == 0; ++i) {
    Sleep(10);
    front_end->RunPendingEvents();
  }
  EXPECT_GT(ticks, 0);
  PostQuitMessage(7);
  front_end->RunPendingEvents();
  MSG message{};
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
  EXPECT_EQ(message.wParam, 7U);
}

}  // namespace
}  // namespace platform
