#include "rollback/window.h"

#include <exception>
#include <utility>

#include "ports/front_end.h"
#include "ports/ports.h"
#include "rollback/rollback_texts.h"
#include "services/run_log.h"

namespace rollback {

Window::Window() : view_(ports::CurrentPorts().front_end->MakeProgressView()) {}

void Window::Run(std::function<void()> work) {
  work_ = std::move(work);
  view_->SetCaption(texts::kCaption);
  view_->SetButton(texts::kCancel, true);
  view_->Run(*this);
  if (failure_) std::rethrow_exception(failure_);
}

void Window::OnShown() {
  // No error may leave a handler of the view.
  try {
    work_();
  } catch (...) {
    failure_ = std::current_exception();
  }
  view_->Close();
}

void Window::OnCancel() {
  if (may_cancel_) is_cancelled_ = true;
}

void Window::OnSetMainAction(const std::string& text) {
  if (!text.empty()) tmw::LogEvent("stage", {{"text", text}});
  view_->SetStage(text);
}

void Window::OnSetSubAction(const std::string& text) {
  view_->SetDetail(text);
}

void Window::OnSetupProgress(std::int32_t max, bool /*show_count*/) {
  max_ = max;
  view_->SetProgress(0, "");
  view_->ShowBar(max > 0 ? ports::BarKind::kBar : ports::BarKind::kNone);
}

void Window::OnSetProgress(std::int32_t value) {
  if (max_ > 0) view_->SetProgress(100.0 * value / max_, "");
}

void Window::OnSetButtonMode(std::int32_t mode) {
  may_cancel_ = mode != 0;
  view_->SetButton(texts::kCancel, may_cancel_);
}

void Window::OnSetIcon(const std::string& name) {
  view_->SetPicture(name);
}

void Window::OnCheckCancelPressed(bool& cancel) {
  ports::CurrentPorts().front_end->RunPendingEvents();
  cancel = is_cancelled_;
}

}  // namespace rollback
