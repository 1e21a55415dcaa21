#include "platform/windows/win_progress_view.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/windows/taskbar_progress.h"
#include "platform/windows/wide.h"
#include "platform/windows/windows_texts.h"
// The system's headers come first: this builds on them.
#include <commctrl.h>

namespace platform {
namespace {

// The bar's steps.
constexpr int kBarRange = 1000;

// Lengths for 96 dots per inch.
constexpr SIZE kClient{540, 164};
constexpr int kMargin = 16;
constexpr int kPicture = 48;
constexpr int kTextLeft = kMargin + kPicture + kMargin;
constexpr int kLine = 18;
constexpr int kStageTop = 11;
constexpr int kStageLine = 25;
constexpr int kBarTop = 42;
constexpr int kBarHeight = 14;
constexpr int kDetailTop = 64;       // 960 twips
constexpr int kDetailTopNoBar = 40;  // 600 twips
constexpr int kPaceTop = 86;

// Keeps an idle system awake for as long as one of these lives.
class Wakefulness {
 public:
  Wakefulness() { SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED); }
  Wakefulness(const Wakefulness&) = delete;
  Wakefulness& operator=(const Wakefulness&) = delete;
  ~Wakefulness() { SetThreadExecutionState(ES_CONTINUOUS); }
};

class WinProgressView final : public ports::ProgressView, private ViewWindow {
 public:
  explicit WinProgressView(OpenWindows& open)
      : ViewWindow(open, WS_MINIMIZEBOX, kClient), taskbar_(Get()) {
    const INITCOMMONCONTROLSEX controls{sizeof(controls), ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&controls);
    // A screen reader names the bar by the text before it.
    stage_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, kProgressStageId);
    bar_ = AddControl(PROGRESS_CLASSW, 0, kProgressBarId);
    counter_ = AddControl(L"STATIC", SS_RIGHT | SS_NOPREFIX | SS_CENTERIMAGE, kProgressCounterId);
    detail_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_PATHELLIPSIS, kProgressDetailId);
    pace_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, kProgressPaceId);
    step_ = AddControl(L"STATIC", SS_RIGHT | SS_NOPREFIX | SS_CENTERIMAGE, kProgressStepId);
    component_ =
        AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_PATHELLIPSIS, kProgressComponentId);
    unit_ = AddControl(L"STATIC", SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE, kProgressUnitId);
    button_ = AddButton(kProgressButtonId);
    SendMessageW(bar_, PBM_SETRANGE32, 0, kBarRange);
    Prepare();
    ShowBar(ports::BarKind::kNone);
  }

  void SetCaption(const std::string& text) override { SetControlText(Get(), text); }

  void SetStage(const std::string& text) override { ShowText(stage_, text); }

  void SetDetail(const std::string& text) override { ShowText(detail_, text); }

  void SetPicture(const std::string& name) override {
    if (name == picture_name_) return;
    picture_name_ = name;
    LoadStagePicture();
    const RECT place = PicturePlace();
    RedrawWindow(Get(), &place, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_NOCHILDREN);
  }

  void ShowBar(ports::BarKind kind) override {
    kind_ = kind;
    const int bar = ports::HasBar(kind) ? SW_SHOWNA : SW_HIDE;
    ShowWindow(bar_, bar);
    ShowWindow(pace_, bar);
    ShowWindow(counter_, ports::HasCounter(kind) ? SW_SHOWNA : SW_HIDE);
    ShowNotes();
    ShowInTaskbar();
    Arrange();
  }

  void SetProgress(double percent, const std::string& counter) override {
    percent_ = std::clamp(percent, 0.0, 100.0);
    SetBarPosition(static_cast<int>(std::lround(percent_ * kBarRange / 100)));
    SetControlText(counter_, counter);
    if (ports::HasCounter(kind_) && CounterWidth() > counter_width_) Arrange();
    ShowInTaskbar();
    PaintWhatIsDue();
  }

  void SetPace(const std::string& text) override { ShowText(pace_, text); }

  void SetNotes(const ports::ProgressNotes& notes) override {
    if (notes_.step == notes.step && notes_.unit == notes.unit &&
        notes_.component.empty() == notes.component.empty()) {
      notes_ = notes;
      ShowText(component_, notes.component);
      return;
    }
    notes_ = notes;
    SetControlText(step_, notes.step);
    SetControlText(component_, notes.component);
    SetControlText(unit_, notes.unit);
    ShowNotes();
    Arrange();
  }

  void SetButton(const std::string& caption, bool is_enabled) override {
    SetControlText(button_, caption);
    const bool had_focus = GetFocus() == button_ || GetFocus() == Get();
    EnableWindow(button_, is_enabled ? TRUE : FALSE);
    // Set beforehand: it is shown to a user who shuts the system down during a long step.
    if (is_enabled) {
      ShutdownBlockReasonDestroy(Get());
    } else {
      ShutdownBlockReasonCreate(Get(), windows_texts::kBusy);
    }
    // A disabled control would keep the focus, and Esc would reach no window.
    if (had_focus) SetFocus(is_enabled ? button_ : Get());
    Arrange();
  }

  void Run(ports::ProgressViewEvents& events) override {
    events_ = &events;
    is_closed_ = false;
    const Showing showing(*this);
    const Wakefulness wakefulness;
    Open().RunPending();
    events.OnShown();
    while (!is_closed_ && Get() != nullptr && Open().WaitAndRun()) {
    }
    events_ = nullptr;
  }

  void Close() override {
    is_closed_ = true;
    WakeLoop();
  }

  void RaiseRequests() override {
    if (events_ == nullptr) return;
    // Cleared first: the listener may ask a question, which processes events.
    if (std::exchange(is_stop_asked_, false)) events_->OnStop();
    if (std::exchange(is_cancel_asked_, false)) events_->OnCancel();
  }

 private:
  void LayOut(SIZE client) override {
    const int left = Scaled(kTextLeft);
    const int width = client.cx - Scaled(kMargin) - left;
    const bool has_bar = ports::HasBar(kind_);
    counter_width_ = ports::HasCounter(kind_) ? CounterWidth() : 0;
    const bool has_unit = counter_width_ != 0 && !notes_.unit.empty();
    const int unit_width = has_unit ? WidthOf(unit_) + Scaled(6) : 0;
    const int counter_left = left + width - unit_width - counter_width_;
    const int bar_width = counter_width_ == 0 ? width : counter_left - left - Scaled(12);
    const int detail_width = has_bar ? width : bar_width;  // a counter alone stands beside it
    const int counter_top = kBarTop + (kBarHeight - kLine) / 2;
    const int step_width = notes_.step.empty() ? 0 : WidthOf(step_);
    const int stage_width = step_width == 0 ? width : width - step_width - Scaled(12);
    Move(stage_, left, kStageTop, stage_width, kStageLine);
    Move(step_, left + width - step_width, kStageTop, step_width, kStageLine);
    Move(bar_, left, kBarTop, bar_width, kBarHeight);
    Move(counter_, counter_left, counter_top, counter_width_, kLine);
    Move(unit_, left + width - unit_width + Scaled(6), counter_top, unit_width - Scaled(6), kLine);
    Move(detail_, left, has_bar ? kDetailTop : kDetailTopNoBar, detail_width, kLine);
    // The component stands on the left half, if there is one.
    const int pace_left = notes_.component.empty() ? left : left + width / 2;
    Move(component_, left, kPaceTop, width / 2 - Scaled(12), kLine);
    Move(pace_, pace_left, kPaceTop, left + width - pace_left, kLine);
    PlaceFooterButton(button_, client.cx - Scaled(kMargin) - FooterButtonWidth(button_), client);
  }

  void ShowNotes() const {
    ShowWindow(step_, notes_.step.empty() ? SW_HIDE : SW_SHOWNA);
    ShowWindow(component_, notes_.component.empty() ? SW_HIDE : SW_SHOWNA);
    const bool has_unit = ports::HasCounter(kind_) && !notes_.unit.empty();
    ShowWindow(unit_, has_unit ? SW_SHOWNA : SW_HIDE);
  }

  int WidthOf(HWND control) const {
    wchar_t text[64] = {};
    GetWindowTextW(control, text, 64);
    return MeasureText(Get(), Font(), text).cx + Scaled(2);
  }

  // Left and width in pixels, the rest for 96 dots per inch.
  void Move(HWND control, int left, int top, int width, int height) const {
    MoveWindow(control, left, Scaled(top), width, Scaled(height), FALSE);
  }

  void SetFonts() override {
    stage_font_ = MakeMessageFont(Dpi(), 125);
    SendMessageW(stage_, WM_SETFONT, reinterpret_cast<WPARAM>(stage_font_.Get()), FALSE);
    LoadStagePicture();
  }

  void Draw(HDC dc) override {
    if (!picture_) return;
    const RECT place = PicturePlace();
    const int size = place.right - place.left;
    DrawIconEx(dc, place.left, place.top, picture_.Get(), size, size, 0, nullptr, DI_NORMAL);
  }

  int DefaultButton() override { return kProgressButtonId; }

  void OnCommand(int id) override {
    if (id != kProgressButtonId && id != IDCANCEL) return;
    is_cancel_asked_ = true;
    WakeLoop();
  }

  std::optional<LRESULT> OnMessage(UINT message, WPARAM /*parameter*/, LPARAM /*data*/) override {
    if (taskbar_.TakeMessage(message)) return 0;
    if (message != WM_QUERYENDSESSION) return std::nullopt;
    // The system waits with the reason on its screen and goes on when the run has ended.
    wchar_t stage[256] = {};
    GetWindowTextW(stage_, stage, 256);
    ShutdownBlockReasonCreate(Get(), stage);
    is_stop_asked_ = true;
    WakeLoop();
    return FALSE;
  }

  void ShowText(HWND control, const std::string& text) const {
    // A line end would be drawn as a character.
    std::string line = text;
    std::erase(line, '\r');
    std::replace(line.begin(), line.end(), '\n', ' ');
    SetControlText(control, line);
    PaintWhatIsDue();
  }

  // All of it, with what another window has uncovered while no messages were processed.
  void PaintWhatIsDue() const {
    RedrawWindow(Get(), nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
  }

  // The system animates the bar forward but moves it back at once: one step too far and back shows
  // the value itself.
  void SetBarPosition(int position) {
    if (position == position_) return;
    position_ = position;
    const auto value = static_cast<WPARAM>(position);
    SendMessageW(bar_, PBM_SETRANGE32, 0, kBarRange + 1);
    SendMessageW(bar_, PBM_SETPOS, value + 1, 0);
    SendMessageW(bar_, PBM_SETPOS, value, 0);
    SendMessageW(bar_, PBM_SETRANGE32, 0, kBarRange);
  }

  void ShowInTaskbar() {
    taskbar_.Set(ports::HasBar(kind_) ? std::optional(static_cast<int>(percent_)) : std::nullopt);
  }

  // Room for the counter and for "maximum/maximum", so that the bar keeps its length while the
  // counter grows.
  int CounterWidth() const {
    wchar_t text[64] = {};
    GetWindowTextW(counter_, text, 64);
    const std::wstring counter = text;
    const std::wstring most = counter.substr(counter.find(L'/') + 1);
    const std::wstring last = most + L"/" + most;
    const LONG widest = std::max(MeasureText(Get(), Font(), counter.c_str()).cx,
                                 MeasureText(Get(), Font(), last.c_str()).cx);
    return widest + Scaled(2);
  }

  RECT PicturePlace() const {
    const int corner = Scaled(kMargin);
    return {corner, corner, corner + Scaled(kPicture), corner + Scaled(kPicture)};
  }

  void LoadStagePicture() {
    picture_ = picture_name_.empty()
                   ? UniqueIcon()
                   : LoadPicture(ToWide("stage_" + picture_name_).c_str(), Scaled(kPicture));
  }

  ports::ProgressViewEvents* events_ = nullptr;
  bool is_closed_ = false;
  bool is_cancel_asked_ = false;
  bool is_stop_asked_ = false;
  ports::BarKind kind_ = ports::BarKind::kNone;
  double percent_ = 0;
  int position_ = 0;
  int counter_width_ = 0;
  ports::ProgressNotes notes_;
  std::string picture_name_;
  UniqueIcon picture_;
  UniqueFont stage_font_;
  TaskbarProgress taskbar_;
  HWND stage_ = nullptr;
  HWND bar_ = nullptr;
  HWND counter_ = nullptr;
  HWND detail_ = nullptr;
  HWND pace_ = nullptr;
  HWND step_ = nullptr;
  HWND component_ = nullptr;
  HWND unit_ = nullptr;
  HWND button_ = nullptr;
};

}  // namespace

std::unique_ptr<ports::ProgressView> MakeWinProgressView(OpenWindows& open) {
  return std::make_unique<WinProgressView>(open);
}

}  // namespace platform
