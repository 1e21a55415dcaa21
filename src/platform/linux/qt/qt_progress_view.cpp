#include "platform/linux/qt/qt_progress_view.h"

#include <QCloseEvent>
#include <QDialog>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>
#include <cmath>
#include <utility>

#include "platform/linux/linux_texts.h"
#include "platform/linux/qt/qt_labels.h"
#include "platform/linux/qt/qt_progress_bar.h"

namespace platform {
namespace {

constexpr int kDetailLines = 2;
constexpr int kTextWidth = 76;     // in characters
constexpr int kBarSteps = 1000;    // of the whole bar
constexpr int kGap = 12;           // logical pixels between the parts
constexpr int kWaitSlice = 100;    // milliseconds
constexpr int kScreenWait = 2000;  // milliseconds until the window must be on the screen

}  // namespace

// The window itself. Its size never changes, whatever it shows.
class ProgressDialog final : public QDialog {
 public:
  ProgressDialog();

  void ShowBar(ports::BarKind kind);

  // True once after each press of the button, the close box or Esc.
  bool TakeCancel() { return std::exchange(cancel_noted_, false); }

  // Esc and, through closeEvent, the close box. The window is closed by its owner only.
  void reject() override { cancel_noted_ = true; }

  PictureView picture{this};
  FixedLabel stage{1, this};
  FixedLabel detail{kDetailLines, this};
  ProgressBar bar{this};
  QLabel counter{this};
  QLabel unit{this};
  FixedLabel component{1, this};
  QLabel step{this};
  FixedLabel pace{1, this};
  QPushButton button{this};

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    reject();
  }

 private:
  QGridLayout* texts_ = new QGridLayout;  // stage, bar and counter, detail
  bool cancel_noted_ = false;
};

ProgressDialog::ProgressDialog() {
  setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                 Qt::WindowCloseButtonHint);
  QFont bold = stage.font();
  bold.setBold(true);
  stage.setFont(bold);
  pace.setForegroundRole(QPalette::PlaceholderText);
  bar.setRange(0, kBarSteps);
  bar.setTextVisible(false);
  counter.setTextFormat(Qt::PlainText);
  // Fixed, so that a new text needs no new layout.
  const QFontMetrics metrics = counter.fontMetrics();
  counter.setFixedSize(metrics.horizontalAdvance("000 000 000/000 000 000"), metrics.height());
  counter.setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  for (QLabel* note : {&unit, &step}) {
    note->setTextFormat(Qt::PlainText);
    note->setForegroundRole(QPalette::PlaceholderText);
  }
  button.setDefault(true);
  connect(&button, &QPushButton::clicked, this, [this] { reject(); });
  bar.setAccessibleName(linux_texts::kProgressBar);
  // Screen readers would read a name in place of the text.
  stage.setAccessibleDescription(linux_texts::kStage);
  detail.setAccessibleDescription(linux_texts::kDetail);
  counter.setAccessibleDescription(linux_texts::kCounter);
  pace.setAccessibleDescription(linux_texts::kPace);
  unit.setAccessibleDescription(linux_texts::kUnit);
  step.setAccessibleDescription(linux_texts::kStep);
  component.setAccessibleDescription(linux_texts::kComponent);

  texts_->setHorizontalSpacing(kGap);
  texts_->setVerticalSpacing(kGap * 2 / 3);
  texts_->setColumnStretch(0, 1);
  texts_->setRowStretch(4, 1);
  auto* first_line = new QHBoxLayout;
  first_line->setSpacing(kGap);
  first_line->addWidget(&stage, 1);
  first_line->addWidget(&step);
  texts_->addLayout(first_line, 0, 0, 1, 3);
  texts_->addWidget(&bar, 1, 0);
  texts_->addWidget(&counter, 1, 1);
  texts_->addWidget(&unit, 1, 2);
  texts_->addWidget(&detail, 2, 0, 1, 3);
  texts_->addWidget(&component, 3, 0, 1, 3);
  auto* upper = new QHBoxLayout;
  upper->setSpacing(kGap);
  upper->addWidget(&picture, 0, Qt::AlignTop);
  upper->addLayout(texts_, 1);
  auto* lower = new QHBoxLayout;
  lower->setSpacing(kGap);
  lower->addSpacing(picture.width() + kGap);
  lower->addWidget(&pace, 1);
  lower->addWidget(&button);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kGap, kGap, kGap, kGap);
  layout->setSpacing(kGap);
  layout->addLayout(upper);
  layout->addLayout(lower);
  const int text_width = fontMetrics().averageCharWidth() * kTextWidth;
  setFixedSize(picture.width() + text_width + 3 * kGap, layout->sizeHint().height());
  ShowBar(ports::BarKind::kNone);
}

void ProgressDialog::ShowBar(ports::BarKind kind) {
  bar.setVisible(ports::HasBar(kind));
  counter.setVisible(ports::HasCounter(kind));
  unit.setVisible(ports::HasCounter(kind));
  texts_->removeWidget(&detail);
  const int detail_row = ports::HasBar(kind) ? 2 : 1;
  texts_->addWidget(&detail, detail_row, 0, 1, kind == ports::BarKind::kCounter ? 1 : 3);
  layout()->activate();
}

QtProgressView::QtProgressView(QtApplication& application)
    : application_(application), dialog_(std::make_unique<ProgressDialog>()) {}

QtProgressView::~QtProgressView() = default;

void QtProgressView::SetCaption(const std::string& text) {
  dialog_->setWindowTitle(ToQt(text));
}

void QtProgressView::SetStage(const std::string& text) {
  dialog_->stage.SetText(text);
}

void QtProgressView::SetDetail(const std::string& text) {
  dialog_->detail.SetText(text);
}

void QtProgressView::SetPicture(const std::string& name) {
  dialog_->picture.SetPicture(name);
}

void QtProgressView::ShowBar(ports::BarKind kind) {
  dialog_->ShowBar(kind);
  dialog_->repaint();
}

void QtProgressView::SetProgress(double percent, const std::string& counter) {
  ProgressBar& bar = dialog_->bar;
  QLabel& label = dialog_->counter;
  // Both are painted in one go.
  bar.setUpdatesEnabled(false);
  bar.setValue(static_cast<int>(std::lround(percent * kBarSteps / 100)));
  bar.setUpdatesEnabled(true);
  const QString text = ToQt(counter);
  if (text == label.text()) {
    bar.repaint();
    return;
  }
  label.setText(text);
  // The bar shrinks for a longer counter and does not grow back, so that it does not jitter.
  const int width = label.fontMetrics().horizontalAdvance(text);
  if (width > label.width()) {
    label.setFixedWidth(width);
    dialog_->layout()->activate();
  }
  label.repaint();
}

void QtProgressView::SetPace(const std::string& text) {
  dialog_->pace.SetText(text);
}

void QtProgressView::SetNotes(const ports::ProgressNotes& notes) {
  dialog_->component.SetText(notes.component);
  QLabel* const labels[] = {&dialog_->step, &dialog_->unit};
  const std::string* const texts[] = {&notes.step, &notes.unit};
  for (int i = 0; i < 2; ++i) {
    if (ToQt(*texts[i]) == labels[i]->text()) continue;
    labels[i]->setText(ToQt(*texts[i]));
    dialog_->layout()->activate();
    labels[i]->repaint();
  }
}

void QtProgressView::SetButton(const std::string& caption, bool is_enabled) {
  QPushButton& button = dialog_->button;
  button.setText(ToButtonText(caption));
  button.setEnabled(is_enabled);
  if (is_enabled) button.setFocus();
  dialog_->layout()->activate();
  button.repaint();
}

void QtProgressView::ShowAndWaitForScreen() {
  dialog_->show();
  QElapsedTimer waited;
  waited.start();
  while (!dialog_->windowHandle()->isExposed() && waited.elapsed() < kScreenWait)
    QtApplication::RunEvents(kWaitSlice);
}

void QtProgressView::Run(ports::ProgressViewEvents& events) {
  struct Opened {
    QtProgressView& view;
    ~Opened() { view.Close(); }
  };
  events_ = &events;
  signals_.emplace();
  application_.SetOpenWindow(this);
  const Opened opened{*this};
  ShowAndWaitForScreen();
  events.OnShown();
  while (events_ != nullptr) {
    QtApplication::RunEvents(kWaitSlice);
    RaiseEvents();
  }
}

void QtProgressView::Close() {
  if (events_ == nullptr) return;
  events_ = nullptr;
  signals_.reset();
  application_.SetOpenWindow(nullptr);
  dialog_->hide();
}

QWidget& QtProgressView::Widget() {
  return *dialog_;
}

void QtProgressView::NoteSignals() {
  if (events_ == nullptr || !signals_->HasNews()) return;
  const TerminalSignals::News news = signals_->Take();
  interrupts_ += news.interrupts;
  if (news.interrupts > 0) dialog_->reject();
  if (news.is_stop || (news.interrupts > 0 && interrupts_ > 1)) is_stop_noted_ = true;
}

bool QtProgressView::IsEndAsked() {
  NoteSignals();
  return is_stop_noted_;
}

void QtProgressView::ForgetPresses() {
  NoteSignals();
  interrupts_ = 0;
  dialog_->TakeCancel();
}

void QtProgressView::RaiseEvents() {
  if (is_raising_ || events_ == nullptr) return;
  struct Raising {
    bool& flag;
    explicit Raising(bool& raising) : flag(raising) { flag = true; }
    ~Raising() { flag = false; }
  };
  const Raising raising(is_raising_);
  NoteSignals();
  const bool is_cancel = dialog_->TakeCancel();
  if (std::exchange(is_stop_noted_, false)) {
    events_->OnStop();
  } else if (is_cancel) {
    events_->OnCancel();
  }
}

}  // namespace platform
