#pragma once

#include <cstdint>

#include "jetsql/language.h"
#include "tools/command_line.h"

// What jetsql prints, in both languages; the help is English. %1 stands for the value that Say puts
// in.
namespace jetsql::texts {

inline constexpr const char* kHelpHead =
    "jetsql - looks after Jet 4 databases (.mdb): structure, statements, rows, health";
inline constexpr const char* kHelpTail =
    R"(Modes: table, tabs, csv, json, lines, tabletext; without --mode a table on a terminal, tabs elsewhere.
Encodings: utf8, 1251, utf16; without --encoding a text that is well-formed UTF-8 is that, else 1251.
A change is made whole or, on an error, not at all; with DAO, changes of structure count at once.
Databases are opened exclusively for changes, shared for reading.
Exit codes: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.
)";

inline constexpr const char* kModeHelp = "... as table, tabs, csv, json, lines or tabletext";
inline constexpr const char* kHeaderHelp = "... with the names of the columns (the default)";
inline constexpr const char* kNoHeaderHelp = "... without them";
inline constexpr const char* kEngineHelp = "... with the program's own engine, not the system's";

inline const tools::Option kEncoding = {"--encoding", "NAME", "... of the text: utf8, 1251, utf16"};

inline const tools::Usage kCreate = {"create", "FILE", 1, 1, "make an empty database", {}};
inline const tools::Usage kRun = {
    "run",
    "FILE [STATEMENTS]",
    1,
    2,
    "run statements, separated by \";\", from the argument or standard input; all of them or, on "
    "an error, none",
    {{"--file", "SCRIPT", "... from a file"},
     {"--continue", "", "... each by itself, going on after one that fails"},
     kEncoding}};
inline const tools::Usage kTables = {
    "tables", "FILE", 1, 1, "list the tables", {{"--all", "", "... with the system's own"}}};
inline const tools::Usage kSchema = {"schema",
                                     "FILE [TABLE...]",
                                     1,
                                     SIZE_MAX,
                                     "show the structure: fields, indexes, relations",
                                     {{"--sql", "", "... as statements that make it"}}};
inline const tools::Usage kDump = {
    "dump",
    "FILE [TABLE...]",
    1,
    SIZE_MAX,
    "print structure and rows as statements that \"run\" makes an equal database of",
    {{"--output", "SCRIPT", "... into a file"}}};
inline const tools::Usage kExport = {
    "export",
    "FILE TABLE [OUTPUT]",
    2,
    3,
    "write a table as a table text or, with --mode, its rows; to standard output: UTF-8",
    {{"--structure", "", "... a table text without its rows"},
     {"--utf8", "", "... a file in UTF-8; without it a table text is in code page 1251"},
     kEncoding}};
inline const tools::Usage kImport = {
    "import",
    "FILE INPUT...",
    2,
    SIZE_MAX,
    "replace tables by those of .table and .tablestruct files, or add the rows of .csv files; all "
    "of it or, on an error, nothing",
    {{"--into", "TABLE", "... the rows of a .csv file, whose first line names the fields"},
     {"--create", "", "... into a new table, made for them"},
     {"--separator", "C", "... of the values of a .csv file, instead of \",\""},
     kEncoding}};
inline const tools::Usage kDiff = {
    "diff", "OLD NEW", 2, 2, "list what differs: structure, and rows by their keys", {}};
inline const tools::Usage kCompact = {
    "compact", "FILE NEWFILE", 2, 2, "copy a database without its free space", {}};
inline const tools::Usage kInfo = {
    "info", "FILE", 1, 1, "show what a file is and holds: tables, relations, queries, sizes", {}};
inline const tools::Usage kCheck = {
    "check", "FILE", 1, 1, "check a file from its first page to its last, and list all faults", {}};
inline const tools::Usage kRecover = {
    "recover",
    "FILE NEWFILE",
    2,
    2,
    "copy what a damaged file still yields into a new one, and list what was lost",
    {}};

// Wrong command lines.
inline constexpr Text kStatementsTwice = {"инструкции даны и аргументом, и в --file",
                                          "statements both as an argument and with --file"};
inline constexpr Text kUnknownMode = {"неизвестный вид %1", "unknown mode %1"};
inline constexpr Text kUnknownEncoding = {"неизвестная кодировка %1", "unknown encoding %1"};
inline constexpr Text kUnknownEngine = {"неизвестный движок %1", "unknown engine %1"};
inline constexpr Text kBadSeparator = {"разделитель \"%1\" - не один знак",
                                       "the separator \"%1\" is not one character"};

// Failures. A text that ends with a blank is the line above the system's error text.
inline constexpr Text kNumberedError = {"error %1: %2", "error %1: %2"};
inline constexpr Text kCannotRead = {"Не читается %1: ", "Cannot read %1: "};
inline constexpr Text kCannotWrite = {"Не записать %1: ", "Cannot write %1: "};
inline constexpr Text kHeldByAnother = {"%1 монопольно открыт другой программой.",
                                        "%1 is opened exclusively by another program."};
inline constexpr Text kNotUtf8 = {"В %1 есть байты, которые не UTF-8.",
                                  "%1 has bytes that are not UTF-8."};
inline constexpr Text kOutsideCodePage = {
    "Есть знаки вне кодовой страницы 1251: добавьте --encoding utf8.",
    "There are characters outside code page 1251: use --encoding utf8."};
inline constexpr Text kBadOwnStatement = {"Ошибка в инструкции PROPERTY или RELATION.",
                                          "A malformed PROPERTY or RELATION statement."};
inline constexpr Text kNoTypeWord = {"Для типа поля %1 нет слова SQL.",
                                     "The type of field %1 has no word in SQL."};
inline constexpr Text kNoHeader = {"В файле нет строки с именами полей.",
                                   "The file has no line of field names."};
inline constexpr Text kOpenQuote = {"Кавычка в строке %1 не закрыта.",
                                    "A quote of line %1 is not closed."};
inline constexpr Text kTextBehindQuote = {"В строке %1 за кавычкой стоит текст.",
                                          "In line %1 text follows a closing quote."};
inline constexpr Text kWrongValueCount = {"Полей %1, а значений %2.", "%1 fields, but %2 values."};

// Progress and counts.
inline constexpr Text kDumping = {"Выгрузка", "Dumping"};
inline constexpr Text kImporting = {"Импорт", "Importing"};
inline constexpr Text kComparing = {"Сравнение", "Comparing"};
inline constexpr Text kRecovering = {"Восстановление", "Recovering"};
inline constexpr CountedText kRowsChanged = {
    {"%1 строка", "%1 row"}, {"%1 строки", "%1 rows"}, {"%1 строк", "%1 rows"}};
inline constexpr CountedText kRowsImported = kRowsChanged;
inline constexpr CountedText kRowsWritten = kRowsChanged;
inline constexpr CountedText kStatementsFailed = {
    {"%1 инструкция не выполнена", "%1 statement failed"},
    {"%1 инструкции не выполнены", "%1 statements failed"},
    {"%1 инструкций не выполнено", "%1 statements failed"}};
inline constexpr CountedText kDifferences = {{"%1 отличие", "%1 difference"},
                                             {"%1 отличия", "%1 differences"},
                                             {"%1 отличий", "%1 differences"}};

// Structure, dumps and comparisons.
inline constexpr Text kPrimaryKey = {"первичный ключ %1 (%2)", "primary key %1 (%2)"};
inline constexpr Text kUniqueIndex = {"уникальный индекс %1 (%2)", "unique index %1 (%2)"};
inline constexpr Text kForeignIndex = {"индекс связи %1 (%2)", "index of relation %1 (%2)"};
inline constexpr Text kIndex = {"индекс %1 (%2)", "index %1 (%2)"};
inline constexpr Text kQueryNotDumped = {"запрос %1 не выгружен", "query %1 is not dumped"};
inline constexpr Text kNotDumped = {"свойства таблицы %1, которые не выгружены: %2",
                                    "properties of table %1 that are not dumped: %2"};
inline constexpr Text kTableOfDiff = {"таблица %1", "table %1"};
inline constexpr Text kRowOfDiff = {"%1: строка %2", "%1: row %2"};
inline constexpr Text kValueOfDiff = {"%1: строка %2, %3: %4 -> %5", "%1: row %2, %3: %4 -> %5"};

// What a file is.
inline constexpr Text kVersion = {"формат: Jet 4, сборка движка %1\n",
                                  "format: Jet 4, engine build %1\n"};
inline constexpr Text kCreated = {"создан: %1\n", "created: %1\n"};
inline constexpr Text kNoDate = {"неизвестно", "unknown"};
inline constexpr Text kCodePage = {"кодовая страница: %1\n", "code page: %1\n"};
inline constexpr Text kSortOrder = {"порядок сортировки: %1, версия %2\n",
                                    "sort order: %1, version %2\n"};
inline constexpr Text kPages = {"страниц: %1 по %2 байт, свободно %3\n",
                                "pages: %1 of %2 bytes, %3 free\n"};
inline constexpr Text kTablesTitle = {"таблицы:\n", "tables:\n"};
inline constexpr Text kTableLine = {"  %1: строк %2, байт %3\n", "  %1: %2 rows, %3 bytes\n"};
inline constexpr Text kRelationsTitle = {"связи:\n", "relations:\n"};
inline constexpr Text kRelationLine = {"  %1: %2 (%3) -> %4 (%5)\n", "  %1: %2 (%3) -> %4 (%5)\n"};
inline constexpr Text kQueriesTitle = {"запросы:\n", "queries:\n"};
inline constexpr Text kObjectLine = {"  %1\n", "  %1\n"};
inline constexpr Text kForeignTitle = {"другие объекты:\n", "other objects:\n"};
inline constexpr Text kForeignLine = {"  %1 %2\n", "  %1 %2\n"};
inline constexpr Text kDamaged = {"повреждений: %1 (их перечисляет команда check)\n",
                                  "faults: %1 (the command check lists them)\n"};

// Its health.
inline constexpr Text kFaultLine = {"повреждение: ", "fault: "};
inline constexpr Text kNoteLine = {"замечание: ", "note: "};
inline constexpr Text kMoreOfAKind = {"%1: ещё %2\n", "%1: %2 more\n"};
inline constexpr Text kCheckSummary = {"повреждений %1, замечаний %2, страниц %3\n",
                                       "%1 faults, %2 notes, %3 pages\n"};

// What was lost of it.
inline constexpr Text kLostPage = {"страница %1: %2", "page %1: %2"};
inline constexpr Text kLostTable = {"таблица %1: %2", "table %1: %2"};
inline constexpr Text kLostRows = {"таблица %1: потеряно строк %2", "table %1: %2 rows lost"};
inline constexpr Text kLostPages = {"таблица %1: не прочитано страниц %2",
                                    "table %1: %2 pages not read"};
inline constexpr Text kLostValues = {"таблица %1, поле %2: потеряно значений %3",
                                     "table %1, field %2: %3 values lost"};
inline constexpr Text kLostIndex = {"таблица %1, индекс %2: %3", "table %1, index %2: %3"};
inline constexpr Text kLostRelation = {"связь %1: %2", "relation %1: %2"};
inline constexpr Text kRecovered = {"таблиц %1, строк %2\n", "%1 tables, %2 rows\n"};
inline constexpr Text kNothingLost = {"ничего не потеряно\n", "nothing was lost\n"};

}  // namespace jetsql::texts
