#include "platform/linux/qt/qt_boxes.h"

#include <QClipboard>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/linux/linux_texts.h"
#include "platform/linux/qt/qt_application.h"
#include "platform/linux/qt/qt_labels.h"

namespace platform {
namespace {

constexpr int kAnswerLength = 40;  // characters that the line of an answer shows

constexpr int kLongestWord = 60;  // in characters
constexpr int kWidestLine = 110;  // in characters
constexpr int kMostLines = 30;    // that leave the buttons on a small screen

// The text as a box can show it: Qt cuts a path or an address that is wider than the box, and what
// a server says may be higher than the screen.
QString FitBox(const std::string& text, const QWidget& box) {
  const int width = box.fontMetrics().averageCharWidth() * kLongestWord;
  QStringList words = ToQt(text).split(' ');
  for (QString& word : words)
    word = BreakLines(word, box.font(), width).join('\n');
  const QString fitting = words.join(' ');
  const QStringList lines = BreakLines(fitting, box.font(), width);
  return lines.size() <= kMostLines ? fitting : lines.mid(0, kMostLines).join('\n') + "\n…";
}

// A box whose text can be selected and is never taken for markup: it may quote a server.
class PlainBox final : public QMessageBox {
 public:
  PlainBox(QtApplication& application, Icon kind, const std::string& title, const std::string& text)
      : QMessageBox(application.BoxOwner()) {
    setIcon(kind);
    setWindowTitle(ToQt(title));
    setTextFormat(Qt::PlainText);
    setText(FitBox(text, *this));
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    FitWidth();
  }

  // Stands below the text; the button copies both.
  void AddAdvice(const std::string& advice) {
    setInformativeText(FitBox(advice, *this));
    if (auto* label = findChild<QLabel*>("qt_msgbox_informativelabel"))
      label->setTextFormat(Qt::PlainText);
    QPushButton* const copy = addButton(linux_texts::kCopy, ActionRole);
    disconnect(copy, &QPushButton::clicked, nullptr, nullptr);  // would close the box
    connect(copy, &QPushButton::clicked, this, [this] { CopyAll(); });
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (event->matches(QKeySequence::Copy)) {
      CopyAll();
    } else {
      QMessageBox::keyPressEvent(event);
    }
  }

 private:
  // Left alone, Qt breaks every line that is longer than its idea of a box.
  void FitWidth() {
    auto* const label = findChild<QLabel*>("qt_msgbox_label");
    if (label == nullptr) return;
    int widest = 0;
    for (const QString& line : text().split('\n'))
      widest = std::max(widest, label->fontMetrics().horizontalAdvance(line));
    label->setMinimumWidth(std::min(widest + 1, fontMetrics().averageCharWidth() * kWidestLine));
  }

  void CopyAll() const {
    const QString advice = informativeText().isEmpty() ? "" : "\n\n" + informativeText();
    QApplication::clipboard()->setText(windowTitle() + "\n\n" + text() + advice);
  }
};

}  // namespace

void ShowMessageBox(QtApplication& application, ports::MessageKind kind, const std::string& title,
                    const std::string& text, const std::string& advice) {
  const auto icon =
      kind == ports::MessageKind::kWarning ? QMessageBox::Warning : QMessageBox::Information;
  PlainBox box(application, icon, title, text);
  QPushButton* const ok = box.addButton(linux_texts::kOk, QMessageBox::AcceptRole);
  if (!advice.empty()) box.AddAdvice(advice);
  box.setDefaultButton(ok);
  box.setEscapeButton(ok);
  application.RunBox(box);
}

bool AskYesNoBox(QtApplication& application, const std::string& title,
                 const std::string& question) {
  PlainBox box(application, QMessageBox::Question, title, question);
  QPushButton* yes = box.addButton(linux_texts::kYes, QMessageBox::YesRole);
  QPushButton* no = box.addButton(linux_texts::kNo, QMessageBox::NoRole);
  box.setDefaultButton(yes);
  box.setEscapeButton(no);
  application.RunBox(box);
  return box.clickedButton() == yes;
}

std::optional<std::string> AskTextBox(QtApplication& application, const std::string& title,
                                      const std::string& prompt, bool is_secret) {
  QDialog box(application.BoxOwner());
  box.setWindowTitle(ToQt(title));
  QLabel label(FitBox(prompt, box), &box);
  label.setTextFormat(Qt::PlainText);
  label.setTextInteractionFlags(Qt::TextSelectableByMouse);
  QLineEdit line(&box);
  line.setEchoMode(is_secret ? QLineEdit::Password : QLineEdit::Normal);
  line.setMinimumWidth(line.fontMetrics().averageCharWidth() * kAnswerLength);
  line.setAccessibleName(ToQt(prompt));
  QPushButton ok(linux_texts::kOk, &box);
  ok.setDefault(true);
  QPushButton cancel(linux_texts::kCancel, &box);
  QObject::connect(&ok, &QPushButton::clicked, &box, &QDialog::accept);
  QObject::connect(&cancel, &QPushButton::clicked, &box, &QDialog::reject);
  QVBoxLayout layout(&box);
  layout.addWidget(&label);
  layout.addWidget(&line);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(&ok);
  buttons->addWidget(&cancel);
  layout.addLayout(buttons);
  line.setFocus();
  application.RunBox(box);
  if (box.result() != QDialog::Accepted) return std::nullopt;
  return line.text().toStdString();
}

std::optional<std::string> AskSaveBox(QtApplication& application, const std::string& title,
                                      const std::string& suggested_name) {
  QFileDialog box(application.BoxOwner(), ToQt(title), QDir::homePath());
  box.setAcceptMode(QFileDialog::AcceptSave);
  box.selectFile(ToQt(suggested_name));
  application.RunBox(box);
  if (box.result() != QDialog::Accepted) return std::nullopt;
  return box.selectedFiles().value(0).toStdString();
}

}  // namespace platform
