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
    "an error, none",
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

inline const tools::Usage kInfo = {
    "info", "FILE", 1, 1, "show what a file is and holds: tables, relations, queries, sizes", {}};
inline const tools::Usage kCheck = {
    "check", "FILE", 1, 1, "check a file from its first page to its last, and list all faults", {}};

inline constexpr const char* kStatementsTwice = "statements both as an argument and with --file";
inline constexpr const char* kOutsideCodePage =
    "The table has characters outside code page 1251: use --utf8.";

inline constexpr const char* kRowCount = "%1 rows\n";

// A failure's first line; the system's text follows.
inline constexpr const char* kCannotRead = "Cannot read %1: ";
inline constexpr const char* kHeldByAnother = "%1 is opened exclusively by another program.";

inline constexpr const char* kVersion = "format: Jet 4, engine build %1\n";
inline constexpr const char* kCreated = "created: %1\n";
inline constexpr const char* kNoDate = "unknown";
inline constexpr const char* kCodePage = "code page: %1\n";
inline constexpr const char* kSortOrder = "sort order: %1, version %2\n";
inline constexpr const char* kPages = "pages: %1 of %2 bytes, %3 free\n";
inline constexpr const char* kTablesTitle = "tables:\n";
inline constexpr const char* kTableLine = "  %1: %2 rows, %3 bytes\n";
inline constexpr const char* kRelationsTitle = "relations:\n";
inline constexpr const char* kRelationLine = "  %1: %2 (%3) -> %4 (%5)\n";
inline constexpr const char* kQueriesTitle = "queries:\n";
inline constexpr const char* kObjectLine = "  %1\n";
inline constexpr const char* kForeignTitle = "other objects:\n";
inline constexpr const char* kForeignLine = "  %1 %2\n";
inline constexpr const char* kDamaged = "faults: %1 (the command check lists them)\n";

inline constexpr const char* kFaultLine = "fault: ";
inline constexpr const char* kNoteLine = "note: ";
inline constexpr const char* kMoreOfAKind = "%1: %2 more\n";
inline constexpr const char* kCheckSummary = "%1 faults, %2 notes, %3 pages\n";

}  // namespace jetsql::texts
