#pragma once

#include <cstdint>
#include <string>

#include "foundation/text.h"

// What users read about packages, zip files and the companion library.
namespace tmw::packages_texts {

// The line above the system's error text.
inline std::string LibraryNotLoaded(const std::string& library) {
  return "Ошибка загрузки библиотеки " + Quoted(library) + ": ";
}
inline std::string HashingFailed(const std::string& file) {
  return "Ошибка подсчета контрольной суммы файла " + file + ": ";
}

// Zip files. The prompts are the library's own.
inline constexpr const char* kNoLibrary = "Отсутствует UnTmz.dll.";
inline constexpr const char* kPasswordPrompt = "Please Enter The Password!";
inline constexpr const char* kCommentPrompt = "Enter the comment";
// The library's words for some results; deliberately not attached to errors.
inline constexpr const char* kUnexpectedEnd = "Unexpected end of ZIP file";
inline constexpr const char* kStructureError = "ZIP file structure error";
inline constexpr const char* kNothingToDo = "Nothing to do for ZIP";
inline constexpr const char* kCannotOpenToWrite = "ZIP couldn't open to write";

// RAR packages.
inline constexpr const char* kNotOpen = "Архив не открыт.";

inline std::string EntryNotFound(const std::string& entry, const std::string& archive) {
  return "Файл " + Quoted(entry) + " не найден в архиве " + Quoted(archive) + ".";
}

inline std::string ProcessingFailed(const std::string& archive, const std::string& message) {
  const std::string which = archive.empty() ? "" : " " + Quoted(archive);
  return "Ошибка при обработке архивного файла" + which + ":" + std::string(kCrLf) + message;
}

inline std::string TooLarge(std::int64_t max_bytes) {
  return "Распакованные данные больше допустимого (" + std::to_string(max_bytes) + " байт).";
}

// The meaning of a code of the RAR interface.
inline std::string ResultText(std::int32_t code) {
  switch (code) {
    case 0:
      return "Ошибки нет.";
    case 10:
      return "Достигнут конец архива.";
    case 11:
      return "Недостаточно памяти.";
    case 12:
      return "Архив поврежден.";
    case 13:
      return "Файл не является файлом архива нужного формата.";
    case 14:
      return "Неизвестный формат архива.";
    case 15:
      return "Ошибка открытия файла архива.";
    case 16:
      return "Ошибка создания распаковываемого файла.";
    case 17:
      return "Ошибка закрытия файла.";
    case 18:
      return "Ошибка чтения.";
    case 19:
      return "Ошибка записи распаковываемого файла.";
    case 20:
      return "Недостаточный размер буфера.";
    case 21:
      return "Неизвестная ошибка.";
    case 22:
      return "Требуется пароль.";
    default:
      return "Неизвестная ошибка (" + std::to_string(code) + ").";
  }
}

}  // namespace tmw::packages_texts
