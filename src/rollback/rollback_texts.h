#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/text.h"

// What the program of the way back shows.
namespace rollback::texts {

inline const std::string kBreak{tmw::kCrLf};

inline constexpr const char* kTitle = "Возврат к предыдущей версии";
inline constexpr const char* kHelp =
    "TmRollback: возвращает программу \"Tamrin\" к версии, которая стояла до последнего обновления:\n"
    "файлы программы, регистрацию компонент и, по желанию, базу данных из резервной копии.\n"
    "Нынешняя база данных не удаляется, а откладывается под другим именем.\n\n"
    "  TmRollback [--dry-run] [--yes] [--files-only]\n"
    "  TmRollback --finish\n"
    "  TmRollback --help | --version\n\n"
    "  --dry-run      проверить сохраненное и показать, что было бы сделано; ничего не менять\n"
    "  --yes          не спрашивать: вернуть файлы и базу данных\n"
    "  --files-only   вернуть только файлы программы; резервная копия базы данных не нужна\n"
    "  --finish       завершить прерванный возврат, не спрашивая\n";

inline std::string UnknownArgument(const std::string& argument) {
  return "Неизвестный параметр " + tmw::Quoted(argument) + ". Справка: TmRollback --help";
}

// Progress.
inline constexpr const char* kCaption = "Возврат к предыдущей версии программы \"Tamrin\"";
inline constexpr const char* kCancel = "Отмена";
inline constexpr const char* kVerifying = "Проверка предыдущей версии...";
inline constexpr const char* kUnpackingBooks = "Распаковка базы данных из резервной копии...";
inline constexpr const char* kRestoring = "Возврат файлов предыдущей версии...";
inline constexpr const char* kExchangingBooks = "Возврат базы данных...";
inline constexpr const char* kRegistering = "Регистрация компонент предыдущей версии...";
inline constexpr const char* kBusy = "Идет возврат к предыдущей версии программы \"Tamrin\".";

// Before it starts.
inline std::string ApplicationIsOpen(const std::string& title) {
  return "Для возврата к предыдущей версии необходимо закрыть приложение " + tmw::Quoted(title) +
         "." + kBreak + kBreak + "В данный момент приложение открыто. Продолжать ожидание?";
}

inline std::string UpdaterIsRunning() {
  return "Программа обновления или возврата к предыдущей версии уже работает." + kBreak + kBreak +
         "Подождать, пока она не будет закрыта?";
}

// Why nothing is brought back.
inline constexpr const char* kNothingKept =
    "Возвращаться не к чему: предыдущая версия программы не сохранена. Она сохраняется при каждом "
    "обновлении и удаляется после возврата.";
inline constexpr const char* kNothingToDo =
    "Возвращать нечего: файлы программы и база данных такие же, какими были до обновления.";
inline constexpr const char* kNothingToFinish = "Прерванного возврата нет.";
inline constexpr const char* kFinishUpdateFirst =
    "Обновление или восстановление программы было прервано, и предыдущая версия сохранена не для "
    "него. Сначала завершите его: запустите программу обновления.";
inline constexpr const char* kNetworkInstallation =
    "Файлы программы \"Tamrin\" располагаются на сетевом диске и используются несколькими "
    "компьютерами. Возврат к предыдущей версии в этом случае невозможен.";
inline const std::string kUnchangedSentence = " Ничего не изменено.";

inline std::string ListUnusable(const std::string& reason) {
  return reason + kUnchangedSentence;
}

inline std::string KeptFileSpoiled(const std::string& file) {
  return "Сохраненный файл предыдущей версии " + tmw::Quoted(file) +
         " отсутствует или изменен. Возврат невозможен: смешивать две версии нельзя.";
}

inline constexpr const char* kOtherBooks = "в ней другая база данных";

inline std::string BackupSpoiled(const std::string& archive, const std::string& reason) {
  return "Резервная копия базы данных " + tmw::Quoted(archive) +
         " отсутствует или повреждена: " + reason + "." + kBreak + kBreak +
         "Без нее можно вернуть только файлы программы (TmRollback --files-only).";
}

// In kilobytes: a few of them may be all that is missing.
inline std::string NoRoom(const std::string& folder, std::int64_t needed, std::int64_t free) {
  constexpr std::int64_t kKilobyte = 1024;
  return "Недостаточно места на диске, на котором находится папка " + tmw::Quoted(folder) + "." +
         kBreak + "Для возврата необходимо не менее " +
         std::to_string((needed + kKilobyte - 1) / kKilobyte) + " КБ, свободно " +
         std::to_string(free / kKilobyte) + " КБ." + kUnchangedSentence;
}

inline std::string OwnFileMissing(const std::string& file) {
  return "Файл " + tmw::Quoted(file) + ", необходимый для возврата, не найден.";
}

inline std::string NotRenamed(const std::string& from, const std::string& to) {
  return "Ошибка переименования файла " + tmw::Quoted(from) + " в " + tmw::Quoted(to) + ":";
}

inline std::string NotUnpackedTo(const std::string& file) {
  return "Ошибка записи распакованной базы данных в файл " + tmw::Quoted(file) + ":";
}

inline std::string RecordNotWritten(const std::string& file) {
  return "Ошибка записи в файл " + tmw::Quoted(file) + ":";
}

// The questions. A moment "2026-11-22 07:15:30" is shown as "22.11.2026 07:15".
inline std::string Moment(const std::string& moment) {
  constexpr std::size_t kLength = 16;
  if (moment.size() < kLength) return moment;
  return moment.substr(8, 2) + "." + moment.substr(5, 2) + "." + moment.substr(0, 4) +
         moment.substr(10, 6);
}

inline std::string Versions(const std::string& old_version, const std::string& new_version,
                            const std::string& date) {
  return "Предыдущая версия: " + (old_version.empty() ? "номер неизвестен" : old_version) +
         (date.empty() ? "" : " (до обновления " + Moment(date) + ")") + "." + kBreak +
         "Обновление, которое будет отменено: " + new_version + ".";
}

inline std::string Files(int replaced, int added) {
  return "Файлов программы будет возвращено: " + std::to_string(replaced) +
         ", удалено добавленных обновлением: " + std::to_string(added) + ".";
}

inline std::string BooksComeBack(const std::string& date, const std::string& set_aside) {
  return "База данных будет возвращена в том виде, в каком она была до обновления" +
         (date.empty() ? "" : " (" + Moment(date) + ")") +
         ". Записи, сделанные позже, останутся в файле " + tmw::Quoted(set_aside) + ".";
}

inline constexpr const char* kBooksUntouched = "База данных такая же, как до обновления.";
inline constexpr const char* kUpdateUnfinished =
    "Обновление было прервано; после возврата завершать его не нужно.";
inline constexpr const char* kClientsStayNew =
    "Если с этой базой данных работают другие компьютеры, на них останется новая версия программы.";
inline constexpr const char* kFilesQuestion = "Вернуть предыдущую версию программы?";
inline constexpr const char* kBooksQuestion =
    "Вернуть предыдущую версию программы вместе с базой данных?";
inline constexpr const char* kFilesOnlyQuestion =
    "Вернуть только файлы программы, а базу данных оставить нынешней?";
inline constexpr const char* kFilesOnlyWarning =
    "Предыдущая версия программы может отказаться работать с базой данных, которую изменило "
    "обновление.";
inline constexpr const char* kFinishQuestion =
    "Возврат к предыдущей версии был прерван. До его завершения работать с программой нельзя."
    "\r\n\r\nЗавершить возврат?";
inline constexpr const char* kAllVerified = "Сохраненные файлы проверены.";

// The end.
inline std::string Done(const std::string& old_version) {
  return "Программа \"Tamrin\" возвращена к предыдущей версии" +
         (old_version.empty() ? "" : " " + old_version) + ".";
}

inline std::string SetAside(const std::string& file) {
  return "Прежняя база данных отложена в файл " + tmw::Quoted(file) + ".";
}

inline std::string LeftInPlace(const std::vector<std::string>& files) {
  return "Добавленные обновлением файлы, которые с тех пор изменены, оставлены: " +
         tmw::Joined(files, ", ") + ".";
}

inline std::string NotRegistered(const std::vector<std::string>& reasons) {
  return "Не удалось зарегистрировать компоненты:" + kBreak + tmw::Joined(reasons, kBreak) +
         kBreak + kBreak +
         "Завершить возврат без их регистрации? Если ответить \"Нет\", ее повторит следующий запуск "
         "этой программы.";
}

// The system's words, with which a reason may end, end with a line break.
inline std::string Unfinished(const std::string& reason) {
  return tmw::TrimCharacters(reason, "\r\n") + kBreak + kBreak +
         "Возврат к предыдущей версии не завершен. Устраните причину и запустите эту программу еще "
         "раз: она продолжит с того же места. До завершения работать с программой \"Tamrin\" нельзя.";
}

}  // namespace rollback::texts
