#include "platform/linux/qt/qt_application.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDir>
#include <QLibraryInfo>
#include <QTimer>
#include <QTranslator>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "platform/linux/linux_texts.h"

// Outside any namespace, as Qt's macro wants it.
static void InitPictures() {
  Q_INIT_RESOURCE(pictures);
}

namespace platform {
namespace {

constexpr unsigned kProbeSeconds = 10;
constexpr int kWatchMilliseconds = 100;

bool IsSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

// What Qt warns of before it ends a process whose display server has died.
constexpr const char* kConnectionBroke = "connection broke";

// Qt's remarks on fonts, themes and locales would clutter the terminal the program was started
// from, and its last words before it ends a process mean nothing to users.
void PassOnFaults(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg || message.contains(kConnectionBroke)) {
    static_cast<void>(std::fputs(linux_texts::kDisplayLost, stderr));
    _exit(EXIT_FAILURE);
  }
  if (type == QtCriticalMsg)
    static_cast<void>(std::fprintf(stderr, "%s\n", message.toUtf8().constData()));
}

// All that the child does; exits with 0 if a display could be opened.
[[noreturn]] void TryDisplay() {
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDERR_FILENO);
  alarm(kProbeSeconds);
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString&) {
    if (type == QtFatalMsg) _exit(1);
  });
  int argc = 1;
  char name[] = "TmWebUpdate";
  char* argv[] = {name, nullptr};
  const QGuiApplication application(argc, argv);
  _exit(QGuiApplication::primaryScreen() != nullptr ? 0 : 1);
}

}  // namespace

bool CanOpenDisplay() {
  if (!IsSet("DISPLAY") && !IsSet("WAYLAND_DISPLAY") && !IsSet("QT_QPA_PLATFORM")) return false;
  const pid_t child = fork();
  if (child < 0) return false;
  if (child == 0) TryDisplay();
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

QtApplication::QtApplication() {
  InitPictures();
  qInstallMessageHandler(PassOnFaults);
  // Qt takes over the user's locale; with it numbers would be read and written with a comma.
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  application_ = std::make_unique<QApplication>(argc_, argv_);
  static_cast<void>(std::setlocale(LC_ALL, locale.c_str()));
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setWindowIcon(PictureNamed("program"));
  // The words of context menus, where Qt's translations are installed.
  auto* translator = new QTranslator(application_.get());
  if (translator->load("qtbase_ru", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QApplication::installTranslator(translator);
}

void QtApplication::RunEvents(int milliseconds) {
  if (milliseconds == 0) {
    QApplication::processEvents();
    return;
  }
  QTimer limit;  // ends the wait
  limit.setSingleShot(true);
  limit.start(milliseconds);
  QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void QtApplication::RaiseEvents() {
  if (open_window_ != nullptr) open_window_->RaiseEvents();
}

void QtApplication::RunBox(QDialog& box) {
  QTimer watch;
  QObject::connect(&watch, &QTimer::timeout, &box, [this, &box] {
    if (IsEndAsked()) box.reject();
  });
  watch.start(kWatchMilliseconds);
  CallAttention();
  box.exec();
  if (open_window_ != nullptr) open_window_->ForgetPresses();
}

void QtApplication::CallAttention() {
  QWidget* const owner = BoxOwner();
  if (owner == nullptr) return;
  owner->setWindowState(owner->windowState() & ~Qt::WindowMinimized);
  QApplication::alert(owner);
}

QWidget* QtApplication::BoxOwner() {
  return open_window_ != nullptr ? &open_window_->Widget() : nullptr;
}

bool QtApplication::IsEndAsked() {
  return open_window_ != nullptr && open_window_->IsEndAsked();
}

QString ToQt(std::string_view text) {
  QString result = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
  return result.replace("\r\n", "\n");
}

QString ToButtonText(const std::string& text) {
  return ToQt(text).replace("&", "&&");
}

QIcon PictureNamed(const std::string& name) {
  QIcon icon;
  if (name.empty()) return icon;
  const QDir pictures(":/pictures");
  for (const QString& file : pictures.entryList({ToQt(name) + "-*.png"}))
    icon.addFile(pictures.filePath(file));
  return icon;
}

}  // namespace platform
