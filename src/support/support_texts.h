#pragma once

#include <cstddef>
#include <string>

#include "foundation/text.h"

// What the support program shows and writes into its report.
namespace support::texts {

inline constexpr const char* kTitle = "Сведения для поддержки";
inline constexpr const char* kHelp =
    "TmSupport: собирает в один архив сведения, по которым поддержка разбирается с ошибками\n"
    "обновления: журналы, настройки без паролей, версии, свободное место, контрольные суммы\n"
    "файлов программы, версию базы данных и число записей в ее таблицах. Содержание базы данных\n"
    "в архив не попадает.\n\n"
    "  TmSupport [--output АРХИВ]\n"
    "  TmSupport --help | --version\n\n"
    "  --output АРХИВ   где сохранить архив; без этого - в текущей папке\n";
inline constexpr const char* kSendIt = "Отправьте этот файл в поддержку.";

inline std::string Saved(const std::string& path) {
  return "Сведения сохранены в файле " + tmw::Quoted(path) + ".";
}

inline std::string UnknownArgument(const std::string& argument) {
  return "Неизвестный параметр " + tmw::Quoted(argument) + ". Справка: TmSupport --help";
}

inline std::string CannotWrite(const std::string& path) {
  return "Ошибка записи в файл " + tmw::Quoted(path) + ":";
}

inline std::string NotPacked(const std::string& path, int result) {
  return "Не удалось создать архив " + tmw::Quoted(path) + " (" + std::to_string(result) + ").";
}

// The report.
inline constexpr const char* kProgram = "Программа и система";
inline constexpr const char* kSettings = "Настройки";
inline constexpr const char* kSpace = "Свободное место, байт";
inline constexpr const char* kDatabase = "База данных";
inline constexpr const char* kFiles = "Файлы программы";
inline constexpr const char* kWayBack = "Возврат к предыдущей версии";
inline constexpr const char* kNothingKept = "Предыдущая версия не сохранена";
inline constexpr const char* kRollbackUnderWay = "Возврат начат и не завершен";
inline constexpr const char* kLastRollback = "Последний возврат: ";

// Of the list of kept files.
inline std::string Kept(const std::string& old_version, const std::string& new_version,
                        const std::string& date, std::size_t files) {
  return "Сохранена версия " + old_version + " (до обновления до " + new_version + "), " + date +
         ", файлов: " + std::to_string(files);
}

inline constexpr const char* kBuild = "Сборка: ";
inline constexpr const char* kProductVersion = "Версия программы \"Tamrin\": ";
inline constexpr const char* kUnknown = "неизвестна";
inline constexpr const char* kNotSet = "не задан";
inline constexpr const char* kDatabaseVersion = "Версия: ";
inline constexpr const char* kDatabaseLength = "Длина файла, байт: ";
inline constexpr const char* kRows = "Записей в таблицах:";
inline constexpr const char* kNoManifest =
    "Списка файлов обновления нет; контрольные суммы установленных файлов:";
inline constexpr const char* kSame = "совпадает";
inline constexpr const char* kDiffers = "отличается";
inline constexpr const char* kMissing = "отсутствует";

inline std::string SectionFailed(const std::string& reason) {
  return "Не удалось получить: " + reason;
}

}  // namespace support::texts
