#include "platform/linux/qt_boxes.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "platform/linux/qt_application.h"

namespace platform {
namespace {

constexpr const char* kYes = "&Да";
constexpr const char* kNo = "&Нет";
constexpr const char* kOk = "OK";
constexpr const char* kCancel = "Отмена";
constexpr int kAnswerLength = 40;  // characters that the line of an answer shows

// A box whose text can be selected and is never taken for markup: it may quote a server.
class PlainBox final : public QMessageBox {
 public:
  PlainBox(QtApplication& application, Icon kind, const std::string& title, const std::string& text)
      : QMessageBox(application.BoxOwner()) {
    setIcon(kind);
    setWindowTitle(ToQt(title));
    setTextFormat(Qt::PlainText);
    setText(ToQt(text));
    setTextInteractionFlags(Qt::TextSelectableByMouse);
  }
};

}  // namespace

void ShowMessageBox(QtApplication& application, MessageKind kind, const std::string& title,
                    const std::string& text) {
  const auto icon = kind == MessageKind::kWarning ? QMessageBox::Warning : QMessageBox::Information;
  PlainBox box(application, icon, title, text);
  box.addButton(kOk, QMessageBox::AcceptRole);
  application.RunBox(box);
}

bool AskYesNoBox(QtApplication& application, const std::string& title,
                 const std::string& question) {
  PlainBox box(application, QMessageBox::Question, title, question);
  QPushButton* yes = box.addButton(kYes, QMessageBox::YesRole);
  QPushButton* no = box.addButton(kNo, QMessageBox::NoRole);
  box.setDefaultButton(yes);
  box.setEscapeButton(no);
  application.RunBox(box);
  return box.clickedButton() == yes;
}

std::optional<std::string> AskTextBox(QtApplication& application, const std::string& title,
                                      const std::string& prompt, bool is_secret) {
  QDialog box(application.BoxOwner());
  box.setWindowTitle(ToQt(title));
  QLabel label(ToQt(prompt), &box);
  label.setTextFormat(Qt::PlainText);
  label.setTextInteractionFlags(Qt::TextSelectableByMouse);
  QLineEdit line(&box);
  line.setEchoMode(is_secret ? QLineEdit::Password : QLineEdit::Normal);
  line.setMinimumWidth(line.fontMetrics().averageCharWidth() * kAnswerLength);
  line.setAccessibleName(label.text());
  QPushButton ok(kOk, &box);
  ok.setDefault(true);
  QPushButton cancel(kCancel, &box);
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

}  // namespace platform
