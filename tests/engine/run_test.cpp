#include <algorithm>
#include <filesystem>

#include "ports/companion_library.h"
#include "product/registration.h"
#include "tests/engine/run_fixture.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;
using tmw::RunOutcome;

const std::string kError = "warning|Ошибка загрузки|";
const std::string kTitle = "information|Программа обновления|";

std::string Volume(const std::string& size) {
  return "question|Обновление программы|Ориентировочный объем файлов, которые необходимо "
         "загрузить,\r\nсоставляет " +
         size + ".\r\n\r\nОсуществлять загрузку и установку?";
}

// The announced sizes of a release's files on the server, in words.
std::string SumOf(const Sandbox& sandbox, const Log& names) {
  std::size_t sum = 0;
  for (const std::string& name : names)
    sum += sandbox.Read("server/TMW_3.6.0.2/" + name).size();
  return std::to_string(sum) + "байт";
}

const Log kBeginning = {"/TMW_version.dat", "/TMW_links.dat", "/TMW_3.6.0.2/_PackageManifest.tmz"};

Log Asked(Log names) {
  for (std::string& name : names)
    name = "/TMW_3.6.0.2/" + name;
  names.insert(names.begin(), kBeginning.begin(), kBeginning.end());
  return names;
}

TEST_F(RunTest, AClientInstallationIsBroughtUpToDate) {
  release_.files = {{"Программа.dll", "new program"},
                    {"current.txt", "current", "{p}"},
                    {"Скрипт.TMS", "new script", "{p}Bin\\Глубже/", "parts/one.tmz"},
                    {"guarded.dll", "guarded", "{p}Bin", "", 2},
                    {"Данные.tms", "new data", "{p}"},
                    {"данные.XML", "part of the release", "{p}"},
                    {"text.txt", std::string("\xFF\xFEt\0", 4), "{p}Bin", "", 3}};
  release_.files[6].content = std::string("t\0", 2);
  Publish();
  sandbox_.Write("Продукт/Bin/Программа.dll", "old program, longer");
  sandbox_.Write("Продукт/current.txt", "current");
  sandbox_.Write("Продукт/данные.XML", "part of the release");
  sandbox_.Write("Продукт/Bin/Глубже/Скрипт.xml", "goes with the script");
  sandbox_.Write("Продукт/own.txt", "the user's own");
  on_line_ = [&](const std::string& line) {
    if (line == "icon install") front_end_.event_rounds = 0;
  };
  EXPECT_EQ(
      Run(),
      Log{Volume(SumOf(sandbox_, {"f1.tmz", "parts/one.tmz", "f3.tmz", "f4.tmz", "f6.tmz"}))});
  EXPECT_TRUE(updated_);
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll"), "new program");
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/Глубже/Скрипт.TMS"), "new script");
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/guarded.dll").substr(0, 7), "guarded");
  EXPECT_EQ(sandbox_.Read("Продукт/Bin/text.txt"), release_.files[6].content);
  EXPECT_EQ(sandbox_.Read("Продукт/own.txt"), "the user's own");
  EXPECT_FALSE(sandbox_.Has("Продукт/Bin/Глубже/Скрипт.xml"));
  EXPECT_TRUE(sandbox_.Has("Продукт/данные.XML"));
  EXPECT_EQ(Requests(), Asked({"f1.tmz", "parts/one.tmz", "f3.tmz", "f4.tmz", "f6.tmz"}));
  EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate"));
  EXPECT_EQ(front_end_.event_rounds, 5) << "the window lives while files are installed";
  EXPECT_EQ(listener_.steps,
            "1/4 2/4 3/4 Программа.dll Скрипт.TMS guarded.dll Данные.tms text.txt 4/4 ");
  Log stages = listener_.log;
  std::erase_if(stages, [](const std::string& line) {
    return line == "main " || line.starts_with("sub ") || line.starts_with("range ");
  });
  EXPECT_EQ(stages, (Log{"icon ",
                         "mode 1",
                         "icon download",
                         "main Получение номера текущей версии...",
                         "main Выбор сервера для загрузки...",
                         "main Получение списка файлов...",
                         "main Разбор списка файлов...",
                         "icon scan",
                         "main Отбор компонент, подлежащих загрузке...",
                         "icon download",
                         "main Загрузка компонент...",
                         "main Сохранение предыдущей версии...",
                         "icon trash",
                         "mode 0",
                         "awake",
                         "main Удаление старых компонент...",
                         "icon install",
                         "main Установка новых компонент...",
                         "icon brush",
                         "main Удаление временных файлов...",
                         "asleep",
                         "mode 2"}));

  EXPECT_EQ(Run(), Log{kTitle + "Все компоненты, справочники и таблицы установленной на данном "
                                "компьютере программы соответствуют тем, что находятся на сервере "
                                "Kestrel Soft."});
  EXPECT_FALSE(updated_);
  EXPECT_EQ(tmw::GetRunOutcome(), RunOutcome::kDone);
}

// Also after a kill inside clean-up, when there is nothing to install any more.
TEST_F(RunTest, WhatAbandonedReleasesHaveLeftIsRemovedOnceNothingIsToBeInstalled) {
  Publish();
  sandbox_.Write("own/books", "the user's own");
  const auto run_over_leftovers = [&] {
    for (const char* const name : {"R 1/Parts/a.part", "R 1/DBUpdates/sub/b.xml", "page.dat"})
      sandbox_.Write("tmp/TMW_WebUpdate/" + std::string(name), "left");
    if (!kOnWindows) {
      std::filesystem::create_directory_symlink(ToPath(Path("own")),
                                                ToPath(Path("tmp/TMW_WebUpdate/R 1/link")));
    }
    front_end_.answers = {old_version_.empty()};
    const auto boxes = Run().size();
    EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate"));
    EXPECT_EQ(boxes, 1U);
  };
  run_over_leftovers();
  EXPECT_TRUE(updated_);
  run_over_leftovers();
  EXPECT_FALSE(updated_);
  old_version_ = "3.6.0.2";
  run_over_leftovers();
  EXPECT_EQ(sandbox_.Read("own/books"), "the user's own");
}

TEST_F(RunTest, ASecondRunAfterACancelFetchesOnlyTheRest) {
  Publish();
  cancel_at_ = "sub " + server_.Url("/TMW_3.6.0.2/f2.tmz");
  EXPECT_EQ(Run().size(), 1U) << "a cancel is silent";
  EXPECT_FALSE(updated_);
  EXPECT_FALSE(sandbox_.Has("Продукт/help.txt"));
  EXPECT_EQ(sandbox_.Read("tmp/TMW_WebUpdate/R 3.6.0.2/Loaded/Программа.dll"), "new program");
  cancel_at_.clear();
  front_end_.answers = {true};
  Run();
  EXPECT_TRUE(updated_);
  EXPECT_EQ(Requests(), Asked({"f2.tmz"}));
  const auto whole = static_cast<std::int32_t>(sandbox_.Read("server/TMW_3.6.0.2/f1.tmz").size());
  EXPECT_TRUE(std::count(listener_.positions.begin(), listener_.positions.end(), whole))
      << "a reused file moves the bar by its size";
  EXPECT_EQ(sandbox_.Read("Продукт/help.txt"), "new help");
}

TEST_F(RunTest, ACancelIsHeardInEveryDownloadOfThePreparation) {
  fallback_url_ = server_.Url("/fallback");
  for (const auto& [stage, updater, requests] :
       {std::tuple("Получение номера текущей версии...", "1.0", 1U),
        {"Выбор сервера для загрузки...", "1.0", 2U},
        {"Получение списка файлов...", "1.0", 3U},
        {"Загрузка новой версии программы обновления...", "1.9999", 3U}}) {
    release_.needed_updater = updater;
    release_.updater_components = {{"next", sandbox_.Write("next", "next")}};
    Publish();
    cancel_at_ = std::string("main ") + stage;
    EXPECT_EQ(Run(), Log{}) << stage;
    EXPECT_EQ(Requests().size(), requests) << stage;
  }
}

TEST_F(RunTest, AnInterruptedInstallationIsFinishedThoughAllFilesAreNew) {
  release_.files = {{"one", "1", "{p}"}, {"two", "2", "{p}sub"}};
  Publish();
  on_line_ = [&](const std::string& line) {
    if (line == "icon install") sandbox_.Write("Продукт/sub", "a file where a folder must be");
  };
  ASSERT_EQ(Run().size(), 2U);
  EXPECT_TRUE(front_end_.log[1].starts_with(kError)) << front_end_.log[1];
  EXPECT_FALSE(updated_);
  EXPECT_EQ(sandbox_.Read("tmp/TMW_WebUpdate/R 3.6.0.2/_Installing.txt"), "R 3.6.0.2");
  EXPECT_EQ(sandbox_.Read("Продукт/TMW_Installing.txt"), "R 3.6.0.2");
  EXPECT_EQ(advice_,
            "Обновление установлено не полностью. Устраните причину и запустите программу "
            "обновления еще раз: она завершит установку. Заново загружать то, что уже загружено, "
            "не понадобится.\r\n\r\nПрограмма обновления: \"TmWebUpdate\"");
  on_line_ = nullptr;
  std::filesystem::remove(ToPath(Path("Продукт/sub")));
  sandbox_.Write("Продукт/sub/two", "2");
  front_end_.answers = {true};
  old_version_ = "3.6.0.2";
  release_.version_id = "R 3.6.0.2 again";
  Publish();
  EXPECT_EQ(Run(), Log{Volume("0байт")}) << "the version is no reason to ask";
  EXPECT_TRUE(updated_);
  EXPECT_FALSE(sandbox_.Has("tmp/TMW_WebUpdate/R 3.6.0.2/_Installing.txt"));
  old_version_.clear();
  EXPECT_EQ(Run().size(), 1U);
  EXPECT_FALSE(updated_) << "the mark went with the clean-up";
}

TEST_F(RunTest, WhatDisappearsDuringTheRunIsNamed) {
  Publish();
  const std::string loaded = Path(tmw::NativePath("tmp/TMW_WebUpdate/R 3.6.0.2/Loaded/help.txt"));
  on_line_ = [&](const std::string& line) {
    if (line == "main Установка новых компонент...") std::filesystem::remove(ToPath(loaded));
  };
  ASSERT_EQ(Run().size(), 2U);
  EXPECT_EQ(front_end_.log[1],
            kError + "По неизвестной причине отсутствует загруженный файл \"" + loaded + "\".");
  EXPECT_FALSE(updated_);
  on_line_ = nullptr;
  const ScopedVariable no_folder(kOnWindows ? "TMP" : "TMPDIR", sandbox_.Write("file", ""));
  ASSERT_EQ(Run().size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with(kError +
                                            "Невозможно создать временную папку для "
                                            "загрузки \"" +
                                            sandbox_.Path("file")))
      << front_end_.log[0];
  EXPECT_TRUE(front_end_.log[0].ends_with(
      "\". Возможные причины: у текущего пользователя отсутствуют необходимые права; в системных "
      "настройках Windows указан неверный путь к временной папке."));
}

TEST_F(RunTest, EitherMarkIsEnoughForARunToFinishTheInstallation) {
  release_.files.push_back({"tmwebupdate.exe", "updater", "{p}tm"});
  Publish();
  Run();
  for (const char* const mark :
       {"Продукт/TMW_Installing.txt", "tmp/TMW_WebUpdate/other/_Installing.txt"}) {
    sandbox_.Write(mark, "other");
    front_end_.answers = {true};
    EXPECT_EQ(Run(), Log{Volume("0байт")}) << mark;
    EXPECT_TRUE(updated_ && advice_.empty() && !sandbox_.Has(mark)) << mark;
  }
  on_line_ = [&](const std::string& line) {
    if (line == "icon install") throw tmw::ProgramError(1001, "x");
  };
  sandbox_.Write("Продукт/help.txt", "spoiled");
  front_end_.answers = {true};
  Run();
  EXPECT_TRUE(advice_.ends_with("\"" + Path("Продукт/tm/tmwebupdate.exe") + "\"")) << advice_;
}

TEST_F(RunTest, TheUpdatersOwnFilesAreReplacedInOneStepBeforeAnyOtherIsRemoved) {
  const std::string library = tmw::SplitFileName(ports_->companion->Path()).FileName();
  release_.files.push_back({"TMWEBUPDATE.exe", "new updater", "{p}tm"});
  release_.files.push_back({library, "new library", "{p}tm"});
  Publish();
  sandbox_.Write("Продукт/tm/TMWEBUPDATE.exe", "old updater");
  sandbox_.Write("Продукт/help.txt", "old help");
  const auto state = [&] {
    return sandbox_.Read("Продукт/tm/TMWEBUPDATE.exe") +
           (sandbox_.Has("Продукт/tm/" + library) ? ", library" : "") +
           (sandbox_.Has("Продукт/help.txt") ? ", help" : "") +
           (sandbox_.Has("Продукт/TMW_Installing.txt") ? ", mark" : "");
  };
  Log seen;
  on_line_ = [&](const std::string& line) {
    for (const char* const moment : {"icon trash", "sub TMWEBUPDATE.exe",
                                     "main Удаление старых компонент...", "icon install"}) {
      if (line == moment) seen.push_back(state());
    }
  };
  Run();
  EXPECT_TRUE(updated_);
  EXPECT_EQ(seen, (Log{"old updater, help", "old updater, help", "old updater, help, mark",
                       "new updater, library, help, mark", "new updater, library, mark"}));
  EXPECT_EQ(sandbox_.Read("Продукт/tm/" + library), "new library");

  sandbox_.Write("Продукт/tm/TMWEBUPDATE.exe", "old updater");
  on_line_ = [&](const std::string& line) {
    if (line != "icon trash") return;
    sandbox_.Write("tmp/TMW_WebUpdate/R 3.6.0.2/Loaded/TMWEBUPDATE.exe", "new upd4ter");
  };
  front_end_.answers = {true, true};
  Run();
  EXPECT_FALSE(updated_);
  EXPECT_EQ(state(), "old updater, library, help, mark");
}

TEST_F(RunTest, AFileThatChangesAfterItsCheckIsNotInstalledAndIsLoadedAnew) {
  const std::string loaded = "tmp/TMW_WebUpdate/R 3.6.0.2/Loaded/Программа.dll";
  for (const auto& [pack_type, content, other] :
       {std::tuple(1, std::string("new program"), std::string("new pr0gram")),
        {3, std::string("t\0", 2), std::string("u\0", 2)}}) {
    release_.files[0].pack_type = pack_type;
    release_.files[0].content = content;
    Publish();
    const auto swap = [&, bytes = other](const std::string& line) {
      if (line == "icon install") sandbox_.Write(loaded, bytes);
    };
    on_line_ = swap;
    front_end_.answers = {true};
    ASSERT_EQ(Run().size(), 2U);
    EXPECT_TRUE(front_end_.log[1].starts_with(kError + "Загруженный файл \"" + Path(loaded)));
    EXPECT_FALSE(updated_ || sandbox_.Has("Продукт/Bin/Программа.dll") || sandbox_.Has(loaded));
    on_line_ = nullptr;
    front_end_.answers = {true};
    Run();
    EXPECT_EQ(sandbox_.Read("Продукт/Bin/Программа.dll"), content);
  }
}

TEST_F(RunTest, InstalledAndOfferedVersionsAreCompared) {
  const std::string same =
      "question|Обновления не требуется|Текущая версия программы (3.6.0.2) совпадает с версией, "
      "находящейся на сайте. Как правило, в данной ситуации обновления не требуется.\r\n\r\n"
      "Есть возможность сверить файлы, установленные на данном компьютере, с теми, что находятся "
      "на сервере, и, в случае расхождения, установить с сервера правильные компоненты.\r\n\r\n"
      "Провести проверку и восстановление текущей версии программы?";
  const struct {
    const char* installed;
    std::string box;
    std::size_t requests;
    RunOutcome outcome;
  } cases[] = {
      {"3.6.0.1", "", 3, RunOutcome::kRefused},
      {"3.6.0.2", same, 1, RunOutcome::kDone},
      {"3.6.0.10",
       "information|Обновление невозможно|Текущая версия программы (3.6.0.10) новее той, что "
       "находится на сервере Kestrel Soft (3.6.0.2).\r\n\r\nСитуация необычна. Обновление "
       "программы средствами данной утилиты невозможно.",
       1, RunOutcome::kRefused},
      {"3.6.0.99999999999",
       kError + "Ошибка сравнения версий программы и обновления.\r\n\r\nТекущая версия: "
                "3.6.0.99999999999\r\nВерсия обновления: 3.6.0.2",
       1, RunOutcome::kFailed},
  };
  Publish();
  for (const auto& c : cases) {
    front_end_.answers = {false};
    old_version_ = c.installed;
    Run();
    EXPECT_EQ(front_end_.log.at(0),
              c.box.empty() ? Volume(SumOf(sandbox_, {"f1.tmz", "f2.tmz"})) : c.box);
    EXPECT_EQ(Requests().size(), c.requests) << c.installed;
    EXPECT_EQ(tmw::GetRunOutcome(), c.outcome) << c.installed;
    EXPECT_EQ(listener_.log.back(), "mode 2");
  }
  front_end_.answers = {true, true};
  old_version_ = "3.6.0.2";
  EXPECT_EQ(Run().size(), 2U) << "a repair";
  EXPECT_TRUE(updated_);
}

TEST_F(RunTest, AnUpdateForNewerUpdatersIsLeftToThePerson) {
  Publish();
  sandbox_.Write("server/TMW_version.dat", "3.6.0.2\r\n99.0");
  ASSERT_EQ(Run().size(), 1U);
  EXPECT_TRUE(front_end_.log[0].starts_with(
      "information|Обновление программы|Версия данной программы обновления слишком старая"));
  EXPECT_EQ(Requests().size(), 1U);
}

TEST_F(RunTest, WhatFailsItsCheckIsNamedAndNotInstalled) {
  using Edits = std::vector<std::pair<std::string, std::string>>;
  const std::pair<Edits, std::string> cases[] = {
      // The length of a text is not announced.
      {{{"PackType=\"1", "PackType=\"3"}, {"OrigSize=\"", "OrigSize=\"9"}, {"Hash=\"", "Hash=\"0"}},
       "Ошибка загрузки файла Программа.dll:\r\nКонтрольная сумма файла не совпадает с ожидаемой."},
      {{{"PackType=\"1", "PackType=\"4"}},
       "Ошибка распаковки файла Программа.dll: неизвестный метод упаковки ("},
      {{{"PackType=\"1", "PackType=\"2"}},
       "Ошибка проверки загруженного файла " +
           Path(tmw::NativePath("tmp/TMW_WebUpdate/R 3.6.0.2/Parts/Программа.dll.tmz"))},
  };
  for (const auto& [edits, box] : cases) {
    release_.manifest_edits = edits;
    Publish();
    front_end_.answers = {true};
    ASSERT_EQ(Run().size(), 2U) << box;
    EXPECT_TRUE(front_end_.log[1].starts_with(kError + box)) << front_end_.log[1];
    EXPECT_FALSE(updated_);
    EXPECT_FALSE(sandbox_.Has("Продукт/help.txt"));
  }
}

TEST_F(RunTest, TablesAreAnAffairOfTheServerComputer) {
  release_.files.clear();
  release_.dict = "Справочник1";
  release_.user = "Таблица1";
  Publish();
  EXPECT_EQ(Run(), Log{kTitle + "Требуется обновление таблиц или справочников в базе данных, "
                                "однако эту операцию следует выполнять с серверного компьютера."});
  EXPECT_EQ(tmw::GetRunOutcome(), RunOutcome::kRefused);
  EXPECT_TRUE(listener_.Has("sub Справочник: Справочник1"));
  EXPECT_TRUE(listener_.Has("sub Таблица: Таблица1"));
}

TEST_F(RunTest, ComponentsAreRegistered) {
  processes_.exit_code = 3;  // where there is a registration tool, it fails
  release_.files[0].content = tmw::ReadFileBytes(TMW_REGISTERING_LIBRARY);
  release_.files[0].is_com = " TRUE ";
  Publish();
  EXPECT_EQ(Run().size(), 1U);
  EXPECT_TRUE(updated_);
  const std::string library = Path("Продукт/Bin/Программа.dll");
  EXPECT_FALSE(tmw::UnregisterDll(library, false));
  EXPECT_TRUE(front_end_.log.at(1).starts_with(kError + "Ошибка разрегистрации файла \"" + library +
                                               "\" (0x5):\r\n"))
      << front_end_.log.at(1);
  EXPECT_FALSE(tmw::DoRegisterDll(Path("no.dll"), true));
  EXPECT_FALSE(tmw::DoRegisterDll(Path("no.dll"), false));
  EXPECT_EQ(front_end_.log.at(2),
            kError + "Регистрируемый файл \"" + Path("no.dll") + "\" не найден.");
  release_.files[0].content = "no library at all";
  Publish();
  front_end_.answers = {true};
  ASSERT_EQ(Run().size(), 2U);
  EXPECT_TRUE(front_end_.log[1].starts_with(kError + "Ошибка регистрации файла \"" + library));
  EXPECT_FALSE(updated_);
  front_end_.answers = {true};
  ASSERT_EQ(Run().size(), 2U) << "the run that finishes it says what still fails";
  EXPECT_TRUE(front_end_.log[1].starts_with("warning|Обновление программы|Не удалось заново"));
  EXPECT_NE(front_end_.log[1].find("\r\n\r\nОшибка регистрации файла \"" + library),
            std::string::npos);
  EXPECT_TRUE(updated_);
  sandbox_.Write("Продукт/help.txt", "spoiled");
  front_end_.answers = {true};
  EXPECT_EQ(Run().size(), 1U) << "an ordinary run does not";
}

}  // namespace
}  // namespace tests
