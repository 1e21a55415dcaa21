#pragma once

#include <string>

#include "foundation/text.h"

// What is reported when a package cannot be made.
namespace packing::texts {

// The line above the system's error text.
inline std::string OpeningFailed(const std::string& path) {
  return "Ошибка открытия файла " + tmw::Quoted(path) + ": ";
}
inline std::string ReadingFailed(const std::string& path) {
  return "Ошибка чтения файла " + tmw::Quoted(path) + ": ";
}
inline std::string WritingFailed(const std::string& path) {
  return "Ошибка записи файла " + tmw::Quoted(path) + ": ";
}

inline std::string TooLarge(const std::string& source) {
  return "Файл " + tmw::Quoted(source) + " слишком велик для пакета.";
}
inline std::string Changed(const std::string& source) {
  return "Файл " + tmw::Quoted(source) + " изменился во время упаковки.";
}

}  // namespace packing::texts
