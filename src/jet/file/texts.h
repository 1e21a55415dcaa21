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
inline constexpr const char* kNoSuchPage = "ссылка на страницу, которой в файле нет";

inline constexpr const char* kBadRowDirectory = "оглавление строк страницы испорчено";
inline constexpr const char* kNoSuchRow = "ссылка на строку, которой на странице нет";
inline constexpr const char* kBadDefinitionLength = "неверная длина определения таблицы";
inline constexpr const char* kLongDefinitionChain =
    "цепочка страниц определения таблицы длиннее самого определения";
inline constexpr const char* kShortDefinitionChain =
    "цепочка страниц определения таблицы обрывается";
inline constexpr const char* kMissingMarker = "в определении таблицы нет отметки начала блока";
inline constexpr const char* kBadDefinitionEnd =
    "блоки определения таблицы не сходятся с его длиной";
inline constexpr const char* kBadName = "недопустимое имя в определении таблицы";
inline constexpr const char* kBadTableKind = "неизвестный вид таблицы";
inline constexpr const char* kBadCounts = "недопустимое число полей или индексов таблицы";
inline constexpr const char* kUnknownColumnType = "неизвестный тип поля";
inline constexpr const char* kBadColumn = "место поля в записи указано неверно";
inline constexpr const char* kColumnTwice = "номер или место поля занято другим полем";
inline constexpr const char* kIndexOfNoColumn = "индекс ссылается на поле, которого в таблице нет";
inline constexpr const char* kIndexOfNoTree = "индекс ссылается на дерево, которого в таблице нет";
inline constexpr const char* kNotAMap = "карта страниц испорчена";
inline constexpr const char* kBadRecord = "запись испорчена";
inline constexpr const char* kManyRows = "на странице больше 255 строк";
inline constexpr const char* kLostRow = "перенесённая запись не найдена на новом месте";
inline constexpr const char* kBadLongValue = "длинное значение (Memo, OLE) испорчено";
inline constexpr const char* kForeignLongValue = "ссылка на длинное значение ведёт к чужой цепочке";
inline constexpr const char* kBadProperties = "свойства объекта испорчены";
inline constexpr const char* kBadSystemTable = "в системной таблице нет обязательного поля";
inline constexpr const char* kBadRelation = "описание связи неполно";
inline constexpr const char* kManyObjects = "слишком много объектов";
inline constexpr const char* kBadIndexPage = "страница индекса испорчена";
inline constexpr const char* kDeepIndex = "дерево индекса слишком глубокое";

// Objects that the embedded engine keeps out of its hands.
inline constexpr const char* kForm = "форма";
inline constexpr const char* kReport = "отчёт";
inline constexpr const char* kMacro = "макрос";
inline constexpr const char* kModule = "модуль";
inline constexpr const char* kDataAccessPage = "страница доступа";

// Why a file is not rewritten.
inline std::string WouldBeLost(const std::string& kind, const std::string& name) {
  return ": в нём есть " + kind + " \"" + name + "\", при перезаписи этот объект пропал бы";
}

inline std::string Sentence(const std::string& what, PageNumber page) {
  return what + " (страница " + std::to_string(page) + ")";
}

}  // namespace jet::file::texts
