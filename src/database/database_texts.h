#pragma once

#include <cstddef>
#include <string>

#include "foundation/text.h"

// What the database rooms say.
namespace tmw::database_texts {

inline constexpr const char* kUpdateErrorTitle = "Ошибка обновления базы данных";
inline constexpr const char* kFileInUseTitle = "Файл уже используется";

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
         "какой-то программой помимо программы обновления. "
         "\r\n\r\n"
         "Для дальнейшей работы программы обновления этот файл необходимо открыть в монопольном "
         "режиме."
         "\r\n\r\n"
         "Нажмите \"Да\", чтобы повторить попытку (перед этим необходимо найти и закрыть "
         "программу, использующую нужный файл). Нажмите \"Нет\", чтобы прервать работу программы "
         "обновления."
         "\r\n\r\n"
         "Повторить попытку?";
}

// The frames' extra texts.
inline std::string FailedStatement(const std::string& sql) {
  return "Запрос, вызвавший ошибку: \r\n" + sql;
}

inline std::string FailedTable(const std::string& table, const std::string& index) {
  return "Таблица: " + table + ", Индекс: " + index;
}

// Table text. Line 0: no line is to blame.
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
