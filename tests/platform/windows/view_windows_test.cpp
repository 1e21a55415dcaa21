#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "platform/factories.h"
#include "platform/windows/advice_box.h"
#include "platform/windows/input_box.h"
#include "platform/windows/wide.h"
#include "platform/windows/win_error_view.h"
#include "platform/windows/win_progress_view.h"
#include "platform/windows/windows_headers.h"
#include "ports/front_end.h"
// The system's headers come first: this builds on them.
#include <commctrl.h>

namespace platform {
namespace {

std::string TextOf(HWND window, int id) {
  wchar_t text[4096] = {};
  const UINT length = GetDlgItemTextW(window, id, text, 4096);
  return FromWide({text, length});
}

// The window with this title, once it is there.
HWND AwaitWindow(const std::string& title) {
  HWND window = nullptr;
  for (int i = 0; i < 1000 && window == nullptr; ++i, Sleep(10))
    window = FindWindowW(nullptr, ToWide(title).c_str());
  return window;
}

void Press(std::initializer_list<int> keys) {
  std::vector<INPUT> inputs;
  const auto add = [&](int key, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = static_cast<WORD>(key);
    input.ki.dwFlags = flags;
    inputs.push_back(input);
  };
  for (const int key : keys)
    add(key, 0);
  for (const int key : keys)
    add(key, KEYEVENTF_KEYUP);
  SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
}

void Click(HWND control) {
  RECT place{};
  GetWindowRect(control, &place);
  SetCursorPos((place.left + place.right) / 2, (place.top + place.bottom) / 2);
  INPUT inputs[2] = {};
  inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
  SendInput(2, inputs, sizeof(INPUT));
}

std::string TextOnClipboard() {
  OpenClipboard(nullptr);
  const HANDLE block = GetClipboardData(CF_UNICODETEXT);
  const auto* const text = static_cast<const wchar_t*>(GlobalLock(block));
  std::string result = text == nullptr ? "" : FromWide(text);
  GlobalUnlock(block);
  CloseClipboard();
  return result;
}

// A window changes its screen for one of another scale.
void ChangeScale(HWND window, int dpi) {
  SIZE size{};
  SendMessageW(window, 0x02E4 /* WM_GETDPISCALEDSIZE */, static_cast<WPARAM>(dpi),
               reinterpret_cast<LPARAM>(&size));
  RECT place{10, 10, 10 + size.cx, 10 + size.cy};
  SendMessageW(window, WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&place));
}

// Visible controls lie inside their window and do not overlap.
void ExpectTidy(HWND window, const std::string& what) {
  RECT client{};
  GetClientRect(window, &client);
  std::vector<RECT> places;
  for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
       child = GetWindow(child, GW_HWNDNEXT)) {
    if (IsWindowVisible(child) == FALSE) continue;
    RECT place{};
    RECT shared{};
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    IntersectRect(&shared, &place, &client);
    EXPECT_TRUE(EqualRect(&shared, &place) && !IsRectEmpty(&place)) << what;
    for (const RECT& other : places)
      EXPECT_FALSE(IntersectRect(&shared, &place, &other)) << what;
    places.push_back(place);
  }
  EXPECT_GE(places.size(), 3U) << what;
}

class Windows : public testing::Test,
                protected ports::ProgressViewEvents,
                protected ports::ErrorViewEvents {
 protected:
  void OnShown() override {
    script_();
    if (progress_) progress_->Close();
  }
  void OnCancel() override { log_ += "cancel "; }
  void OnStop() override { log_ += "stop "; }
  void OnDetails() override { log_ += "details "; }
  void OnCopy() override { log_ += "copy "; }

  void InProgressWindow(std::function<void()> script) {
    script_ = std::move(script);
    progress_ = front_end_->MakeProgressView();
    progress_->SetCaption("Окно работы");
    progress_->SetButton("Закрыть", true);
    window_ = FindWindowW(nullptr, ToWide("Окно работы").c_str());
    ASSERT_NE(window_, nullptr);
    progress_->Run(*this);
    EXPECT_FALSE(IsWindowVisible(window_));
    progress_.reset();
  }

  // The script ends by closing the window.
  void InErrorWindow(std::function<void()> script) {
    running_ = this;
    script_ = std::move(script);
    error_ = front_end_->MakeErrorView();
    error_->SetTexts({"Ошибка", "Случилось:", "Подробно", "Беда & одна", full_, "Копировать",
                      "Закрыть", "Проверьте подключение компьютера к Интернету.",
                      "Журнал:", "C:\\п\\TmWebUpdate.log"});
    error_->SetDetailView(false, "Подробнее  >>");
    window_ = FindWindowW(nullptr, ToWide("Ошибка").c_str());
    ASSERT_NE(window_, nullptr);
    SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR timer, DWORD) {
      KillTimer(nullptr, timer);
      running_->script_();
    });
    error_->Run(*this);
    EXPECT_FALSE(IsWindowVisible(window_));
    error_.reset();
  }

  // What is logged until the expected entry appears, or for a while.
  std::string Logged(const std::string& expected) {
    for (int i = 0; i < (expected.empty() ? 40 : 600) && (i < 10 || log_ != expected); ++i) {
      front_end_->RunPendingEvents();
      Sleep(5);
    }
    return std::exchange(log_, "");
  }

  HWND Control(int id) { return GetDlgItem(window_, id); }

  std::unique_ptr<ports::FrontEnd> front_end_ = MakeFrontEnd();
  std::unique_ptr<ports::ProgressView> progress_;
  std::unique_ptr<ports::ErrorView> error_;
  HWND window_ = nullptr;
  std::string full_ = "Беда\r\n——\r\nСтек:\r\n" + std::string(3000, 'x');
  std::string log_;
  std::function<void()> script_;
  static inline Windows* running_ = nullptr;
};

TEST_F(Windows, EveryWayToCancelAsksOnceAndClosesNothing) {
  const struct {
    const char* what;
    bool is_enabled;
    std::function<void()> act;
    const char* expected;
  } cases[] = {
      {"click", true, [this] { Click(Control(kProgressButtonId)); }, "cancel "},
      {"Enter", true, [] { Press({VK_RETURN}); }, "cancel "},
      {"space", true, [] { Press({VK_SPACE}); }, "cancel "},
      {"Esc", true, [] { Press({VK_ESCAPE}); }, "cancel "},
      {"cross", true, [this] { PostMessageW(window_, WM_SYSCOMMAND, SC_CLOSE, 0); }, "cancel "},
      {"click, disabled", false, [this] { Click(Control(kProgressButtonId)); }, ""},
      {"Enter, disabled", false, [] { Press({VK_RETURN}); }, ""},
      {"Esc, disabled", false, [] { Press({VK_ESCAPE}); }, "cancel "},
      {"cross, disabled", false, [this] { PostMessageW(window_, WM_CLOSE, 0, 0); }, "cancel "},
      {"Enter, enabled again", true, [] { Press({VK_RETURN}); }, "cancel "},
      {"end of session", true,
       [this] { EXPECT_EQ(SendMessageW(window_, WM_QUERYENDSESSION, 0, 0), FALSE); }, "stop "},
  };
  InProgressWindow([&] {
    for (const auto& c : cases) {
      progress_->SetButton("Отмена", c.is_enabled);
      c.act();
      EXPECT_EQ(Logged(c.expected), c.expected) << c.what;
      EXPECT_TRUE(IsWindowVisible(window_)) << c.what;
    }
  });
}

TEST_F(Windows, WhatIsSetIsPaintedWithoutEvents) {
  InProgressWindow([&] {
    const HDC dc = GetDC(window_);
    const int dpi = GetDeviceCaps(dc, LOGPIXELSX);
    const auto picture = [&] {
      std::vector<COLORREF> pixels;
      for (int i = 0; i < 48 * 48; ++i)
        pixels.push_back(GetPixel(dc, (16 + i % 48) * dpi / 96, (16 + i / 48) * dpi / 96));
      return pixels;
    };
    std::vector<std::vector<COLORREF>> seen = {picture()};
    for (const char* name : {"download", "scan", "dbnew", "dbgear", "trash", "install", "brush"}) {
      progress_->SetPicture(name);
      EXPECT_EQ(std::count(seen.begin(), seen.end(), picture()), 0) << name;
      seen.push_back(picture());
    }
    progress_->SetPicture("");
    EXPECT_EQ(picture(), seen[0]);
    ReleaseDC(window_, dc);

    progress_->ShowBar(ports::BarKind::kBarWithCounter);
    progress_->SetStage("Загрузка & установка");
    progress_->SetDetail("C:\\путь\\файл");
    progress_->SetProgress(45.67, "12/34");
    progress_->SetPace("1 МБ/с");
    progress_->SetNotes({"этап 2 из 6", "Файл & Ко.dll", "байт"});
    progress_->SetButton("Отмена", false);
    std::string texts;
    for (int id = kProgressStageId; id <= kProgressUnitId; ++id) {
      texts += TextOf(window_, id) + "|";
      EXPECT_FALSE(GetUpdateRect(Control(id), nullptr, FALSE)) << id;
    }
    EXPECT_EQ(
        texts,
        "Загрузка & установка||12/34|C:\\путь\\файл|1 МБ/с|Отмена|этап 2 из 6|Файл & Ко.dll|байт|");
    EXPECT_EQ(SendMessageW(Control(kProgressBarId), PBM_GETPOS, 0, 0), 457);
    progress_->SetProgress(100, "34/34");
    EXPECT_EQ(SendMessageW(Control(kProgressBarId), PBM_GETPOS, 0, 0), 1000);
  });
}

TEST_F(Windows, ControlsNeverOverlapAtAnyScale) {
  InProgressWindow([&] {
    for (const int dpi : {96, 120, 144, 192, 96}) {
      ChangeScale(window_, dpi);
      for (int kind = 0; kind <= int(ports::BarKind::kCounter); ++kind) {
        progress_->ShowBar(ports::BarKind(kind));
        progress_->SetProgress(50, "1 234 567 890/2 147 483 647");
        progress_->SetNotes(kind % 2 == 0 ? ports::ProgressNotes{}
                                          : ports::ProgressNotes{"этап 2 из 6", "a.dll", "байт"});
        ExpectTidy(window_, std::to_string(dpi) + " dpi, bar " + std::to_string(kind));
        RECT place{};
        GetWindowRect(Control(kProgressDetailId), &place);
        MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&place), 2);
        EXPECT_EQ(place.top * 1440 / dpi, !ports::HasBar(ports::BarKind(kind)) ? 600 : 960);
      }
    }
  });
  InErrorWindow([&] {
    for (const int dpi : {96, 120, 192}) {
      ChangeScale(window_, dpi);
      for (const int width : {100, 2000}) {  // the smallest it takes, and a large one
        SetWindowPos(window_, nullptr, 0, 0, width, width / 2, SWP_NOMOVE | SWP_NOZORDER);
        for (const bool is_detailed : {false, true}) {
          error_->SetDetailView(is_detailed, "Подробнее  >>");
          ExpectTidy(window_, std::to_string(dpi) + " dpi, width " + std::to_string(width));
        }
      }
    }
    Press({VK_ESCAPE});
  });
}

TEST_F(Windows, QuestionsBelongToTheOpenWindow) {
  InProgressWindow([&] {
    bool is_owned = false;
    std::thread user([&] {
      const HWND box = AwaitWindow("Вопрос");
      is_owned = GetWindow(box, GW_OWNER) == window_ && IsWindowEnabled(window_) == FALSE;
      PostMessageW(box, WM_COMMAND, IDYES, 0);
    });
    EXPECT_TRUE(front_end_->AskYesNo("Вопрос", "Прекратить?"));
    user.join();
    EXPECT_TRUE(is_owned);
    EXPECT_TRUE(IsWindowEnabled(window_));
    EXPECT_EQ(Logged(""), "");
  });
}

TEST_F(Windows, AMessageWithAdviceCopiesAllThatItShows) {
  InProgressWindow([&] {
    std::string shown;
    bool stays_open = false;
    std::thread user([&] {
      const HWND box = AwaitWindow("Сообщение");
      EnumChildWindows(
          box,
          [](HWND child, LPARAM all) {
            wchar_t text[256] = {};
            GetWindowTextW(child, text, 256);
            *reinterpret_cast<std::string*>(all) += FromWide(text) + "|";
            return TRUE;
          },
          reinterpret_cast<LPARAM>(&shown));
      SendMessageW(box, TDM_CLICK_BUTTON, kAdviceCopyId, 0);
      stays_open = IsWindowVisible(box) != FALSE && GetWindow(box, GW_OWNER) == window_;
      SendMessageW(box, TDM_CLICK_BUTTON, IDOK, 0);
    });
    front_end_->ShowMessage(ports::MessageKind::kWarning, "Сообщение", "Беда", "Совет");
    user.join();
    EXPECT_NE(shown.find("Копировать"), std::string::npos) << shown;
    EXPECT_TRUE(stays_open);
    EXPECT_EQ(TextOnClipboard(), "Сообщение\r\n\r\nБеда\r\n\r\nСовет");
  });
}

TEST_F(Windows, TheErrorWindowShowsOneTextAndHearsItsButtons) {
  InErrorWindow([&] {
    EXPECT_EQ(TextOf(window_, kErrorShortId), "Беда & одна");
    EXPECT_EQ(TextOf(window_, kErrorFullId), full_);
    EXPECT_EQ(TextOf(window_, kErrorLogPathId), "C:\\п\\TmWebUpdate.log");
    EXPECT_EQ(GetWindow(Control(kErrorFullId), GW_HWNDPREV), Control(kErrorFullNameId));
    const auto seen = [&] {
      std::string ids;
      for (const int id : {kErrorLabelId, kErrorShortId, kErrorAdviceId, kErrorFullId})
        ids += IsWindowVisible(Control(id)) ? '+' : '-';
      return ids + TextOf(window_, kErrorDetailsId);
    };
    EXPECT_EQ(seen(), "+++-Подробнее  >>");
    Click(Control(kErrorDetailsId));
    EXPECT_EQ(Logged("details "), "details ");
    error_->SetDetailView(true, "Подробнее  <<");
    EXPECT_EQ(seen(), "---+Подробнее  <<");
    Click(Control(kErrorCopyId));
    EXPECT_EQ(Logged("copy "), "copy ");
    Press({VK_CONTROL, 'C'});
    EXPECT_EQ(Logged("copy "), "copy ");
    // Tab passes through the texts: from "copy" to "close", to both texts, to "details".
    Press({VK_TAB});
    Press({VK_TAB});
    Press({VK_TAB});
    Press({VK_TAB});
    Press({VK_SPACE});
    EXPECT_EQ(Logged("details "), "details ");
    Press({VK_RETURN});
    EXPECT_EQ(Logged("details "), "details ");
    PostMessageW(window_, WM_CLOSE, 0, 0);
  });
}

TEST_F(Windows, TextReachesTheClipboardAlsoWhenItIsHeld) {
  InErrorWindow([&] {
    std::atomic<bool> is_held{false};
    std::thread holder([&] {
      OpenClipboard(nullptr);
      is_held = true;
      Sleep(200);
      CloseClipboard();
    });
    while (!is_held)
      Sleep(1);
    EXPECT_TRUE(error_->CopyText("Строка №1\r\n— вторая"));
    holder.join();
    EXPECT_EQ(TextOnClipboard(), "Строка №1\r\n— вторая");
    Press({VK_CONTROL, 'A'});
    EXPECT_EQ(Logged(""), "");
    Press({VK_CONTROL, 'C'});  // a selection is copied by the text box itself
    EXPECT_EQ(Logged(""), "");
    EXPECT_EQ(TextOnClipboard(), "Беда & одна");
    Press({VK_ESCAPE});
  });
}

TEST(InputBox, GivesTheTypedLineOrNothing) {
  const struct {
    const char* typed;
    int button;  // 0: the keyboard
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
    std::string seen;
    std::thread user([&] {
      const HWND box = AwaitWindow("Пароль архива");
      Sleep(50);
      const HWND line = GetDlgItem(box, kInputBoxLineId);
      GUITHREADINFO state{};
      state.cbSize = sizeof(state);
      GetGUIThreadInfo(GetWindowThreadProcessId(box, nullptr), &state);
      seen = TextOf(box, kInputBoxPromptId) + "|" + TextOf(box, IDOK) + "|" +
             TextOf(box, IDCANCEL) + (state.hwndFocus == line ? "|focus" : "") +
             ((GetWindowLongPtrW(line, GWL_STYLE) & ES_PASSWORD) != 0 ? "|secret" : "");
      for (const wchar_t character : ToWide(c.typed))
        PostMessageW(line, WM_CHAR, character, 0);
      if (c.button != 0) {
        PostMessageW(GetDlgItem(box, c.button), BM_CLICK, 0, 0);
      } else {
        PostMessageW(line, WM_KEYDOWN, c.key, 0);
      }
    });
    const auto answer = front_end->AskText("Пароль архива", "Введите A&B:\r\nвторая", c.is_secret);
    user.join();
    EXPECT_EQ(answer, c.result) << c.typed;
    EXPECT_EQ(seen, std::string("Введите A&B:\r\nвторая|OK|Отмена|focus") +
                        (c.is_secret ? "|secret" : ""));
  }
}

TEST(FrontEndEvents, PendingEventsRunAndAnEndingStaysAsked) {
  static int ticks = 0;
  const auto front_end = MakeFrontEnd();
  front_end->RunPendingEvents();
  SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR, DWORD) { ++ticks; });
  for (int i = 0; i < 300 && ticks == 0; ++i, Sleep(10))
    front_end->RunPendingEvents();
  EXPECT_GT(ticks, 0);
  PostQuitMessage(7);
  front_end->RunPendingEvents();
  MSG message{};
  EXPECT_EQ(GetMessageW(&message, nullptr, 0, 0), 0);
  EXPECT_EQ(message.wParam, 7U);
}

}  // namespace
}  // namespace platform
