#pragma once

#include <string>

#include "foundation/string_accumulator.h"
#include "ports/database.h"

// Writes a table as text (module miDBExport). Lines, each ended by CR LF:
//   Table:<name>
//   Field:<name>|<type>|<size>[|NotNull][|AllowZero][|Default:<DB string>]      one per field
//   Index:<name>[|Primary | [|Unique][|IgnoreNulls]]|Fields:<field>[/D];…       one per index but
//                                                                               relations' own
//   Rows, one line of DB strings separated by "|" per row, EndRows              unless left out
//   EndTable
// A Null in a row's first column cannot be read back, because no separator follows it.
namespace tmw {

// Without a database, from the cached user database.
std::string ExportTableToString(const std::string& table, bool structure_only,
                                ports::Database* database);

// The same text into an accumulator, which may pass it on in pieces.
void ExportTable(const std::string& table, bool structure_only, ports::Database& database,
                 StringAccumulator& text);

void ExportTableHeader(const ports::TableDefinition& table, StringAccumulator& text);
void ExportTableFields(const ports::TableDefinition& table, StringAccumulator& text);
void ExportTableIndexes(const ports::TableDefinition& table, StringAccumulator& text);

// Rows are ordered by the index "ExportOrder", else by the primary key, else as stored.
void ExportTableRows(const ports::TableDefinition& table, StringAccumulator& text,
                     ports::Database& database);

// The name of the first primary index; empty if there is none.
std::string GetPrimaryIndex(const ports::TableDefinition& table);
bool TableHasIndex(const ports::TableDefinition& table, const std::string& index);

}  // namespace tmw
