#pragma once

#include <string>

#include "foundation/text.h"

// What users read of this wing's own; system error texts stand in error_text_tables.
namespace platform::linux_texts {

// Settings files. A fault has no full stop: SettingsFault adds it.
inline std::string ReadingSettingsFailed(const std::string& path) {
  return "Ошибка чтения файла настроек " + tmw::Quoted(path) + ":";
}

inline std::string SettingsFilePlace(const std::string& path) {
  return "файл " + tmw::Quoted(path);
}

inline std::string SettingsFault(const std::string& path, int line, const std::string& fault) {
  return "Ошибка чтения файла настроек " + tmw::Quoted(path) + ", строка " + std::to_string(line) +
         ":" + std::string(tmw::kCrLf) + fault + ".";
}

inline constexpr const char* kNoHeader =
    "нет заголовка файла реестра (REGEDIT4 или Windows Registry Editor Version 5.00)";
inline constexpr const char* kNotUtf8 = "текст не в кодировке UTF-8";
inline constexpr const char* kZeroCharacter = "нулевой символ в тексте";
inline constexpr const char* kUnknownLine =
    "ожидается ключ, имя параметра в кавычках или примечание";
inline constexpr const char* kNoEqualsSign = "после имени параметра нет знака \"=\"";
inline constexpr const char* kValueBeforeKey = "параметр стоит до первого ключа";
inline constexpr const char* kOpenKey = "имя ключа не закрыто скобкой \"]\"";
inline constexpr const char* kTextAfterKey = "лишний текст после ключа";
inline constexpr const char* kTextAfterDeletion = "лишний текст после знака удаления";
inline constexpr const char* kBadQuotedText = "ошибка в строке в кавычках";
inline constexpr const char* kTextAfterQuotedText = "лишний текст после строки в кавычках";
inline constexpr const char* kBadDoubleWord =
    "значение dword: ожидается от 1 до 8 шестнадцатеричных цифр";
inline constexpr const char* kUnknownValueKind = "неизвестный вид значения";
inline constexpr const char* kBadHexKind = "ошибка в виде значения hex";
inline constexpr const char* kBadHexBytes = "значение hex: ожидаются байты через запятую";

// The command line.
inline constexpr const char* kHelp =
    "Использование: TmWebUpdate [ПАРАМЕТР]...\n"
    "Обновляет программу \"Tamrin\" с сервера обновлений.\n"
    "\n"
    "  -w АДРЕС    сервер обновлений вместо указанного в настройках\n"
    "  -e ФАЙЛ     программа, запускаемая после обновления\n"
    "  -p ТЕКСТ    параметры этой программы\n"
    "  -v ВЕРСИЯ   установленная версия программы \"Tamrin\"\n"
    "  -y          без вопроса об объеме загрузки и без заключительного сообщения\n"
    "  --help      эта справка\n"
    "  --version   версия программы обновления\n"
    "\n"
    "Код завершения:\n"
    "  0  программа обновлена, или обновление не требуется\n"
    "  1  ошибка\n"
    "  2  неверная командная строка\n"
    "  3  эту установку так обновить нельзя, или обновление отменено\n";

inline std::string ProgramAndVersion(const std::string& version) {
  return "TmWebUpdate " + version + "\n";
}

// The terminal.
inline constexpr const char* kYesOrNo = "[д/н] ";
inline constexpr const char* kSayYesOrNo = "Введите \"д\" (да) или \"н\" (нет).\n";
inline constexpr const char* kNobodyAnswers = "(Ответить некому: принято \"нет\".)\n";
// What counts as an answer: as shown, as an encoding without Cyrillic shows it, and in English.
inline constexpr const char* kYesWords[] = {"д", "да", "d", "da", "y", "yes"};
inline constexpr const char* kNoWords[] = {"н", "нет", "n", "net", "no"};
inline constexpr const char* kDetailsKeys[] = {"п", "p", "d"};  // the first one is shown
inline constexpr const char* kCloseKeys[] = {"з", "z", "c"};

// The display server has gone.
inline constexpr const char* kDisplayLost =
    "[!] Программа обновления\n"
    "Графическая среда перестала отвечать, программа обновления завершена. Запустите ее еще раз: "
    "она закончит начатое.\n";

// The windows: buttons, and the names that screen readers speak.
inline constexpr const char* kYes = "&Да";
inline constexpr const char* kNo = "&Нет";
inline constexpr const char* kOk = "OK";
inline constexpr const char* kCancel = "Отмена";
inline constexpr const char* kCopy = "&Копировать";
inline constexpr const char* kProgressBar = "Ход обновления";
inline constexpr const char* kStage = "Этап";
inline constexpr const char* kDetail = "Подробности";
inline constexpr const char* kCounter = "Выполнено";
inline constexpr const char* kStep = "Этап обновления";
inline constexpr const char* kComponent = "Компонента";
inline constexpr const char* kUnit = "Единица";
inline constexpr const char* kAdvice = "Что делать дальше";
inline constexpr const char* kPace = "Скорость и оставшееся время";

}  // namespace platform::linux_texts
