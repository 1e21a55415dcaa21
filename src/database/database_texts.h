#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/text.h"

// What is shown about databases.
namespace tmw::database_texts {

// Databases, as messages about a file describe it.
inline constexpr const char* kUserDatabase = "базы данных";
inline constexpr const char* kWorkingCopy = "рабочей копии базы данных";
inline constexpr const char* kNewDatabase = "новой базы данных";

inline std::string FileMissing(const std::string& description, const std::string& path) {
  return "Отсутствует или не найден файл " + description + ":\r\n" + path;
}

inline std::string CannotOpen(const std::string& description, const std::string& path,
                              const std::string& reason) {
  return "Файл " + description + " (" + path + ") невозможно открыть по следующей причине:\r\n" +
         reason + "\r\n\r\nДальнейшая работа программы обновления невозможна.";
}

inline std::string FileInUse(const std::string& description, const std::string& path) {
  return "Файл " + description + " (" + path +
         ") не может быть открыт в монопольном режиме, поскольку он уже открыт и используется еще "
         "какой-то программой помимо программы обновления. \r\n\r\n"
         "Для дальнейшей работы программы обновления этот файл необходимо открыть в монопольном "
         "режиме.\r\n\r\n"
         "Нажмите \"Да\", чтобы повторить попытку (перед этим необходимо найти и закрыть "
         "программу, использующую нужный файл). Нажмите \"Нет\", чтобы прервать работу программы "
         "обновления.\r\n\r\n"
         "Повторить попытку?";
}

// Update scripts.
inline constexpr const char* kMigrationNotSupplied =
    "В этой версии программы обновления такого преобразования данных нет.";
inline constexpr const char* kMigrationUnknown =
    "Программе обновления не известно преобразование данных с таким именем.";
inline constexpr const char* kNoVersionNumber =
    "В таблице DBVersion вместо номера версии стоит другое значение.";

inline std::string ScriptNotLoaded(const std::string& file, const std::string& reason) {
  return "Ошибка загрузки файла обновления " + Quoted(file) + ":\r\n" + reason;
}

inline std::string BadScriptRoot(const std::string& name) {
  return "Корневой узел имеет неправильное имя (" + Quoted(name) + ").";
}

inline std::string BadFromVersion(const std::string& text) {
  return "Ошибочное значение db_version_from (" + text + ").";
}

inline std::string BadToVersion(const std::string& text) {
  return "Ошибочное значение db_version_to (" + text + ").";
}

inline std::string VersionsNotRising(const std::string& from, const std::string& to) {
  return "Конечная версия базы данных (" + to + ") не больше начальной (" + from + ").";
}

inline std::string BadActionType(const std::string& type) {
  return "Ошибочный тип узла Action (" + Quoted(type) + ").";
}

inline std::string BadCreatedFieldType(const std::string& word) {
  return "Ошибочный тип создаваемого поля (" + Quoted(word) + ").";
}

inline std::string ScriptFailed(const std::string& version, const std::string& reason) {
  return "Ошибка обновления базы данных до версии " + Quoted(version) + ":\r\n" + reason;
}

inline std::string NoTableForField(const std::string& table, const std::string& field) {
  return "Таблица " + Quoted(table) + " не найдена\r\n(при добавлении поля " + table + "." + field +
         ")";
}

inline std::string MigrationFailed(const std::string& name, const std::string& reason) {
  return "Ошибка при выполнении скрипта " + name + ":\r\n" + reason;
}

inline std::string ScriptTwice(const std::string& version) {
  return "Имеется несколько скриптов обновления базы данных для одной и той же версии (" + version +
         ").";
}

inline std::string ScriptMissing(const std::string& version) {
  return "Отсутствует сценарий обновления базы данных для версии " + version + ".";
}

// Building the databases.
inline constexpr const char* kBuildingReference = "Формирование справочной базы данных...";
inline constexpr const char* kBuildingWorking = "Обновление рабочей базы данных...";
inline constexpr const char* kCopyingExisting = "Копирование существующей базы...";
inline constexpr const char* kMakingTemporaryCopy = "Создание временной копии базы данных...";
inline constexpr const char* kOpening = "Открытие базы данных...";
inline constexpr const char* kDeletingObsolete = "Удаление устаревших таблиц...";
inline constexpr const char* kSavingVersion = "Сохранение номера версии...";
inline constexpr const char* kCompacting = "Сжатие базы данных...";
inline constexpr const char* kReadingScripts = "Чтение сценариев обновления...";

inline std::string CreatingTable(const std::string& table) {
  return "Создание таблицы " + table + " ...";
}

inline std::string ImportingDictionary(const std::string& table) {
  return "Импорт справочника " + table + " ...";
}

inline std::string CarryingDictionary(const std::string& table) {
  return "Перенос справочника " + table + " ...";
}

inline std::string RunningScript(const std::string& from, const std::string& to) {
  return "Выполнение сценария обновления " + from + " -> " + to + " ...";
}

inline std::string RowsLost(const std::string& table, std::int64_t expected, std::int64_t found) {
  return "В новой базе данных в таблице " + Quoted(table) + " строк " + std::to_string(found) +
         ", а должно быть " + std::to_string(expected) +
         ". Обновление прервано, рабочая база данных не изменена.";
}

// Relations that cannot be put back, and why.
inline std::string RelationDoesNotFit(const std::string& name, const std::string& foreign_table,
                                      const std::string& foreign_fields, const std::string& table,
                                      const std::string& fields, const std::string& reason) {
  return "Связь " + Quoted(name) + " таблицы " + Quoted(foreign_table) + " (поле " +
         Quoted(foreign_fields) + ") с таблицей " + Quoted(table) + " (поле " + Quoted(fields) +
         ") не восстановлена: " + reason;
}

inline std::string RowsWithoutCounterpart(const std::string& foreign_table,
                                          const std::string& table, std::int64_t count,
                                          const std::string& first_values) {
  return "в таблице " + Quoted(foreign_table) +
         " строк, которым ничего не соответствует в таблице " + Quoted(table) + ": " +
         std::to_string(count) + "; первые значения: " + first_values + ".";
}

inline std::string RelatedTableGone(const std::string& table) {
  return "таблицы " + Quoted(table) + " больше нет.";
}

inline std::string RelatedFieldGone(const std::string& table, const std::string& field) {
  return "в таблице " + Quoted(table) + " больше нет поля " + Quoted(field) + ".";
}

inline std::string RelatedTypesDiffer(const std::string& foreign_field, const std::string& field) {
  return "поля " + Quoted(foreign_field) + " и " + Quoted(field) + " теперь разных типов.";
}

inline std::string RelatedKeyGone(const std::string& table, const std::string& fields) {
  return "в таблице " + Quoted(table) + " больше нет уникального индекса по полю " +
         Quoted(fields) + ".";
}

inline constexpr const char* kRelationsEndUpdate =
    "Обновление прервано, рабочая база данных не изменена.";

inline std::string MoreRelations(std::size_t count) {
  return "Не восстановлено и других связей: " + std::to_string(count) + ".";
}

// Extra texts of frames.
inline std::string FailedStatement(const std::string& sql) {
  return "Запрос, вызвавший ошибку: \r\n" + sql;
}

inline std::string FailedTable(const std::string& table, const std::string& index) {
  return "Таблица: " + table + ", Индекс: " + index;
}

// Table text. Line 0: the error belongs to no line.
inline std::string TableFileError(const std::string& file, std::size_t line,
                                  const std::string& reason) {
  const std::string place = line == 0 ? "" : " (строка " + std::to_string(line) + ")";
  return "Ошибка в файле таблицы " + Quoted(file) + place + ":\r\n" + reason;
}

inline std::string ExpectedLine(const std::string& expected, const std::string& found) {
  return "Ожидалась строка " + Quoted(expected) + ", а стоит " + Quoted(found) + ".";
}

inline std::string UnexpectedEnd(const std::string& expected) {
  return "Текст обрывается: нет строки " + Quoted(expected) + ".";
}

inline std::string StrayLineBreak() {
  return "Внутри строки стоит одиночный знак конца строки.";
}

inline std::string TextBehindEnd() {
  return "После конца таблицы стоит лишний текст.";
}

inline std::string BadFieldLine(const std::string& line) {
  return "Ошибочное описание поля " + Quoted(line) + ".";
}

inline std::string BadFieldType(const std::string& type) {
  return "Неизвестный тип поля " + Quoted(type) + ".";
}

inline std::string BadIndexLine(const std::string& line) {
  return "Ошибочное описание индекса " + Quoted(line) + ".";
}

inline std::string WrongTable(const std::string& expected, const std::string& found) {
  return "Файл описывает таблицу " + Quoted(found) + " вместо таблицы " + Quoted(expected) + ".";
}

inline std::string RowsMissing() {
  return "В файле нет строк таблицы, а должны быть.";
}

inline std::string RowsNotWanted() {
  return "В файле структуры таблицы есть строки таблицы.";
}

inline std::string WrongValueCount(std::size_t expected, std::size_t found) {
  return "В строке таблицы значений " + std::to_string(found) + ", а полей " +
         std::to_string(expected) + ".";
}

inline std::string NullInFirstField() {
  return "Пустое значение (Null) в первом поле.";
}

}  // namespace tmw::database_texts
