#pragma once

// What tmpublish says of rehearsals; %1 to %9 stand for the values that tools::Fill puts in.
namespace publish::texts {

// Steps, as the progress line names them.
inline constexpr const char* kUnpacking = "unpacking the database's part";
inline constexpr const char* kTryingReference = "trying %1: reference database";
inline constexpr const char* kTryingWorking = "trying %1: working database";

// Faults.
inline constexpr const char* kHeldByAnother = "It is opened exclusively by another program.";
inline constexpr const char* kMayNotBeRead = "It may not be read.";
inline constexpr const char* kNoSuchDatabase = "There is no such file.";
inline constexpr const char* kNotOpened = "It cannot be opened: %1";
inline constexpr const char* kNoVersionOf = "Its version cannot be read: %1";
inline constexpr const char* kNewerThanRelease =
    "It is of version %1, newer than the release's %2: no script would run.";
inline constexpr const char* kUpdateFails = "The update would fail: %1";
inline constexpr const char* kScriptFails = "The update would fail: script %1: %2";
inline constexpr const char* kStatementFails =
    "The update would fail: script %1%2, statement \"%3\": %4";
inline constexpr const char* kOnLine = ", line %1";
inline constexpr const char* kUserWouldLack =
    "Differs from the reference database in a way that matters: %1 (marked with \"!\" below).";
inline constexpr const char* kDictionaryRows =
    "The dictionary %1 has %2 rows in the reference database, and its user would have %3: a script "
    "changes it after it was replaced.";

// The report.
inline constexpr const char* kTriedOk = "%1: %2 -> %3\n";
inline constexpr const char* kTriedBad = "%1: %2\n  %3\n";
inline constexpr const char* kTriedUnread = "%1: not tried\n";
inline constexpr const char* kTimes = "  reference database %1 s, working database %2 s\n";
inline constexpr const char* kDictionaries = "  dictionaries replaced: %1, up to date: %2\n";
inline constexpr const char* kNoScripts = "  no script runs: the database is of this version\n";
inline constexpr const char* kScriptLine =
    "  script %1 (%2 -> %3): statements: %4, rows: %5, %6 s\n";
inline constexpr const char* kPassedOver = "    passed over%1: \"%2\": %3\n";
inline constexpr const char* kAtLine = " in line %1";
inline constexpr const char* kRowsTogether = "  rows of all tables: %1 -> %2\n";
inline constexpr const char* kSameStructure = "  structure: as the reference database\n";
inline constexpr const char* kStructureHead = "  structure, where it differs:\n";
inline constexpr const char* kRowsHead = "  tables whose number of rows changes:\n";
inline constexpr const char* kColumnsOfStructure[] = {"", "what", "reference database",
                                                      "this user gets"};
inline constexpr const char* kColumnsOfRows[] = {"", "table", "before", "after"};
inline constexpr const char* kPartNames[] = {"table", "field", "order of fields", "index",
                                             "relation"};
inline constexpr const char* kAbsent = "-";
inline constexpr const char* kMatters = "!";

}  // namespace publish::texts
