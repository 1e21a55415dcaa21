#include "platform/linux/qt/qt_error_view.h"

#include <QClipboard>
#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <utility>

#include "platform/linux/linux_texts.h"

namespace platform {
namespace {

constexpr int kDashes = 50;  // of the longest line that is not wrapped
constexpr int kShortLines = 13;
constexpr int kDetailedLines = 22;
constexpr int kWaitSlice = 100;  // milliseconds

}  // namespace

// The window itself. Presses are recorded; Run reports them to the listener.
class ErrorDialog final : public QDialog {
 public:
  explicit ErrorDialog(QWidget* owner);

  // Each view has a height of its own, which the user may change; the width is common.
  void ShowView(bool is_detailed);

  bool TakeDetails() { return std::exchange(details_noted_, false); }
  bool TakeCopy() { return std::exchange(copy_noted_, false); }

  QWidget short_view{this};
  QLabel sign{&short_view};
  QLabel label{&short_view};
  QPlainTextEdit short_text{&short_view};
  QLabel advice{&short_view};
  QLabel log_label{this};
  QLineEdit log_path{this};
  QPlainTextEdit full_text{this};
  QPushButton details{this};
  QPushButton copy{this};
  QPushButton close_button{this};

 protected:
  // Ctrl+C in a text of which no part is selected.
  bool eventFilter(QObject* object, QEvent* event) override;
  // Ctrl+C anywhere else.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  bool is_detailed_ = false;
  int other_height_ = 0;  // of the view that is not shown
  bool details_noted_ = false;
  bool copy_noted_ = false;
};

ErrorDialog::ErrorDialog(QWidget* owner) : QDialog(owner) {
  setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                 Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint |
                 Qt::WindowCloseButtonHint);
  setModal(true);
  setSizeGripEnabled(true);
  const int sign_size = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
  sign.setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(sign_size));
  for (QLabel* line : {&label, &advice, &log_label}) {
    line->setTextFormat(Qt::PlainText);
    line->setWordWrap(true);
  }
  log_label.setWordWrap(false);
  advice.setTextInteractionFlags(Qt::TextSelectableByMouse);
  advice.setAccessibleDescription(linux_texts::kAdvice);
  log_path.setReadOnly(true);
  log_path.setFrame(false);
  log_path.setFocusPolicy(Qt::ClickFocus);
  QPalette as_label = log_path.palette();
  as_label.setColor(QPalette::Base, as_label.color(QPalette::Window));
  log_path.setPalette(as_label);
  for (QPlainTextEdit* text : {&short_text, &full_text}) {
    text->setReadOnly(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setTabChangesFocus(true);
    text->installEventFilter(this);
  }
  close_button.setDefault(true);
  close_button.setFocus();
  for (QPushButton* button : {&details, &copy})
    button->setAutoDefault(false);
  connect(&details, &QPushButton::clicked, this, [this] { details_noted_ = true; });
  connect(&copy, &QPushButton::clicked, this, [this] { copy_noted_ = true; });
  connect(&close_button, &QPushButton::clicked, this, [this] { reject(); });

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(&details);
  buttons->addStretch(1);
  buttons->addWidget(&copy);
  buttons->addWidget(&close_button);
  auto* layout = new QVBoxLayout(this);
  auto* short_layout = new QGridLayout(&short_view);
  short_layout->setContentsMargins(0, 0, 0, 0);
  short_layout->addWidget(&sign, 0, 0, 2, 1, Qt::AlignTop);
  short_layout->addWidget(&label, 0, 1);
  short_layout->addWidget(&short_text, 1, 1);
  short_layout->addWidget(&advice, 2, 1);
  auto* log_line = new QHBoxLayout;
  log_line->addWidget(&log_label);
  log_line->addWidget(&log_path, 1);
  layout->addWidget(&short_view, 1);
  layout->addWidget(&full_text, 1);
  layout->addLayout(log_line);
  layout->addLayout(buttons);
  const QFontMetrics metrics = fontMetrics();
  // Margins, frames and the scroll bar take about as much as five dashes.
  resize(metrics.horizontalAdvance("—") * (kDashes + 5), metrics.lineSpacing() * kShortLines);
  other_height_ = metrics.lineSpacing() * kDetailedLines;
  full_text.hide();
}

void ErrorDialog::ShowView(bool is_detailed) {
  short_view.setVisible(!is_detailed);
  full_text.setVisible(is_detailed);
  if (is_detailed == is_detailed_) return;
  is_detailed_ = is_detailed;
  const int height_before = height();
  resize(width(), other_height_);
  other_height_ = height_before;
}

bool ErrorDialog::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const QPlainTextEdit& text = object == &full_text ? full_text : short_text;
    if (static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy) &&
        !text.textCursor().hasSelection()) {
      copy_noted_ = true;
      return true;
    }
  }
  return QDialog::eventFilter(object, event);
}

void ErrorDialog::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    copy_noted_ = true;
  } else {
    QDialog::keyPressEvent(event);
  }
}

QtErrorView::QtErrorView(QtApplication& application)
    : application_(application), dialog_(std::make_unique<ErrorDialog>(application.BoxOwner())) {}

QtErrorView::~QtErrorView() = default;

void QtErrorView::SetTexts(const ports::ErrorViewTexts& texts) {
  dialog_->setWindowTitle(ToQt(texts.title));
  dialog_->label.setText(ToQt(texts.label));
  dialog_->short_text.setAccessibleName(ToQt(texts.label));
  dialog_->full_text.setAccessibleName(ToQt(texts.full_text_name));
  dialog_->short_text.setPlainText(ToQt(texts.short_text));
  dialog_->full_text.setPlainText(ToQt(texts.full_text));
  dialog_->advice.setText(ToQt(texts.advice));
  dialog_->advice.setVisible(!texts.advice.empty());
  dialog_->log_label.setText(ToQt(texts.log_label));
  dialog_->log_path.setText(ToQt(texts.log_path));
  dialog_->log_path.setCursorPosition(0);
  dialog_->log_path.setAccessibleName(ToQt(texts.log_label));
  for (QWidget* part :
       {static_cast<QWidget*>(&dialog_->log_label), static_cast<QWidget*>(&dialog_->log_path)})
    part->setVisible(!texts.log_path.empty());
  dialog_->copy.setText(ToButtonText(texts.copy_button));
  dialog_->close_button.setText(ToButtonText(texts.close_button));
}

void QtErrorView::SetDetailView(bool is_detailed, const std::string& button_text) {
  dialog_->ShowView(is_detailed);
  dialog_->details.setText(ToButtonText(button_text));
}

bool QtErrorView::CopyText(const std::string& text) {
  const QString copied = ToQt(text);
  QClipboard* clipboard = QApplication::clipboard();
  clipboard->setText(copied);
  return clipboard->text() == copied;
}

void QtErrorView::Run(ports::ErrorViewEvents& events) {
  application_.CallAttention();
  dialog_->show();
  while (dialog_->isVisible()) {
    QtApplication::RunEvents(kWaitSlice);
    if (dialog_->TakeDetails()) events.OnDetails();
    if (dialog_->TakeCopy()) events.OnCopy();
    if (application_.IsEndAsked()) dialog_->reject();
  }
}

}  // namespace platform
