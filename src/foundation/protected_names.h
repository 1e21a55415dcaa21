#pragma once

#include <string_view>

// Names that no release may carry. Updater and publishing tool both ask here, so that what one
// refuses the other does not publish. Whatever a program of this product begins to keep under a
// name of its own beside the product's files or the user's database is added to these predicates.
// Letter case does not count.
namespace tmw {

// Tables that a release never brings: the database's version and the engine's own tables.
bool IsReservedTable(std::string_view table);

// The user's database, whatever begins with its name (copies, the new one beside it), its backups
// and what a rollback has set aside. The updater refuses them in the database's folder, whose place
// the maker cannot know.
bool IsUserDatabaseName(std::string_view file);

// A target folder, constants not expanded, that is or lies in the one of the previous version.
bool IsUpdatersFolder(std::string_view folder);

// Files in the product's root in which the updater keeps what it must remember.
bool IsUpdatersNote(std::string_view file);

}  // namespace tmw
