#pragma once

#include <cstdint>
#include <string>

#include "foundation/text.h"

// What users read when the files of the installed product are changed.
namespace tmw::product_texts {

inline const std::string kBreak{kCrLf};

inline std::string NoTempFolder(const std::string& folder) {
  return "Невозможно создать временную папку для загрузки " + Quoted(folder) +
         ". Возможные причины: у текущего пользователя отсутствуют необходимые права; в системных "
         "настройках Windows указан неверный путь к временной папке.";
}

inline std::string MarkNotWritten(const std::string& file) {
  return "Ошибка записи в файл " + Quoted(file) + ":";
}

inline std::string RegisteredFileMissing(const std::string& file) {
  return "Регистрируемый файл " + Quoted(file) + " не найден.";
}

inline std::string UnregisteredFileMissing(const std::string& file) {
  return "Разрегистрируемый файл " + Quoted(file) + " не найден.";
}

inline std::string NotRegistered(const std::string& file, std::int32_t code,
                                 const std::string& reason) {
  return "Ошибка регистрации файла " + Quoted(file) + " (0x" + ToHex(code) + "):" + kBreak + reason;
}

inline std::string NotUnregistered(const std::string& file, std::int32_t code,
                                   const std::string& reason) {
  return "Ошибка разрегистрации файла " + Quoted(file) + " (0x" + ToHex(code) + "):" + kBreak +
         reason;
}

// The way back.
inline std::string ListDamaged(const std::string& file) {
  return "Список файлов предыдущей версии " + Quoted(file) + " поврежден.";
}

inline std::string ListOfOtherPlace(const std::string& then, const std::string& now) {
  return "Предыдущая версия сохранена, когда программа находилась в папке " + Quoted(then) +
         ", а сейчас она находится в папке " + Quoted(now) + ".";
}

inline std::string ListNamesOutside(const std::string& path) {
  return "В списке файлов предыдущей версии указан файл " + Quoted(path) +
         ", который лежит вне папок программы.";
}

}  // namespace tmw::product_texts
