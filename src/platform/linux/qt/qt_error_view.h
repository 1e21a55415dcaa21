#pragma once

#include <memory>

#include "platform/linux/qt/qt_application.h"
#include "ports/error_view.h"

namespace platform {

class ErrorDialog;

// The error window as a dialog of Qt, belonging to the open window of a run.
class QtErrorView final : public ports::ErrorView {
 public:
  explicit QtErrorView(QtApplication& application);
  ~QtErrorView() override;

  void SetTexts(const ports::ErrorViewTexts& texts) override;
  void SetDetailView(bool is_detailed, const std::string& button_text) override;

  // The text outlives this program if a clipboard manager runs, as on most desktops.
  bool CopyText(const std::string& text) override;

  void Run(ports::ErrorViewEvents& events) override;

 private:
  QtApplication& application_;
  std::unique_ptr<ErrorDialog> dialog_;
};

}  // namespace platform
