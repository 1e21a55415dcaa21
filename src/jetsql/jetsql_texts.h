#pragma once

#include <cstdint>
#include <string>

// What jetsql prints.
namespace jetsql::texts {

inline constexpr const char* kHelpHead =
    "jetsql - looks after databases: structure, statements, table texts";
inline constexpr const char* kHelpTail =
    R"(Rows of SELECT statements are printed with a line of names first, tabs between the columns, values
as in table texts. Databases are opened exclusively for changes, shared for reading.
Exit codes: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.
)";

inline constexpr const char* kCreateHelp = "make an empty database";
inline constexpr const char* kRunHelp =
    "run statements, separated by \";\", from the argument or standard input; all of them or, on "
    "an "
    "error, none";
inline constexpr const char* kFileHelp =
    "... from a file (UTF-8 with its mark, else code page 1251)";
inline constexpr const char* kTablesHelp = "list the tables, or show the structure of one";
inline constexpr const char* kAllHelp = "... with the system's own";
inline constexpr const char* kExportHelp = "write a table as text (to standard output: UTF-8)";
inline constexpr const char* kStructureHelp = "... without its rows";
inline constexpr const char* kUtf8Help = "... a file in UTF-8 instead of code page 1251";
inline constexpr const char* kImportHelp =
    "replace tables by those of .table and .tablestruct files";
inline constexpr const char* kCompactHelp = "copy a database without its free space";

inline constexpr const char* kStatementsTwice = "statements both as an argument and with --file";
inline constexpr const char* kOutsideCodePage =
    "The table has characters outside code page 1251: use --utf8.";

inline std::string RowCount(std::int64_t rows) {
  return std::to_string(rows) + " rows\n";
}

}  // namespace jetsql::texts
