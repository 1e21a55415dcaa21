// Shows one window as it looks in the middle of a run, until the program is ended: for looking at
// it and for scripts/screenshots.sh. Without a name it lists the names.
#include <chrono>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <thread>

#include "database/database_texts.h"
#include "engine/engine_texts.h"
#include "foundation/error_handling.h"
#include "ports/front_end.h"
#include "ports/host.h"
#include "ports/ports.h"
#include "ports/system_info.h"
#include "rollback/decision.h"
#include "rollback/rollback_texts.h"
#include "rollback/window.h"
#include "services/advice.h"
#include "services/box_titles.h"
#include "services/message_boxes.h"
#include "ui/error_form.h"
#include "ui/ui_texts.h"

namespace {

using ports::BarKind;
namespace box_titles = tmw::box_titles;
namespace database_texts = tmw::database_texts;
namespace engine_texts = tmw::engine_texts;
namespace rollback_texts = rollback::texts;
namespace ui_texts = tmw::ui_texts;

struct State {
  const char* name;
  const char* stage;
  const char* detail;
  const char* picture;
  BarKind bar;
  double percent;
  const char* counter;
  const char* pace;
  bool can_cancel;
  const char* step;
  const char* component;
};

constexpr State kStates[] = {
    {"start", engine_texts::kGettingVersion, "", "", BarKind::kNone, 0, "", "", true, "этап 1 из 6",
     ""},
    {"download", engine_texts::kDownloading,
     "https://update.example/TMW_5.12.340/Components/Reports/annual_report_templates.tmz.rar",
     "download", BarKind::kBarWithCounter, 38.2, "12 345 678/32 318 400", "1,2 МБ/с, осталось 16 с",
     true, "этап 3 из 6", "annual_report_templates.xlt"},
    {"scan", engine_texts::kSelecting, "Справочник: Классификатор основных средств", "scan",
     BarKind::kBar, 61, "", "", true, "этап 2 из 6", ""},
    {"dbnew", database_texts::kBuildingReference, "Импорт справочника BankList ...", "dbnew",
     BarKind::kBar, 24, "", "", true, "этап 4 из 6", ""},
    {"dbgear", database_texts::kBuildingWorking, database_texts::kMakingTemporaryCopy, "dbgear",
     BarKind::kNone, 0, "", "", true, "этап 4 из 6", ""},
    {"trash", engine_texts::kRemovingOld, "Reports.tms", "trash", BarKind::kBar, 45, "", "", false,
     "этап 5 из 6", ""},
    {"install", engine_texts::kInstalling, "TmReports.dll", "install", BarKind::kBar, 80, "", "",
     false, "этап 5 из 6", ""},
    {"brush", engine_texts::kCleaning, "", "brush", BarKind::kNone, 0, "", "", true, "этап 6 из 6",
     ""},
};

// The same machine in every picture.
class ExampleSystem final : public ports::SystemInfo {
 public:
  std::optional<ports::OsFacts> Os() override {
    return ports::OsFacts{6, 1, 7601, 2, "Service Pack 1", ""};
  }
  ports::HardwareFacts Hardware() override {
    return {2047U << 20U, 1024U << 20U, 2047U << 20U, 1900U << 20U, 4};
  }
  ports::SystemFolders Folders() override { return {}; }
  std::string DecimalSeparator() override { return ","; }
};

// Brings the window of a run into a state and leaves it there.
class Exhibition final : public ports::ProgressViewEvents {
 public:
  Exhibition(ports::ProgressView& view, const State& state, bool is_question)
      : view_(view), state_(state), is_question_(is_question) {}

  void OnShown() override {
    // With a bar first: the window must look the same whatever it showed before.
    view_.ShowBar(BarKind::kBarWithCounter);
    view_.SetStage(state_.stage);
    view_.SetPicture(state_.picture);
    view_.ShowBar(state_.bar);
    view_.SetProgress(state_.percent, state_.counter);
    view_.SetDetail(state_.detail);
    view_.SetPace(state_.pace);
    view_.SetNotes({state_.step, state_.component, ui_texts::kBytes});
    view_.SetButton(ui_texts::kCancel, state_.can_cancel);
    if (is_question_) {
      ports::CurrentPorts().front_end->AskYesNo(box_titles::kProductUpdate,
                                                ui_texts::kCancelQuestion);
    }
  }

  void OnCancel() override {}
  void OnStop() override { view_.Close(); }

 private:
  ports::ProgressView& view_;
  const State& state_;
  bool is_question_;
};

void ShowState(const State& state, bool is_question) {
  const auto view = ports::CurrentPorts().front_end->MakeProgressView();
  view->SetCaption(ui_texts::kCaption);
  Exhibition exhibition(*view, state, is_question);
  view->Run(exhibition);
}

class NoEvents final : public ports::ErrorViewEvents {
 public:
  void OnDetails() override {}
  void OnCopy() override {}
};

void ShowError(bool is_detailed) {
  tmw::ErrorForm form;
  form.Compose(
      "Невозможно скопировать файл \"C:\\Tamrin\\Components\\TmReports.dll\": файл занят другим "
      "процессом.\x01Размер файла: 1 234 567 байт.",
      "mFileUtils.CopyFile\r\nKsUpdater.InstallComponents\r\nKsUpdater.Execute\r\n"
      "Процесс не может получить доступ к файлу, так как этот файл занят другим процессом.",
      32);
  const auto view = ports::CurrentPorts().front_end->MakeErrorView();
  view->SetTexts({box_titles::kError, ui_texts::kErrorLabel, ui_texts::kFullTextName,
                  form.ShortText(), form.FullText(), ui_texts::kCopy, ui_texts::kClose,
                  tmw::AdviceFor(tmw::FailureKind::kFileHeld), ui_texts::kLogPlace,
                  "C:\\Users\\Бухгалтер\\AppData\\Local\\Tamrin\\TmWebUpdate.log"});
  view->SetDetailView(is_detailed, is_detailed ? ui_texts::kLessDetails : ui_texts::kMoreDetails);
  NoEvents events;
  view->Run(events);
}

void ShowMessage() {
  tmw::DownloadError(
      engine_texts::DigestNotLoaded(
          "Ошибка загрузки файла \"https://update.example/web_update/TMW_version.dat\":\r\n"
          "Не удалось определить имя или адрес сервера"),
      tmw::FailureKind::kNameNotResolved);
}

constexpr const char* kSetAside = "C:\\Tamrin\\db\\Tamrin (до отката 2026-11-22 18-05-41).mdb";

rollback::Findings ExampleFindings() {
  rollback::Findings findings;
  findings.List.Date = "2026-11-22 07:15:30";
  findings.List.OldVersion = "5.12.339";
  findings.List.NewVersion = "5.12.340";
  findings.BooksState = rollback::Books::kChanged;
  findings.Replaced = 123;
  findings.Added = 4;
  return findings;
}

void ShowWork(tmw::UpdaterEvents& events) {
  events.OnSetMainAction(rollback_texts::kRestoring);
  events.OnSetIcon("install");
  events.OnSetButtonMode(0);
  events.OnSetupProgress(100, false);
  events.OnSetSubAction("TmReports.dll");
  events.OnSetProgress(64);
}

void ShowEnd(tmw::UpdaterEvents& events) {
  events.OnSetButtonMode(0);
  tmw::ShowInformation(rollback_texts::kTitle, rollback_texts::Done("5.12.339") +
                                                   rollback_texts::kBreak +
                                                   rollback_texts::SetAside(kSetAside));
}

// The window of the way back as it looks while it works, asks or reports.
struct WayBackState {
  const char* name;
  void (*show)(tmw::UpdaterEvents& events);
};

constexpr WayBackState kWayBackStates[] = {
    {"rollback", ShowWork},
    {"rollback-question", [](auto&) { Decide(ExampleFindings(), {}, kSetAside); }},
    {"rollback-question-files",
     [](auto&) {
       Decide(ExampleFindings(), {false, true}, kSetAside);
     }},
    {"rollback-warning",
     [](auto& events) {
       events.OnSetMainAction(rollback_texts::kVerifying);
       events.OnSetIcon("scan");
       tmw::ShowWarning(
           rollback_texts::kTitle,
           rollback_texts::KeptFileSpoiled("C:\\Tamrin\\Предыдущая версия\\1\\17 TmReports.dll"));
     }},
    {"rollback-end", ShowEnd},
};

void ShowWayBack(const WayBackState& state) {
  rollback::Window window;
  window.Run([&] {
    static_cast<void>(std::signal(SIGTERM, SIG_DFL));  // ends even what cannot be cancelled
    state.show(window);
    while (!window.CancelPressed())
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view wanted = argc > 1 ? argv[1] : "";
  const auto host = ports::MakeHost(1, argv);
  ports::CurrentPorts() = host->MakePorts();
  static ExampleSystem system;
  ports::CurrentPorts().system_info = &system;
  ports::CurrentPorts().log_files = nullptr;
  for (const State& state : kStates) {
    if (wanted.empty()) std::puts(state.name);
    if (wanted == state.name) return ShowState(state, false), 0;
  }
  for (const WayBackState& state : kWayBackStates) {
    if (wanted.empty()) std::puts(state.name);
    if (wanted == state.name) return ShowWayBack(state), 0;
  }
  if (wanted.empty()) return std::puts("question\nmessage\nerror-short\nerror-detailed"), 0;
  if (wanted == "question") return ShowState(kStates[1], true), 0;
  if (wanted == "message") return ShowMessage(), 0;
  if (wanted == "error-short") return ShowError(false), 0;
  if (wanted == "error-detailed") return ShowError(true), 0;
  static_cast<void>(std::fprintf(stderr, "show_windows: there is no window \"%s\"\n", argv[1]));
  return 2;
}
