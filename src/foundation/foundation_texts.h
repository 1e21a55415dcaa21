#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/text.h"

// What users read when files, names, XML or the program itself fail.
namespace tmw::foundation_texts {

// What failed, for Failed and FailedInto.
inline constexpr std::string_view kAccess = "Ошибка обращения к файлу";
inline constexpr std::string_view kOpening = "Ошибка открытия файла";
inline constexpr std::string_view kReading = "Ошибка чтения файла";
inline constexpr std::string_view kCreating = "Ошибка создания файла";
inline constexpr std::string_view kDeleting = "Ошибка удаления файла";
inline constexpr std::string_view kCopying = "Ошибка копирования файла";
inline constexpr std::string_view kMoving = "Ошибка переноса файла";
inline constexpr std::string_view kListing = "Ошибка чтения списка файлов папки";
inline constexpr std::string_view kCreatingFolder = "Ошибка создания папки";
inline constexpr std::string_view kMeasuring = "Ошибка определения длины файла";
inline constexpr std::string_view kFullName = "Ошибка определения полного имени файла";
inline constexpr std::string_view kSettingRights = "Ошибка установки прав на файл";
inline constexpr std::string_view kClearingReadOnly =
    "Ошибка снятия атрибута \"только чтение\" с файла";

// The line above the system's text.
inline std::string Failed(std::string_view action, const std::string& path) {
  return std::string(action) + " " + Quoted(path) + ":";
}

inline std::string FailedInto(std::string_view action, const std::string& source,
                              const std::string& target) {
  return std::string(action) + " " + Quoted(source) + " в файл " + Quoted(target) + ":";
}

inline constexpr const char* kNoTemporaryFolder = "Ошибка определения временной папки:";

inline std::string TemporaryFolderRefused(const std::string& folder) {
  return "Временную папку " + Quoted(folder) +
         " использовать нельзя: она должна принадлежать текущему пользователю и быть закрытой для "
         "остальных:";
}

// The system and the program itself.
inline std::string UnknownApiError(std::int32_t code) {
  return "Неизвестная ошибка API " + std::to_string(code) + " (0x" + ToHex(code) + ")";
}

inline constexpr const char* kOutOfMemory = "Недостаточно памяти.";
inline constexpr const char* kInternalError = "Внутренняя ошибка программы.";

inline std::string InternalError(const std::string& reason) {
  return "Внутренняя ошибка программы: " + reason;
}

// Names and folders that the path guard refuses, and why.
inline constexpr std::string_view kBadFileName = "Недопустимое имя файла ";
inline constexpr std::string_view kBadFolder = "Недопустимая папка ";
inline constexpr std::string_view kControlCharacter = "в нём есть управляющий символ";
inline constexpr std::string_view kInvisibleCharacter = "в нём есть невидимый символ";
inline constexpr std::string_view kSeparatorInside = "в нём есть разделитель папок";
inline constexpr std::string_view kColonInside = "в нём есть двоеточие";
inline constexpr std::string_view kReservedCharacter = "в нём есть один из символов < > \" | ? *";
inline constexpr std::string_view kEmptyName = "имя пустое";
inline constexpr std::string_view kNotUtf8 = "это не текст в кодировке UTF-8";
inline constexpr std::string_view kMeansFolder = "так обозначается папка, а не файл в ней";
inline constexpr std::string_view kBlankAtStart = "оно начинается с пробела";
inline constexpr std::string_view kBlankAtEnd = "оно оканчивается пробелом";
inline constexpr std::string_view kDotAtEnd = "оно оканчивается точкой";
inline constexpr std::string_view kMeansDevice = "так в Windows называется устройство";
inline constexpr std::string_view kNameTooLong = "оно слишком длинное";
inline constexpr std::string_view kFolderNameTooLong = "её имя слишком длинное";

inline std::string OutsideOf(const std::string& quoted_root) {
  return "она лежит вне папки " + quoted_root;
}

inline std::string OfPart(const std::string& quoted_part, std::string_view reason) {
  return "часть " + quoted_part + " — " + std::string(reason);
}

// XML.
inline constexpr const char* kFileTooLarge = "Файл слишком велик.";
inline constexpr const char* kXmlAttributes = "Слишком много атрибутов в одном элементе.";
inline constexpr const char* kXmlName = "Слишком длинное имя.";
inline constexpr const char* kXmlDepth = "Элементы вложены слишком глубоко.";
inline constexpr const char* kXmlElements = "Слишком много элементов.";
inline constexpr const char* kXmlEncoding = "Кодировка не поддерживается.";
inline constexpr const char* kXmlDeclarations = "Описания внутри DOCTYPE не допускаются.";
inline constexpr const char* kXmlCancelled = "Чтение прервано.";
inline constexpr const char* kEntitiesRefused = "Описания сущностей (ENTITY) не допускаются.";

inline std::string BadNumber(const std::string& attribute, const std::string& value,
                             bool is_too_large) {
  return "Ошибочное значение атрибута " + attribute + " (" + Quoted(OneLine(value)) +
         "): " + (is_too_large ? "число слишком велико." : "ожидается целое число.");
}

}  // namespace tmw::foundation_texts
