#pragma once

#include <cstdint>
#include <string>

#include "foundation/text.h"

// What the user reads about packages.
namespace tmw::rar_texts {

inline constexpr const char* kNotOpen = "Архив не открыт.";

inline std::string EntryNotFound(const std::string& entry, const std::string& archive) {
  return "Файл \"" + entry + "\" не найден в архиве \"" + archive + "\".";
}

inline std::string ProcessingFailed(const std::string& archive, const std::string& message) {
  const std::string which = archive.empty() ? "" : " \"" + archive + "\"";
  return "Ошибка при обработке архивного файла" + which + ":" + std::string(kCrLf) + message;
}

// By the codes of the RAR interface.
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

}  // namespace tmw::rar_texts
