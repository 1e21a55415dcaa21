#include "platform/linux/qt/qt_front_end.h"

#include <gtest/gtest.h>

#include <QtTest>
#include <QtWidgets>
#include <clocale>
#include <csignal>
#include <functional>

#include "platform/factories.h"
#include "platform/linux/qt/qt_application.h"
#include "ports/front_end.h"
#include "tests/support/environment.h"

namespace platform {
namespace {

using tests::ScopedVariable;
using Act = std::function<void(QWidget&)>;

// The visible widget of this type with this accessible name, title or face; null if there is none.
template <typename T>
T* Seen(const QString& name) {
  for (QWidget* widget : QApplication::allWidgets()) {
    auto* found = qobject_cast<T*>(widget);
    if (found == nullptr || !found->isVisible()) continue;
    auto* button = qobject_cast<QPushButton*>(widget);
    const QString face = button != nullptr ? button->text().remove('&') : widget->windowTitle();
    if (face == name || widget->accessibleName() == name) return found;
    if (widget->accessibleDescription() == name) return found;
  }
  return nullptr;
}

Act Click(const QString& button) {
  return [button](QWidget&) {
    ASSERT_NE(Seen<QPushButton>(button), nullptr) << button.toStdString();
    QTest::mouseClick(Seen<QPushButton>(button), Qt::LeftButton);
  };
}

Act Key(Qt::Key key) {
  return [key](QWidget& window) { QTest::keyClick(&window, key); };
}

Act Signal(int number) {
  return [number](QWidget&) { raise(number); };
}

void Cross(QWidget& window) {
  window.close();
}

// Acts as soon as the window with this title waits for the user.
void OnceSeen(const QString& title, const Act& act) {
  QTimer::singleShot(10, [title, act] {
    QWidget* window = Seen<QWidget>(title);
    window != nullptr ? act(*window) : OnceSeen(title, act);
  });
}

struct Person final : ports::ProgressViewEvents {
  explicit Person(std::function<void()> when_shown) : shown(std::move(when_shown)) {}
  void OnShown() override { shown(); }
  void OnCancel() override { ++cancels, cancelled(); }
  void OnStop() override { ++stops; }

  std::function<void()> shown;
  std::function<void()> cancelled = [] {};
  int cancels = 0;
  int stops = 0;
};

class QtFrontEndTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    const ScopedVariable locale("LC_ALL", "ru_RU.UTF-8");
    front_end = TryMakeQtFrontEnd();
    ASSERT_NE(front_end, nullptr);
    EXPECT_EQ(QApplication::instance(), nullptr) << "Qt starts with the first window";
    front_end->MakeErrorView();
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
  }
  static void TearDownTestSuite() { front_end.reset(); }

  // Opens a progress window, lets the user act in it and closes it.
  static void InWindow(const std::function<void(ports::ProgressView&, Person&, QWidget&)>& act) {
    const auto view = front_end->MakeProgressView();
    view->SetCaption("Окно");
    view->SetButton("Отмена", true);
    Person person([&] { act(*view, person, *Seen<QWidget>("Окно")), view->Close(); });
    view->Run(person);
    EXPECT_EQ(Seen<QWidget>("Окно"), nullptr);
  }

  static inline std::unique_ptr<ports::FrontEnd> front_end;
};

TEST_F(QtFrontEndTest, EveryWayToCancelIsRaisedOnceAndClosesNothing) {
  const std::pair<Act, int> cases[] = {{Click("Отмена"), 0},
                                       {Key(Qt::Key_Return), 0},
                                       {Key(Qt::Key_Escape), 1},
                                       {Cross, 1},
                                       {Signal(SIGINT), 1}};
  for (const auto& c : cases) {
    for (const bool is_enabled : {true, false}) {
      InWindow([&](ports::ProgressView& view, Person& person, QWidget& window) {
        view.SetButton("Отмена", is_enabled);
        c.first(window);
        EXPECT_EQ(person.cancels, 0) << "raised from within Qt";
        front_end->RunPendingEvents();
        front_end->RunPendingEvents();
        EXPECT_EQ(person.cancels, is_enabled ? 1 : c.second) << &c - cases;
        EXPECT_EQ(person.stops, 0);
        EXPECT_TRUE(window.isVisible());
      });
    }
  }
}

// Counts the paintings of the parts of windows.
struct Paintings final : QObject {
  int Of(const std::function<void()>& act) {
    count = 0;
    qApp->installEventFilter(this);
    act();
    qApp->removeEventFilter(this);
    return count;
  }
  bool eventFilter(QObject* object, QEvent* event) override {
    const auto* widget = qobject_cast<QWidget*>(object);
    if (event->type() == QEvent::Paint && widget != nullptr && !widget->isWindow()) ++count;
    return false;
  }
  int count = 0;
};

TEST_F(QtFrontEndTest, ShowsWhatItIsToldAtOnceAndKeepsItsSize) {
  InWindow([](ports::ProgressView& view, Person&, QWidget& window) {
    const QSize size = window.size();
    Paintings paintings;
    QImage before;
    for (const char* name :
         {"download", "scan", "dbnew", "dbgear", "trash", "install", "brush", ""}) {
      EXPECT_EQ(paintings.Of([&] { view.SetPicture(name); }), 1) << name;
      const QImage shown = window.grab().toImage();
      EXPECT_NE(shown, before) << name;
      before = shown;
    }
    const std::string detail = "https://update.example/" + std::string(5000, 'x');
    EXPECT_EQ(paintings.Of([&] { view.SetDetail(detail); }), 1);
    EXPECT_EQ(paintings.Of([&] { view.SetDetail(detail); }), 0);
    EXPECT_EQ(paintings.Of([&] { view.SetButton("Закрыть", true); }), 1);
    const auto* label = Seen<QLabel>("Подробности");
    const int y_without_bar = label->y();
    view.SetProgress(12.5, "1 234/9 872");
    EXPECT_GT(paintings.Of([&] { view.ShowBar(ports::BarKind::kBarWithCounter); }), 1);
    EXPECT_EQ(Seen<QProgressBar>("Ход обновления")->value(), 125);
    const auto* counter = QAccessible::queryAccessibleInterface(Seen<QLabel>("Выполнено"));
    EXPECT_EQ(counter->text(QAccessible::Name), "1 234/9 872");
    EXPECT_GT(label->y(), y_without_bar);
    const auto set_notes = [&] { view.SetNotes({"этап 2 из 6", "Файл.dll", "байт"}); };
    EXPECT_GE(paintings.Of(set_notes), 3);
    EXPECT_EQ(paintings.Of(set_notes), 0);
    EXPECT_EQ(Seen<QLabel>("Этап обновления")->text(), "этап 2 из 6");
    EXPECT_EQ(Seen<QLabel>("Компонента")->text(), "Файл.dll");
    EXPECT_EQ(Seen<QLabel>("Единица")->text(), "байт");
    view.ShowBar(ports::BarKind::kCounter);
    EXPECT_TRUE(Seen<QLabel>("Выполнено"));
    EXPECT_EQ(Seen<QProgressBar>("Ход обновления"), nullptr);
    EXPECT_EQ(label->y(), y_without_bar);
    EXPECT_EQ(window.size(), size);
  });
}

TEST_F(QtFrontEndTest, QuestionsAreAnsweredInEveryWay) {
  const std::vector<Act> yes = {Click("Да"), Key(Qt::Key_Return)};
  const std::vector<Act> no = {Click("Нет"), Key(Qt::Key_Escape), Cross};
  for (std::size_t i = 0; i < yes.size() + no.size(); ++i) {
    OnceSeen("Вопрос", [&](QWidget& box) {
      EXPECT_EQ(dynamic_cast<QMessageBox&>(box).text(), "<b>Да</b>?\nВторая строка.");
      EXPECT_EQ(dynamic_cast<QMessageBox&>(box).textFormat(), Qt::PlainText);
      i < yes.size() ? yes[i](box) : no[i - yes.size()](box);
    });
    EXPECT_EQ(front_end->AskYesNo("Вопрос", "<b>Да</b>?\r\nВторая строка."), i < yes.size()) << i;
  }
}

TEST_F(QtFrontEndTest, ABoxIsAsWideAsItsLinesAndCopiesAllThatItShows) {
  const std::string line = "Ошибка загрузки файла \"https://update.example/TMW_5.12.340/a.tmz\":";
  const Act read = [&](QWidget& window) {
    auto& box = dynamic_cast<QMessageBox&>(window);
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.informativeText(), "Совет <b>.");
    EXPECT_GE(box.findChild<QLabel*>("qt_msgbox_label")->width(),
              box.fontMetrics().horizontalAdvance(QString::fromStdString(line)));
    Click("Копировать")(box);
    EXPECT_TRUE(box.isVisible());
    Click("OK")(box);
  };
  OnceSeen("Сообщение", read);
  front_end->ShowMessage(ports::MessageKind::kWarning, "Сообщение", line + "\r\nБеда.",
                         "Совет <b>.");
  EXPECT_EQ(QApplication::clipboard()->text().toStdString(),
            "Сообщение\n\n" + line + "\nБеда.\n\nСовет <b>.");
  OnceSeen("Сообщение", [](QWidget& box) {
    EXPECT_EQ(Seen<QPushButton>("Копировать"), nullptr);
    Key(Qt::Key_Escape)(box);
  });
  front_end->ShowMessage(ports::MessageKind::kInformation, "Сообщение", "Готово.", "");
}

TEST_F(QtFrontEndTest, AnOpenQuestionTakesAllPressesAndYieldsToWhoeverInsists) {
  const Act cross_behind = [](QWidget& box) { Cross(*box.parentWidget()); };
  const std::pair<std::vector<Act>, int> cases[] = {{{cross_behind, Click("Нет")}, 0},
                                                    {{Signal(SIGINT), Click("Нет")}, 0},
                                                    {{Signal(SIGINT), Signal(SIGINT)}, 1},
                                                    {{Signal(SIGTERM)}, 1},
                                                    {{Signal(SIGHUP)}, 1}};
  for (const auto& c : cases) {
    InWindow([&](ports::ProgressView&, Person& person, QWidget& window) {
      person.cancelled = [] { EXPECT_FALSE(front_end->AskYesNo("Вопрос", "Прекратить?")); };
      OnceSeen("Вопрос", [&](QWidget& box) {
        for (const Act& press : c.first)
          press(box);
      });
      Click("Отмена")(window);
      window.setWindowState(Qt::WindowMinimized);
      for (int i = 0; i < 3; ++i)
        front_end->RunPendingEvents();
      EXPECT_EQ(person.cancels, 1);
      EXPECT_EQ(person.stops, c.second) << &c - cases;
      EXPECT_FALSE(window.isMinimized()) << "would hide the question";
    });
  }
}

TEST_F(QtFrontEndTest, TextIsTypedOrDeclined) {
  for (const bool is_declined : {false, true}) {
    OnceSeen("Пароль", [&](QWidget& box) {
      auto* line = qobject_cast<QLineEdit*>(box.focusWidget());
      ASSERT_NE(line, nullptr);
      EXPECT_EQ(line->echoMode() == QLineEdit::Password, is_declined);
      line->insert("Ключ & №");
      QTest::keyClick(line, is_declined ? Qt::Key_Escape : Qt::Key_Return);
    });
    EXPECT_EQ(front_end->AskText("Пароль", "Введите A&B:", is_declined),
              is_declined ? std::nullopt : std::optional<std::string>("Ключ & №"));
  }
}

struct Reader final : ports::ErrorViewEvents {
  explicit Reader(ports::ErrorView& shown) : view(shown) {}
  void OnDetails() override { view.SetDetailView(true, "Подробнее  <<"); }
  void OnCopy() override { copies += view.CopyText("кратко\r\nвсё") ? 1 : 0; }

  ports::ErrorView& view;
  int copies = 0;
};

TEST_F(QtFrontEndTest, TheErrorWindowTurnsItsViewCopiesAndCloses) {
  const auto view = front_end->MakeErrorView();
  view->SetTexts({"Сбой", "Произошла ошибка:", "Подробно", "кратко", "кратко\r\nвсё", "Копировать",
                  "Закрыть", "Повторите.", "Журнал:", "/home/п/TmWebUpdate.log"});
  view->SetDetailView(false, "Подробнее  >>");
  Reader reader(*view);
  QClipboard* clipboard = QApplication::clipboard();
  const auto full_text = [] { return Seen<QPlainTextEdit>("Подробно"); };
  const auto copy = [](QWidget* focused) { QTest::keySequence(focused, QKeySequence::Copy); };
  // Each step is an action of the user; the next one follows when the window has responded.
  const Act steps[] = {
      [](QWidget&) { EXPECT_EQ(Seen<QLabel>("Что делать дальше")->text(), "Повторите."); },
      Click("Подробнее  >>"),
      [&](QWidget& window) {
        EXPECT_EQ(full_text()->toPlainText(), "кратко\nвсё");
        EXPECT_EQ(Seen<QLineEdit>("Журнал:")->text(), "/home/п/TmWebUpdate.log");
        EXPECT_EQ(Seen<QLabel>("Что делать дальше"), nullptr);
        EXPECT_GT(full_text()->height(), window.height() / 2) << "fills it";
      },
      Click("Копировать"),
      [&](QWidget&) { copy(full_text()); },
      [&](QWidget&) { copy(Seen<QPushButton>("Подробнее  <<")); },
      [&](QWidget&) {
        EXPECT_EQ(clipboard->text(), "кратко\nвсё");
        full_text()->moveCursor(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
        copy(full_text());
      },
      Key(Qt::Key_Escape)};
  std::size_t step = 0;
  QTimer clock;
  QObject::connect(&clock, &QTimer::timeout, [&] {
    if (step < std::size(steps)) steps[step++](*Seen<QWidget>("Сбой"));
  });
  clock.start(20);
  view->Run(reader);
  EXPECT_EQ(step, std::size(steps));
  EXPECT_EQ(reader.copies, 3);
  EXPECT_EQ(clipboard->text(), "кратко") << "the selected part alone";
}

TEST(Display, IsTriedBeforeItIsUsed) {
  const ScopedVariable no_wayland("WAYLAND_DISPLAY", "");
  const std::pair<const char*, const char*> unusable[] = {{"", ""}, {"", ":9999"}, {"absent", ""}};
  for (const auto& [name, number] : unusable) {
    const ScopedVariable platform_name("QT_QPA_PLATFORM", name);
    const ScopedVariable display("DISPLAY", number);
    EXPECT_EQ(TryMakeQtFrontEnd(), nullptr) << name << number;
  }
  const ScopedVariable wanted("TMW_FRONT_END", "terminal");
  const auto front_end = MakeFrontEnd();
  const auto view = front_end->MakeProgressView();
  EXPECT_EQ(QApplication::instance(), nullptr);
}

// The display may go between the trial and the first window, or later.
TEST(DisplayDeathTest, ALossIsShownInTheUsersWords) {
  const ScopedVariable platform_name("QT_QPA_PLATFORM", "absent");
  EXPECT_EXIT(QtApplication(), testing::ExitedWithCode(1),
              "^\\[!\\] Программа обновления\nГрафическая среда перестала отвечать");
  EXPECT_EXIT(
      {
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
        const QtApplication application;
        qWarning("The X11 connection broke (error 1). Did the X11 server die?");
      },
      testing::ExitedWithCode(1), "Графическая среда перестала отвечать");
}

}  // namespace
}  // namespace platform
