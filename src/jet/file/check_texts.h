#pragma once

#include <cstdint>
#include <string>

// What a check finds, in the user's words, beside the damage that every reader meets (texts.h).
namespace jet::file::check_texts {

// Names of what findings belong to.
inline std::string Table(const std::string& name) {
  return "таблица \"" + name + "\"";
}
inline std::string Index(const std::string& name, const std::string& table) {
  return "индекс \"" + name + "\" таблицы \"" + table + "\"";
}
inline std::string LongColumn(const std::string& name, const std::string& table) {
  return "поле \"" + name + "\" таблицы \"" + table + "\"";
}
inline std::string InColumn(const std::string& object, const std::string& column) {
  return object + ", поле \"" + column + "\"";
}
inline std::string TwoNumbers(std::uint64_t found, std::uint64_t stated) {
  return std::to_string(found) + ", указано " + std::to_string(stated);
}
inline std::string Object(const std::string& name) {
  return "объект \"" + name + "\"";
}
inline std::string Relation(const std::string& name) {
  return "связь \"" + name + "\"";
}
inline constexpr const char* kHeader = "заголовок файла";
inline constexpr const char* kMaps = "карты страниц";
inline constexpr const char* kFreeMap = "карта свободных страниц";

// Pages.
inline constexpr const char* kTornEnd = "последняя страница неполна";
inline constexpr const char* kPageTwice = "страница принадлежит сразу двум объектам";
inline constexpr const char* kUsedPageFree = "занятая страница помечена свободной";
inline constexpr const char* kLostPage = "страница не свободна и никому не принадлежит";
inline constexpr const char* kLostRows =
    "страница со строками таблицы не значится в карте этой таблицы";
inline constexpr const char* kFreeMapShort = "карта не охватывает весь файл";
inline constexpr const char* kFreeBytesHigh = "свободное место страницы указано больше настоящего";
inline constexpr const char* kFreeBytesLow = "свободное место страницы указано меньше настоящего";
inline constexpr const char* kMapTwice = "две карты страниц лежат в одной строке";
inline constexpr const char* kForeignSpacePage =
    "карта страниц со свободным местом называет страницу, которой нет в карте всех страниц";

// Tables.
inline constexpr const char* kRowCount = "число записей не совпадает с указанным в определении";
inline constexpr const char* kLongRecord = "запись длиннее 4060 байт";
inline constexpr const char* kWideDefinition = "записи таблицы могут стать длиннее 4060 байт";
inline constexpr const char* kValueWidth = "длина значения не подходит к типу поля";
inline constexpr const char* kLongText = "значение длиннее, чем позволяет поле";
inline constexpr const char* kOrphanRow = "на перенесённую запись ничто не ссылается";
inline constexpr const char* kRowTwice = "на перенесённую запись ссылаются дважды";
inline constexpr const char* kAutonumber = "счётчик таблицы меньше уже выданного номера";
inline constexpr const char* kManyIndexes = "у таблицы больше 32 индексов";
inline constexpr const char* kNoLongMaps = "у поля нет карт страниц длинных значений";

// Long values.
inline constexpr const char* kPieceTwice = "одна часть длинного значения используется дважды";
inline constexpr const char* kOrphanPiece = "на часть длинного значения ничто не ссылается";
inline constexpr const char* kPieceElsewhere =
    "длинное значение лежит на странице, которой нет в карте его поля";

// Indexes.
inline constexpr const char* kIndexMap = "карта страниц индекса не совпадает с его деревом";
inline constexpr const char* kEntryOrder = "элементы индекса не упорядочены";
inline constexpr const char* kEntryOfNoRow = "элемент индекса не ведёт к записи таблицы";
inline constexpr const char* kEntryTwice = "два элемента индекса ведут к одной записи";
inline constexpr const char* kRowWithoutEntry = "записи нет в индексе";
inline constexpr const char* kEntryOfNulls =
    "в индексе есть запись, которую он не должен учитывать";
inline constexpr const char* kDuplicateKey = "повторяющийся ключ в уникальном индексе";
inline constexpr const char* kNullKey = "пустой ключ в индексе, который их не допускает";
inline constexpr const char* kLeafLinks = "листья индекса связаны в неверном порядке";
inline constexpr const char* kUnevenDepth = "листья индекса лежат на разной глубине";
inline constexpr const char* kHeight = "высота страницы индекса указана неверно";
inline constexpr const char* kSeparator = "узел индекса не соответствует своей ветви";
inline constexpr const char* kWrongKey = "ключ индекса не соответствует записи";
inline constexpr const char* kLongKeys = "в индексе есть ключи длиннее 510 байт";

// Catalogue.
inline constexpr const char* kNoParent = "объект лежит в контейнере, которого нет";
inline constexpr const char* kSameName = "два объекта с одним именем в одном контейнере";
inline constexpr const char* kSameId = "два объекта с одним номером";
inline constexpr const char* kUnknownOwner = "владелец объекта неизвестен";
inline constexpr const char* kUnknownAccount = "права даны неизвестной учётной записи";
inline constexpr const char* kRightsOfNothing = "права на объект, которого нет";
inline constexpr const char* kNoRights = "у таблицы нет строк о правах";
inline constexpr const char* kRelationOfNothing = "связь называет таблицу или поле, которых нет";
inline constexpr const char* kRelationEnds = "концы связи в определениях таблиц не сходятся";
inline constexpr const char* kRelationObject = "у связи нет объекта в каталоге";
inline constexpr const char* kQueryOfNothing = "строка запроса, которого нет";
inline constexpr const char* kMissingTable = "в каталоге нет системной таблицы";

}  // namespace jet::file::check_texts
