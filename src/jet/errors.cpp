#include "jet/errors.h"

#include <cstddef>
#include <string>

#include "foundation/encodings.h"

namespace jet {
namespace {

constexpr const char* kComponent = "Jet";
constexpr std::size_t kExcerptLength = 80;

struct ErrorText {
  std::int32_t number;
  const char* text;  // %1 and %2 stand for the arguments
};

constexpr ErrorText kTexts[] = {
    {kInvalidCall, "Недопустимый вызов функции или значение аргумента."},
    {kOverflow, "Переполнение."},
    {kDivisionByZero, "Деление на ноль."},
    {kTextTooLong, "Строка слишком длинная."},
    {kInvalidUseOfNull, "Недопустимое использование значения Null."},
    {kReserved, "Внутренняя ошибка базы данных: %1."},
    {kInvalidArgument, "Недопустимый аргумент: %1."},
    {kTooManyTransactions, "Нельзя начать транзакцию: слишком много вложенных транзакций."},
    {kTableExists, "Таблица \"%1\" уже существует."},
    {kObjectExists, "Объект \"%1\" уже существует."},
    {kNotAnIndex, "В этой таблице нет индекса \"%1\"."},
    {kNoEditOrAddNew, "Запись не открыта для изменения или добавления."},
    {kNoCurrentRecord, "Нет текущей записи."},
    {kDuplicateValue,
     "Изменения не сохранены: в индексе, ключе или связи появились бы повторяющиеся значения."},
    {kFileNotFound, "Не найден файл \"%1\"."},
    {kDiskFull, "На диске недостаточно места."},
    {kReadOnly, "Изменение невозможно: база данных или объект только для чтения."},
    {kInvalidPassword, "Неверный пароль: база данных защищена паролем."},
    {kNoTransaction, "Нет начатой транзакции, которую можно было бы завершить или отменить."},
    {kDiskError, "Ошибка диска или сети при обращении к базе данных."},
    {kFileInUse, "Невозможно открыть файл \"%1\": он уже используется."},
    {kRecordTooLong, "Слишком длинная запись или ключ индекса в таблице \"%1\"."},
    {kDatabaseDamaged, "База данных \"%1\" повреждена: %2."},
    {kNoPermission, "Нет доступа к файлу \"%1\": нужны права на его чтение и изменение."},
    {kNullInIndex, "Ключ или индекс не может содержать значение Null (поле \"%1\")."},
    {kCancelled, "Выполнение прервано."},
    {kTooFewParameters, "Слишком мало параметров. Требуется: %1. Неизвестные имена: %2."},
    {kNotAnActionQuery, "Запрос на выборку нельзя выполнить как изменяющий."},
    {kNoInput, "В запросе нет ни одной таблицы."},
    {kNotUpdatable, "В операции должен участвовать обновляемый запрос."},
    {kSyntaxInExpression, "Ошибка в выражении \"%2\": %1."},
    {kInputTableNotFound, "Не найдена таблица или запрос \"%1\"."},
    {kAmbiguousField, "Поле \"%1\" есть более чем в одной таблице запроса."},
    {kTableJoinedTwice, "Таблица \"%1\" соединяется более одного раза под тем же именем."},
    {kFieldOutsideJoin, "Условие JOIN называет поле \"%1\", которого нет в соединяемых таблицах."},
    {kUndefinedFunction, "Неизвестная функция \"%1\" в выражении."},
    {kCannotDelete, "Удаление из указанных таблиц невозможно."},
    {kWrongArgumentCount, "Неверное число аргументов функции \"%1\"."},
    {kOrderAgainstDistinct, "Выражение \"%1\" предложения ORDER BY несовместимо с DISTINCT."},
    {kNoAggregateHere, "Итоговая функция \"%1\" здесь недопустима."},
    {kCircularAlias, "Псевдоним \"%1\" в списке SELECT ссылается сам на себя."},
    {kJoinOnLongField, "Соединение по полю MEMO или OLE \"%1\" невозможно."},
    {kStarInGroups, "Группировка по полям, выбранным с помощью \"*\", невозможна."},
    {kNotInAggregate, "Выражение \"%1\" не входит в итоговую функцию."},
    {kInvalidName, "Недопустимое имя \"%1\"."},
    {kInvalidBracketing, "Неверные скобки у имени \"%1\"."},
    {kUnknownInsertField, "В инструкции INSERT INTO указано неизвестное поле \"%1\"."},
    {kSyntaxInDelete, "Ошибка в инструкции DELETE: %1."},
    {kInvalidStatement, "Недопустимая инструкция SQL: \"%1\"."},
    {kSyntaxInFrom, "Ошибка в предложении FROM: %1."},
    {kSyntaxInInsert, "Ошибка в инструкции INSERT INTO: %1."},
    {kSyntaxInJoin, "Ошибка в операции JOIN: %1."},
    {kSyntaxInOrderBy, "Ошибка в предложении ORDER BY: %1."},
    {kSyntaxInSelect, "Ошибка в инструкции SELECT: %1."},
    {kTextAfterStatement, "После конца инструкции SQL стоит лишний текст: \"%1\"."},
    {kSyntaxInUpdate, "Ошибка в инструкции UPDATE: %1."},
    {kFieldTooSmall, "Поле слишком мало для такого количества данных%1."},
    {kFieldNotUpdatable, "Поле \"%1\" изменить нельзя."},
    {kRecordDeleted, "Запись удалена."},
    {kDatabaseTooLarge, "База данных стала бы больше, чем допускает формат (2 ГБ)."},
    {kTooManyFields, "Слишком много полей%1."},
    {kFieldDefinedTwice, "Поле \"%1\" определено более одного раза."},
    {kRelatedRecords, "Запись нельзя удалить или изменить: с ней связаны записи таблицы \"%1\"."},
    {kNoRelatedRecord,
     "Запись нельзя добавить или изменить: в таблице \"%1\" нет связанной записи."},
    {kDatabaseExists, "База данных \"%1\" уже существует."},
    {kLockedByOther, "Изменение невозможно: данные заблокированы."},
    {kInvalidOperation, "Недопустимая операция: %1."},
    {kNotSupported, "Операция не поддерживается: %1."},
    {kInvalidFieldType, "Недопустимый тип поля \"%1\"."},
    {kNoFieldsDefined, "В определении \"%1\" нет полей."},
    {kItemNotFound, "Элемент \"%1\" не найден в этой коллекции."},
    {kTooManyIndexFields, "В индексе \"%1\" таблицы \"%2\" больше 10 полей."},
    {kFieldNeededByIndex, "Поле \"%1\" входит в индекс и не может быть удалено."},
    {kUsedInRelation, "Индекс или таблицу \"%1\" удалить нельзя: они участвуют в связи."},
    {kPrimaryKeyExists, "Первичный ключ уже существует."},
    {kIndexExists, "Индекс \"%1\" уже существует."},
    {kSyntaxInCreateTable, "Ошибка в инструкции CREATE TABLE: %1."},
    {kSyntaxInCreateIndex, "Ошибка в инструкции CREATE INDEX: %1."},
    {kSyntaxInFieldDefinition, "Ошибка в определении поля: %1."},
    {kSyntaxInAlterTable, "Ошибка в инструкции ALTER TABLE: %1."},
    {kSyntaxInDrop, "Ошибка в инструкции DROP: %1."},
    {kFieldInRelation, "Поле \"%1\" нельзя изменить или удалить: оно участвует в связи."},
    {kManyFieldsInSubquery, "Вложенный запрос без EXISTS должен возвращать одно поле."},
    {kUnionCountDiffers, "Число столбцов в запросах, объединяемых UNION, не совпадает."},
    {kRequiredField, "Поле \"%1\" обязательное и не может содержать значение Null."},
    {kZeroLength, "Поле \"%1\" не может быть пустой строкой."},
    {kUnknownFormat, "Неизвестный формат базы данных \"%1\"%2."},
    {kValueCountDiffers, "Число значений не совпадает с числом полей."},
    {kOrderNotSelected, "Выражение \"%1\" предложения ORDER BY не выбрано запросом."},
    {kManyRowsInSubquery, "Вложенный запрос вернул более одной записи."},
    {kOpenedExclusively, "База данных \"%1\" уже открыта другой программой монопольно."},
    {kTooComplex, "Запрос слишком сложен."},
    {kRelationWithoutFields, "У связи \"%1\" нет полей."},
    {kRelationExists, "Связь \"%1\" уже существует."},
    {kRelationFieldsDiffer,
     "Связь \"%1\" требует одинакового числа полей одинаковых типов с обеих сторон."},
    {kConstraintNotFound, "Не найдена таблица или ограничение \"%1\"."},
    {kNoSuchIndex, "В таблице \"%2\" нет индекса \"%1\"."},
    {kTableNotFound, "Таблица \"%1\" не существует."},
    {kFieldExists, "Поле \"%1\" уже существует в таблице \"%2\"."},
    {kFieldNotFound, "В таблице \"%2\" нет поля \"%1\"."},
    {kInvalidIndexField, "Недопустимое поле \"%1\" в определении индекса."},
    {kObjectClosed, "Объект закрыт или больше не действителен."},
    {kConversion, "Ошибка преобразования типа данных%1."},
    {kTypeMismatch, "Несоответствие типов данных в выражении%1."},
    {kNoUniqueReference,
     "В таблице \"%1\" нет уникального индекса по полям, на которые ссылается связь."},
    {kTooManyIndexes, "В таблице \"%1\" больше 32 индексов (вместе с индексами её связей)."},
};

std::string Filled(std::string_view pattern, std::string_view first, std::string_view second) {
  std::string text;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '%' && i + 1 < pattern.size()) {
      ++i;
      text += pattern[i] == '1' ? first : second;
    } else {
      text += pattern[i];
    }
  }
  return text;
}

}  // namespace

ports::DatabaseError MakeError(std::int32_t number, std::string_view first,
                               std::string_view second) {
  for (const ErrorText& entry : kTexts) {
    if (entry.number == number) return {number, Filled(entry.text, first, second), kComponent};
  }
  return {number, "Ошибка базы данных " + std::to_string(number) + ".", kComponent};
}

void Fail(std::int32_t number, std::string_view first, std::string_view second) {
  throw MakeError(number, first, second);
}

void FailUnsupported(std::string_view what) {
  Fail(kNotSupported, what);
}

std::string_view Excerpt(std::string_view text) {
  std::size_t length = kExcerptLength;
  if (text.size() <= length) return text;
  while (length > 0 && tmw::ContinuesCharacter(text[length]))
    --length;
  return text.substr(0, length);
}

}  // namespace jet
