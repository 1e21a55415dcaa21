#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/front_end.h"

namespace tests {

// A front end that writes down what it is told and answers by script: what was said, in order, as
// "kind|title|text". An unscripted question is answered no.
class ScriptedFrontEnd final : public platform::FrontEnd {
 public:
  std::vector<std::string> log;
  std::deque<bool> answers;
  std::deque<std::optional<std::string>> texts;
  std::function<void()> on_events;
  bool can_ask = true;
  int event_rounds = 0;
  int cursor_resets = 0;

  bool CanAsk() override { return can_ask; }

  void ShowMessage(platform::MessageKind kind, const std::string& title,
                   const std::string& text) override {
    const bool is_warning = kind == platform::MessageKind::kWarning;
    log.push_back(std::string(is_warning ? "warning|" : "information|") + title + "|" + text);
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

  void RunPendingEvents() override {
    ++event_rounds;
    if (on_events) on_events();
  }

  void ResetCursor() override { ++cursor_resets; }

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
