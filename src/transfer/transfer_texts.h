#pragma once

#include <cstdint>
#include <string>

#include "foundation/text.h"

// What users read when a transfer fails.
namespace tmw::transfer_texts {

inline std::string LoadingFailed(const std::string& url) {
  return "Ошибка загрузки файла " + Quoted(url) + ":";
}

inline std::string SeekingUrlFailed(const std::string& url) {
  return "Ошибка установки позиции в файле " + Quoted(url) + ":";
}

inline std::string HttpError(std::int32_t code, const std::string& reason) {
  return "Ошибка HTTP " + std::to_string(code) + ": " + OneLine(reason);
}

inline std::string TooLong(const std::string& url, std::int64_t max_bytes) {
  return "Файл " + Quoted(url) + " больше допустимого (" + std::to_string(max_bytes) + " байт).";
}

inline std::string ShorterThanPart(const std::string& url) {
  return LoadingFailed(url) + std::string(kCrLf) +
         "Сервер предлагает файл короче уже загруженной части. Загруженная часть сохранена.";
}

inline std::string OpeningFailed(const std::string& file_name) {
  return "Ошибка открытия файла " + Quoted(file_name) + ": ";
}

inline std::string WritingFailed(const std::string& file_name) {
  return "Ошибка записи в файл " + Quoted(file_name) + ":";
}

inline std::string WrittenInPart(std::uint32_t written, std::uint32_t asked) {
  return "Запись выполнена частично (" + std::to_string(written) + " вместо " +
         std::to_string(asked) + ").";
}

inline std::string SeekingFileFailed(const std::string& file_name, std::int32_t position,
                                     std::uint32_t move_method) {
  return "Ошибка установки указателя в файле " + Quoted(file_name) + " на позицию " +
         std::to_string(position) + " (" + std::to_string(move_method) + "):";
}

inline constexpr const char* kOverflow = "Переполнение: файлы от 2 ГБ не поддерживаются.";

}  // namespace tmw::transfer_texts
