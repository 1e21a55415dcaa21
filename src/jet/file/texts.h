#pragma once

#include <string>

#include "jet/file/format.h"

// What is wrong with a file, in the user's words. Parts of sentences: the doors put the file's name
// and the page around them.
namespace jet::file::texts {

// Why a file is not opened.
inline constexpr const char* kTooShort = "файл короче одной страницы";
inline constexpr const char* kTooLong = "файл длиннее 2 ГБ";
inline constexpr const char* kNotADatabase = "это не файл базы данных";
inline constexpr const char* kOldContainer =
    "это файл прежнего вида: выгрузите его таблицы предыдущей версией jetsql (export) и загрузите "
    "их этой версией (import)";
inline constexpr const char* kVersion3 =
    "формат слишком старый (Jet 3), поддерживается только Jet 4";
inline constexpr const char* kNewer = "формат более новый, поддерживается только Jet 4";
inline constexpr const char* kUnknownVersion = "неизвестная версия формата";
inline constexpr const char* kEncoded = "файл закодирован";
inline constexpr const char* kPendingCommit =
    "файл не был закрыт правильно: в нём осталось незавершённое изменение";

// Damage.
inline constexpr const char* kBeyondEnd = "данные выходят за границы отведённого им места";
inline constexpr const char* kWrongPageKind = "страница другого вида, чем должна быть";
inline constexpr const char* kWrongOwner = "страница принадлежит другому объекту";
inline constexpr const char* kBadHeader = "заголовок файла испорчен";

inline std::string NoSuchPage(PageNumber number) {
  return "ссылка на страницу " + std::to_string(number) + ", которой в файле нет";
}

}  // namespace jet::file::texts
