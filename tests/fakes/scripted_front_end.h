#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/front_end.h"

namespace tests {

// What was set in the windows of a scripted front end, and what their user does.
struct WindowScript {
  std::vector<std::string> log;                            // as "name value"
  std::function<void(ports::ProgressViewEvents&)> on_run;  // default: the window is shown
  std::function<void(ports::ErrorViewEvents&)> on_error;
  std::string error_notes;  // the window's "advice|label of the log|path of the log"
  bool has_clipboard = true;
};

class RecordingProgressView final : public ports::ProgressView {
 public:
  explicit RecordingProgressView(WindowScript& script) : script_(script) {}

  void SetCaption(const std::string& text) override { Add("caption " + text); }
  void SetStage(const std::string& text) override { Add("stage " + text); }
  void SetDetail(const std::string& text) override { Add("detail " + text); }
  void SetPicture(const std::string& name) override { Add("picture " + name); }
  void ShowBar(ports::BarKind kind) override {
    Add("bar " + std::to_string(static_cast<int>(kind)));
  }
  void SetProgress(double percent, const std::string& counter) override {
    Add("progress " + std::to_string(percent).substr(0, 4) + " " + counter);
  }
  void SetPace(const std::string& text) override { Add("pace " + text); }
  void SetNotes(const ports::ProgressNotes& notes) override {
    Add("notes " + notes.step + "|" + notes.component + "|" + notes.unit);
  }
  void SetButton(const std::string& caption, bool is_enabled) override {
    Add("button " + caption + (is_enabled ? "" : " disabled"));
  }
  void Run(ports::ProgressViewEvents& events) override {
    script_.on_run ? script_.on_run(events) : events.OnShown();
  }
  void Close() override { Add("close"); }

 private:
  void Add(const std::string& line) { script_.log.push_back(line); }

  WindowScript& script_;
};

class RecordingErrorView final : public ports::ErrorView {
 public:
  explicit RecordingErrorView(WindowScript& script) : script_(script) {}

  void SetTexts(const ports::ErrorViewTexts& t) override {
    script_.log.push_back("error " + t.title + "|" + t.short_text + "|" + t.full_text);
    script_.error_notes = t.advice + "|" + t.log_label + "|" + t.log_path;
  }
  void SetDetailView(bool is_detailed, const std::string& button) override {
    script_.log.push_back((is_detailed ? "full " : "short ") + button);
  }
  bool CopyText(const std::string& text) override {
    script_.log.push_back("copy " + text);
    return script_.has_clipboard;
  }
  void Run(ports::ErrorViewEvents& events) override {
    if (script_.on_error) script_.on_error(events);
  }

 private:
  WindowScript& script_;
};

// A front end that records what it shows and answers by script: the boxes, in order, as
// "kind|title|text". An unscripted question is answered no.
class ScriptedFrontEnd final : public ports::FrontEnd {
 public:
  std::vector<std::string> log;
  std::vector<std::string> advices;  // of the messages, without the questions
  std::deque<bool> answers;
  std::deque<std::optional<std::string>> texts;
  std::function<void()> on_events;
  bool can_ask = true;
  int event_rounds = 0;
  int cursor_resets = 0;
  WindowScript windows;

  bool CanAsk() override { return can_ask; }

  void ShowMessage(ports::MessageKind kind, const std::string& title, const std::string& text,
                   const std::string& advice) override {
    const bool is_warning = kind == ports::MessageKind::kWarning;
    log.push_back(std::string(is_warning ? "warning|" : "information|") + title + "|" + text);
    advices.push_back(advice);
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    log.push_back("question|" + title + "|" + question);
    return Next(answers).value_or(false);
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    log.push_back((is_secret ? "secret|" : "input|") + title + "|" + prompt);
    return Next(texts).value_or(std::nullopt);
  }

  std::optional<std::string> AskSavePlace(const std::string& title,
                                          const std::string& suggested_name) override {
    log.push_back("save|" + title + "|" + suggested_name);
    return Next(texts).value_or(std::nullopt);
  }

  void RunPendingEvents() override {
    ++event_rounds;
    if (on_events) on_events();
  }

  void ResetCursor() override { ++cursor_resets; }

  std::unique_ptr<ports::ProgressView> MakeProgressView() override {
    return std::make_unique<RecordingProgressView>(windows);
  }
  std::unique_ptr<ports::ErrorView> MakeErrorView() override {
    return std::make_unique<RecordingErrorView>(windows);
  }

 private:
  template <typename T>
  static std::optional<T> Next(std::deque<T>& script) {
    if (script.empty()) return std::nullopt;
    T answer = std::move(script.front());
    script.pop_front();
    return answer;
  }
};

}  // namespace tests
