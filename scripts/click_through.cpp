// Does on a Windows desktop what a user would: starts programs, follows the updater's windows,
// clicks the button that goes on in every box, and, where that is asked for, ends the updater in
// the middle of its work. For scripts/update_under_wine.sh. The arguments are a folder for the log
// and for pictures of the screen, then steps:
//   run COMMAND              until it ends; any exit code but 0 ends this program too
//   update NAME COMMAND      an updater with all that it starts, until the last one has ended
//   kill NAME STAGE COMMAND  the same, but every updater is ended when its window shows that stage
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/windows/handles.h"
#include "platform/windows/wide.h"
#include "platform/windows/win_progress_view.h"
#include "platform/windows/windows_headers.h"
// The system's headers come first: these build on them.
#include <shellapi.h>
#include <tlhelp32.h>

namespace {

using platform::FromWide;
using platform::ToWide;
using Clock = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(150);  // for one step
constexpr auto kBetweenClicks = std::chrono::milliseconds(700);
constexpr auto kDrawing = std::chrono::milliseconds(150);  // until a window shows what it was given
constexpr DWORD kGlance = 5;                               // milliseconds between two looks
constexpr const wchar_t* kUpdater = L"TmWebUpdate.exe";
constexpr const wchar_t* kTool = L"regsvr32.exe";
// What goes on, of the buttons that a box may have.
constexpr const char* kButtons[] = {"Да", "OK", "ОК", "Закрыть"};

std::string folder;  // of the log

void Log(const std::string& line) {
  std::ofstream(platform::ToWide(folder + "\\log.txt").c_str(), std::ios::app | std::ios::binary)
      << line << "\n";
}

// The window manager's own copy of the text: asking the window would wait for its program.
std::string TextOf(HWND window) {
  wchar_t text[4096] = {};
  const int length = InternalGetWindowText(window, text, 4096);
  std::string utf8 = FromWide({text, static_cast<std::size_t>(std::max(length, 0))});
  std::erase(utf8, '&');
  std::replace(utf8.begin(), utf8.end(), '\n', ' ');
  std::erase(utf8, '\r');
  return utf8;
}

std::wstring ClassOf(HWND window) {
  wchar_t name[64] = {};
  GetClassNameW(window, name, 64);
  return name;
}

// The part of the screen that these windows cover, as a picture.
void TakePicture(const std::string& name, const std::vector<HWND>& windows) {
  RECT part{};
  for (HWND window : windows) {
    RECT place{};
    GetWindowRect(window, &place);
    UnionRect(&part, &part, &place);
  }
  const int width = part.right - part.left;
  const int height = part.bottom - part.top;
  if (width <= 0 || height <= 0) return;
  BITMAPINFOHEADER about{};
  about.biSize = sizeof(about);
  about.biWidth = width;
  about.biHeight = height;
  about.biPlanes = 1;
  about.biBitCount = 32;
  const HDC screen = GetDC(nullptr);
  const HDC memory = CreateCompatibleDC(screen);
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(screen, reinterpret_cast<BITMAPINFO*>(&about), DIB_RGB_COLORS,
                                    &bits, nullptr, 0);
  const HGDIOBJ old = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, width, height, screen, part.left, part.top, SRCCOPY);
  const auto bytes = static_cast<DWORD>(width) * static_cast<DWORD>(height) * 4;
  BITMAPFILEHEADER head{};
  head.bfType = 0x4D42;
  head.bfOffBits = sizeof(head) + sizeof(about);
  head.bfSize = head.bfOffBits + bytes;
  std::ofstream file(ToWide(folder + "\\" + name + ".bmp").c_str(), std::ios::binary);
  file.write(reinterpret_cast<const char*>(&head), sizeof(head));
  file.write(reinterpret_cast<const char*>(&about), sizeof(about));
  file.write(static_cast<const char*>(bits), bytes);
  SelectObject(memory, old);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
}

struct Processes {
  std::set<DWORD> updaters;
  std::set<DWORD> tools;
};

Processes RunningNow() {
  Processes found;
  const platform::UniqueKernelHandle all(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  for (BOOL is_there = Process32FirstW(all.Get(), &entry); is_there != FALSE;
       is_there = Process32NextW(all.Get(), &entry)) {
    if (lstrcmpiW(entry.szExeFile, kUpdater) == 0) found.updaters.insert(entry.th32ProcessID);
    if (lstrcmpiW(entry.szExeFile, kTool) == 0) found.tools.insert(entry.th32ProcessID);
  }
  return found;
}

void EndUpdaters() {
  for (Processes now = RunningNow(); !now.updaters.empty(); now = RunningNow()) {
    for (const DWORD id : now.updaters) {
      const platform::UniqueKernelHandle process(
          OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id));
      if (TerminateProcess(process.Get(), 1) != FALSE) WaitForSingleObject(process.Get(), 5000);
    }
  }
}

std::vector<HWND> WindowsOf(const std::set<DWORD>& ids) {
  struct Search {
    const std::set<DWORD>& ids;
    std::vector<HWND> found = {};
  } search{ids};
  EnumWindows(
      [](HWND window, LPARAM parameter) -> BOOL {
        auto& asked = *reinterpret_cast<Search*>(parameter);
        DWORD id = 0;
        GetWindowThreadProcessId(window, &id);
        if (IsWindowVisible(window) != FALSE && asked.ids.contains(id))
          asked.found.push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&search));
  return search.found;
}

std::vector<HWND> ChildrenOf(HWND window) {
  std::vector<HWND> children;
  EnumChildWindows(
      window,
      [](HWND child, LPARAM parameter) -> BOOL {
        if (IsWindowVisible(child) != FALSE)
          reinterpret_cast<std::vector<HWND>*>(parameter)->push_back(child);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&children));
  return children;
}

// With the mouse, where the button is seen.
void Click(HWND button) {
  RECT place{};
  GetWindowRect(button, &place);
  SetCursorPos((place.left + place.right) / 2, (place.top + place.bottom) / 2);
  INPUT inputs[2] = {};
  inputs[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  inputs[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
  SendInput(2, inputs, sizeof(INPUT));
}

// One updater with all that it starts.
class Following {
 public:
  Following(std::string name, std::string last_stage)
      : name_(std::move(name)), last_stage_(std::move(last_stage)) {}

  // Returns false if that stage was to come and did not, or the updaters do not end.
  bool Run() {
    const Clock::time_point start = Clock::now();
    for (Processes now = RunningNow(); !now.updaters.empty(); now = RunningNow()) {
      windows_ = WindowsOf(now.updaters);
      for (const DWORD id : now.tools) {
        if (tools_.insert(id).second) Log(name_ + "|started|" + FromWide(kTool));
      }
      if (picture_time_ && Clock::now() > *picture_time_) ShowWhatIsSeen();
      for (HWND window : windows_) {
        if (!Look(window)) continue;
        EndUpdaters();
        Log(name_ + "|ended|" + last_stage_);
        return true;
      }
      if (Clock::now() - start > kPatience) {
        TakePicture(name_ + "-stuck", windows_);
        EndUpdaters();
        Log(name_ + "|stuck");
        return false;
      }
      Sleep(kGlance);
    }
    Log(name_ + "|over");
    return last_stage_.empty();
  }

 private:
  // Returns true at the stage that is the last one.
  bool Look(HWND window) {
    const HWND stage = GetDlgItem(window, platform::kProgressStageId);
    const HWND bar = GetDlgItem(window, platform::kProgressBarId);
    if (ClassOf(window) != L"#32770" && stage != nullptr && bar != nullptr) {
      const std::string text = TextOf(stage);
      if (text.empty() || text == stage_) return false;
      if (text == last_stage_) return true;
      stage_ = text;
      Log(name_ + "|stage|" + text);
      picture_time_ = Clock::now() + kDrawing;
      return false;
    }
    if (IsWindowEnabled(window) != FALSE) GoOn(window);
    return false;
  }

  // Pictures of runs that are not cut short.
  void ShowWhatIsSeen() {
    picture_time_.reset();
    if (!last_stage_.empty()) return;
    char number[8] = {};
    std::snprintf(number, sizeof(number), "-%02d", ++pictures_);
    TakePicture(name_ + number, windows_);
  }

  void GoOn(HWND window) {
    if (window == clicked_ && Clock::now() < next_click_) return;
    HWND next = nullptr;
    std::string texts;
    for (HWND child : ChildrenOf(window)) {
      const std::string text = TextOf(child);
      if (text.empty()) continue;
      texts += "|" + text;
      const bool goes_on =
          std::find(std::begin(kButtons), std::end(kButtons), text) != std::end(kButtons);
      if (goes_on && next == nullptr && IsWindowEnabled(child) != FALSE) next = child;
    }
    if (next == nullptr) return;
    if (window != clicked_) {
      std::this_thread::sleep_for(kDrawing);
      Log(name_ + "|box|" + TextOf(window) + texts);
      ShowWhatIsSeen();
    }
    Click(next);
    clicked_ = window;
    next_click_ = Clock::now() + kBetweenClicks;
  }

  std::string name_;
  std::string last_stage_;
  std::string stage_;
  std::vector<HWND> windows_;
  int pictures_ = 0;
  std::optional<Clock::time_point> picture_time_;
  std::set<DWORD> tools_;
  HWND clicked_ = nullptr;
  Clock::time_point next_click_;
};

// Starts a program in the folder of its file; returns nothing if it cannot be started.
platform::UniqueKernelHandle Start(const std::string& command) {
  std::wstring line = ToWide(command);
  STARTUPINFOW wishes{};
  wishes.cb = sizeof(wishes);
  PROCESS_INFORMATION started{};
  if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &wishes,
                     &started) == FALSE) {
    Log("cannot be started: " + command);
    return {};
  }
  CloseHandle(started.hThread);
  return platform::UniqueKernelHandle(started.hProcess);
}

bool Follow(const std::string& name, const std::string& stage, const std::string& command) {
  return Start(command) && Following(name, stage).Run();
}

bool Run(const std::string& command) {
  const platform::UniqueKernelHandle process = Start(command);
  DWORD code = 1;
  if (!process || WaitForSingleObject(process.Get(), 60'000) != WAIT_OBJECT_0 ||
      GetExitCodeProcess(process.Get(), &code) == FALSE || code != 0) {
    Log("failed (" + std::to_string(code) + "): " + command);
    return false;
  }
  return true;
}

}  // namespace

int main() {
  // A connection to the screen for the whole time: without any the screen is taken away.
  const HWND own = CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  if (own == nullptr) return 1;
  int count = 0;
  wchar_t** const words = CommandLineToArgvW(GetCommandLineW(), &count);
  const auto word = [&](int i) { return i < count ? FromWide(words[i]) : std::string(); };
  folder = word(1);
  // The updater's temporary folder and log lie there too: nothing is left over from other runs.
  for (const char* const name : {"TMP", "TEMP", "LOCALAPPDATA"})
    SetEnvironmentVariableW(ToWide(name).c_str(), ToWide(folder + "\\tmp").c_str());
  for (int i = 2; i < count;) {
    const std::string verb = word(i);
    const bool is_done = verb == "run"      ? Run(word(i + 1))
                         : verb == "update" ? Follow(word(i + 1), "", word(i + 2))
                         : verb == "kill"   ? Follow(word(i + 1), word(i + 2), word(i + 3))
                                            : false;
    if (!is_done) {
      std::fprintf(stderr, "click_through: step %d failed\n", i);
      return 1;
    }
    i += verb == "run" ? 2 : verb == "update" ? 3 : 4;
  }
  return 0;
}
