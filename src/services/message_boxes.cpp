#include "services/message_boxes.h"

#include "ports/front_end.h"
#include "ports/ports.h"
#include "services/box_titles.h"
#include "services/run_log.h"

namespace tmw {
namespace {

void ShowBox(ports::MessageKind kind, const char* title, const std::string& text,
             const std::string& advice) {
  const bool is_warning = kind == ports::MessageKind::kWarning;
  LogEvent("box", {{"kind", is_warning ? "warning" : "information"},
                   {"title", title},
                   {"text", text},
                   {"advice", advice}});
  ports::CurrentPorts().front_end->ShowMessage(kind, title, WithoutPasswords(text), advice);
  LogEvent("closed", {{"title", title}});
}

}  // namespace

void ShowInformation(const char* title, const std::string& text) {
  ShowBox(ports::MessageKind::kInformation, title, text, "");
}

void ShowInformation(const char* title, const std::string& text, FailureKind kind) {
  ShowBox(ports::MessageKind::kInformation, title, text, AdviceFor(kind));
}

void ShowWarning(const char* title, const std::string& text) {
  ShowBox(ports::MessageKind::kWarning, title, text, "");
}

void ShowWarning(const char* title, const std::string& text, FailureKind kind) {
  ShowBox(ports::MessageKind::kWarning, title, text, AdviceFor(kind));
}

void DownloadError(const std::string& message) {
  DownloadError(message, TakeNotedFailure());
}

void DownloadError(const std::string& message, FailureKind kind) {
  TakeNotedFailure();
  ShowWarning(box_titles::kDownloadError, message, kind);
}

bool AskQuestion(const char* title, const std::string& question) {
  LogEvent("question", {{"title", title}, {"text", question}});
  const bool is_yes = ports::CurrentPorts().front_end->AskYesNo(title, question);
  LogEvent("answer", {{"title", title}, {"yes", is_yes}});
  return is_yes;
}

}  // namespace tmw
