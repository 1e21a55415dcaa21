#include "platform/linux/qt/qt_front_end.h"

#include <QElapsedTimer>

#include "platform/linux/qt/qt_application.h"
#include "platform/linux/qt/qt_boxes.h"
#include "platform/linux/qt/qt_error_view.h"
#include "platform/linux/qt/qt_progress_view.h"

namespace platform {
namespace {

constexpr int kAskingPeriod = 20;  // milliseconds

class QtFrontEnd final : public ports::FrontEnd {
 public:
  bool CanAsk() override { return true; }

  void ShowMessage(ports::MessageKind kind, const std::string& title, const std::string& text,
                   const std::string& advice) override {
    ShowMessageBox(Application(), kind, title, text, advice);
  }

  bool AskYesNo(const std::string& title, const std::string& question) override {
    return AskYesNoBox(Application(), title, question);
  }

  std::optional<std::string> AskText(const std::string& title, const std::string& prompt,
                                     bool is_secret) override {
    return AskTextBox(Application(), title, prompt, is_secret);
  }

  std::optional<std::string> AskSavePlace(const std::string& title,
                                          const std::string& suggested_name) override {
    return AskSaveBox(Application(), title, suggested_name);
  }

  void RunPendingEvents() override {
    if (!application_) return;
    // Asking the display server is a system call: a download that made one for every piece would
    // waste time on updates that nobody can see.
    if (!asked_.isValid() || asked_.hasExpired(kAskingPeriod)) {
      QtApplication::RunEvents(0);
      asked_.start();
    }
    application_->RaiseEvents();
  }

  void ResetCursor() override {
    if (!application_) return;
    while (QApplication::overrideCursor() != nullptr)
      QApplication::restoreOverrideCursor();
  }

  std::unique_ptr<ports::ProgressView> MakeProgressView() override {
    return std::make_unique<QtProgressView>(Application());
  }

  std::unique_ptr<ports::ErrorView> MakeErrorView() override {
    return std::make_unique<QtErrorView>(Application());
  }

 private:
  QtApplication& Application() {
    if (!application_) application_ = std::make_unique<QtApplication>();
    return *application_;
  }

  std::unique_ptr<QtApplication> application_;
  QElapsedTimer asked_;
};

}  // namespace

std::unique_ptr<ports::FrontEnd> TryMakeQtFrontEnd() {
  if (!CanOpenDisplay()) return nullptr;
  return std::make_unique<QtFrontEnd>();
}

}  // namespace platform
