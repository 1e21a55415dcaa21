#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/factories.h"
#include "ports/front_end.h"
#include "ports/host.h"
#include "transfer/inet_file_downloader.h"
#include "ui/downloading_form.h"

// Downloads one URL under the window of a run and prints the window's share of the processor time.
// Counted is what each call takes that the run makes to its window, as the engine makes it for
// every chunk: by the thread's processor time where the window paints; by the clock, which is
// cheaper to read, for the hundred thousand calls around it. Fails above the limit.
//   window_share URL FOLDER BYTES
// The window is the one that the environment chooses; the program runs on a terminal of its own.
namespace {

constexpr double kMaxPercent = 3;
constexpr int kCalibrations = 200000;

double Seconds(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double Clock() {
  return Seconds(CLOCK_MONOTONIC);
}

// What reading the clock around a call adds to it.
double CostOfMeasuring() {
  double sum = 0;
  for (int i = 0; i < kCalibrations; ++i) {
    const double start = Clock();
    sum += Clock() - start;
  }
  return sum / kCalibrations;
}

// A window that passes everything on and counts what painting takes.
class MeasuredView final : public ports::ProgressView {
 public:
  explicit MeasuredView(std::unique_ptr<ports::ProgressView> inner) : inner_(std::move(inner)) {}

  // Seconds in which painting waited for the display and took no processor time.
  double Waited() const { return passed_ - taken_; }

  void SetCaption(const std::string& text) override { inner_->SetCaption(text); }
  void SetStage(const std::string& text) override {
    Measure([&] { inner_->SetStage(text); });
  }
  void SetDetail(const std::string& text) override {
    Measure([&] { inner_->SetDetail(text); });
  }
  void SetPicture(const std::string& name) override {
    Measure([&] { inner_->SetPicture(name); });
  }
  void ShowBar(ports::BarKind kind) override {
    Measure([&] { inner_->ShowBar(kind); });
  }
  void SetProgress(double percent, const std::string& counter) override {
    Measure([&] { inner_->SetProgress(percent, counter); });
  }
  void SetPace(const std::string& text) override {
    Measure([&] { inner_->SetPace(text); });
  }
  void SetNotes(const ports::ProgressNotes& notes) override {
    Measure([&] { inner_->SetNotes(notes); });
  }
  void SetButton(const std::string& caption, bool is_enabled) override {
    Measure([&] { inner_->SetButton(caption, is_enabled); });
  }
  void Run(ports::ProgressViewEvents& events) override { inner_->Run(events); }
  void Close() override { inner_->Close(); }

 private:
  template <typename Action>
  void Measure(Action action) {
    const double start = Clock();
    const double own_start = Seconds(CLOCK_THREAD_CPUTIME_ID);
    action();
    taken_ += Seconds(CLOCK_THREAD_CPUTIME_ID) - own_start;
    passed_ += Clock() - start;
  }

  std::unique_ptr<ports::ProgressView> inner_;
  double passed_ = 0;
  double taken_ = 0;
};

// The run's part of a download: passes the progress on to the form and asks it for a cancel.
class Download final : public tmw::DownloaderEvents {
 public:
  Download(tmw::UpdaterEvents& window, std::int32_t bytes) : window_(window), bytes_(bytes) {}

  bool Run(const std::string& url, const std::string& file) {
    Measure([&] {
      window_.OnSetButtonMode(1);
      window_.OnSetIcon("download");
      window_.OnSetMainAction("Загрузка компонент...");
      window_.OnSetupProgress(bytes_, true);
      window_.OnSetSubAction(url);
    });
    return tmw::InetFileDownloader(*this).DownloadFile(url, file, true);
  }

  double WindowSeconds() const { return sum_ - calls_ * CostOfMeasuring(); }

 private:
  template <typename Action>
  void Measure(Action action) {
    const double start = Clock();
    action();
    sum_ += Clock() - start;
    ++calls_;
  }

  void OnChunkLoaded(bool /*is_skipped*/, std::int32_t byte_count) override {
    Measure([&] { window_.OnSetProgress(position_ += byte_count); });
  }
  void OnCheckCancel(bool& is_cancelled) override {
    Measure([&] { window_.OnCheckCancelPressed(is_cancelled); });
  }

  tmw::UpdaterEvents& window_;
  std::int32_t bytes_;
  std::int32_t position_ = 0;
  double sum_ = 0;
  double calls_ = 0;
};

// The front end that the environment chooses; it remembers the window that it made last.
class Remembering final : public ports::FrontEnd {
 public:
  MeasuredView* view = nullptr;

  bool CanAsk() override { return inner_->CanAsk(); }
  void ShowMessage(ports::MessageKind kind, const std::string& title, const std::string& text,
                   const std::string& advice) override {
    inner_->ShowMessage(kind, title, text, advice);
  }
  bool AskYesNo(const std::string& title, const std::string& question) override {
    return inner_->AskYesNo(title, question);
  }
  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    return inner_->AskText(title, prompt, is_secret);
  }
  std::optional<std::string> AskSavePlace(const std::string& title,
                                          const std::string& suggested_name) override {
    return inner_->AskSavePlace(title, suggested_name);
  }
  void RunPendingEvents() override { inner_->RunPendingEvents(); }
  void ResetCursor() override { inner_->ResetCursor(); }
  std::unique_ptr<ports::ProgressView> MakeProgressView() override {
    auto made = std::make_unique<MeasuredView>(inner_->MakeProgressView());
    view = made.get();
    return made;
  }
  std::unique_ptr<ports::ErrorView> MakeErrorView() override { return inner_->MakeErrorView(); }

 private:
  std::unique_ptr<ports::FrontEnd> inner_ = platform::MakeFrontEnd();
};

// Starts the download when the window is on the screen.
class Starter final : public ports::ProgressViewEvents {
 public:
  explicit Starter(std::function<void()> start) : start_(std::move(start)) {}
  void OnShown() override { start_(); }
  void OnCancel() override {}
  void OnStop() override {}

 private:
  std::function<void()> start_;
};

struct Result {
  double window = 0;  // seconds
  double all = 0;
  bool is_right = false;
};

Result RunWindow(const std::string& url, const std::string& file, std::int32_t bytes) {
  Remembering front_end;
  ports::CurrentPorts().front_end = &front_end;
  tmw::DownloadingForm form([] {});
  Download download(form, bytes);
  Result result;
  Starter starter([&] {
    const double start = Seconds(CLOCK_PROCESS_CPUTIME_ID);
    result.is_right = download.Run(url, file);
    result.all = Seconds(CLOCK_PROCESS_CPUTIME_ID) - start;
    result.window = download.WindowSeconds() - front_end.view->Waited();
    front_end.view->Close();
  });
  front_end.view->SetCaption("Web-обновление");
  front_end.view->Run(starter);
  return result;
}

// Runs the window on a terminal of its own and reads what is shown; gives the bytes shown.
long RunOnTerminal(const std::function<Result()>& action, Result& result) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return 0;
  const winsize size{24, 80, 0, 0};
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    setenv("TERM", "xterm", 1);
    const Result own = action();
    _exit(write(ends[1], &own, sizeof(own)) == sizeof(own) ? 0 : 1);
  }
  long shown = 0;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(terminal, buffer.data(), buffer.size())) > 0;)
    shown += count;
  waitpid(child, nullptr, 0);
  close(ends[1]);
  if (read(ends[0], &result, sizeof(result)) != sizeof(result)) result = {};
  return shown;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const std::string file = std::string(argv[2]) + "/downloaded";
  const auto bytes = static_cast<std::int32_t>(std::atol(argv[3]));
  const auto run = [&] {
    const auto host = ports::MakeHost(argc, argv);
    ports::CurrentPorts() = host->MakePorts();
    return RunWindow(argv[1], file, bytes);
  };
  Result result;
  const long shown = RunOnTerminal(run, result);
  if (!result.is_right) return 2;
  const double percent = result.window / result.all * 100;
  std::printf("window %.3f s of %.3f s: %.2f %% (at most %.0f), %ld bytes on the terminal\n",
              result.window, result.all, percent, kMaxPercent, shown);
  return percent <= kMaxPercent ? 0 : 1;
}
