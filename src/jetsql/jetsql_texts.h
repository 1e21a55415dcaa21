#pragma once

#include <cstdint>

#include "tools/command_line.h"

// What jetsql prints; %1 stands for the value that tools::Fill puts in.
namespace jetsql::texts {

inline constexpr const char* kHelpHead =
    "jetsql - looks after databases: structure, statements, table texts";
inline constexpr const char* kHelpTail =
    R"(Rows of SELECT statements are printed with a line of names first, tabs between the columns, values
as in table texts. Databases are opened exclusively for changes, shared for reading.
Exit codes: 0 done, 1 failed (the reason is on standard error), 2 wrong usage.
)";

inline const tools::Usage kCreate = {"create", "FILE", 1, 1, "make an empty database", {}};
inline const tools::Usage kRun = {
    "run",
    "FILE [STATEMENTS]",
    1,
    2,
    "run statements, separated by \";\", from the argument or standard input; all of them or, on "
    "an "
    "error, none",
    {{"--file", "SCRIPT", "... from a file (UTF-8 with its mark, else code page 1251)"}}};
inline const tools::Usage kTables = {"tables",
                                     "FILE [TABLE]",
                                     1,
                                     2,
                                     "list the tables, or show the structure of one",
                                     {{"--all", "", "... with the system's own"}}};
inline const tools::Usage kExport = {
    "export",
    "FILE TABLE [TEXTFILE]",
    2,
    3,
    "write a table as text (to standard output: UTF-8)",
    {{"--structure", "", "... without its rows"},
     {"--utf8", "", "... a file in UTF-8 instead of code page 1251"}}};
inline const tools::Usage kImport = {
    "import",
    "FILE TEXTFILE...",
    2,
    SIZE_MAX,
    "replace tables by those of .table and .tablestruct files; all of them or, on an error, none (with DAO: those before the faulty one, so import into a copy)",
    {}};
inline const tools::Usage kCompact = {
    "compact", "FILE NEWFILE", 2, 2, "copy a database without its free space", {}};

inline constexpr const char* kStatementsTwice = "statements both as an argument and with --file";
inline constexpr const char* kOutsideCodePage =
    "The table has characters outside code page 1251: use --utf8.";

inline constexpr const char* kRowCount = "%1 rows\n";

}  // namespace jetsql::texts
