#pragma once

#include <string>

#include "product/kept_list.h"
#include "services/updater_events.h"

// Exchanges the user database for the one in the backup of before the update. The present one is
// set aside under another name, never deleted; every row exists whole at every moment, and whoever
// looks next, this program or the updater, can go on from where it stopped.
namespace rollback {

// "Tamrin (до отката 2026-11-22 07-15-30).mdb" beside the user database, with a number if something
// has that name.
std::string NameToSetAside();

// Completes a replacement of the database, whoever began it, that stopped before its last step: the
// complete copy beside the missing database gets its name.
void CompletePlacing();

// Deletes copies beside the database that nothing will use: of an update or a rollback that
// stopped.
void DeleteUnusedCopies();

// Unpacks the backup beside the present books, reads it once more and opens it, before anything is
// changed. Returns false after reporting why they cannot be brought back. What has been done
// already is not done again: if both the present books and those set aside are there, they have
// been exchanged.
bool PrepareBooks(const tmw::KeptBackup& backup, const std::string& set_aside,
                  tmw::UpdaterEvents& events);

// Sets the present books aside and gives the prepared ones their name.
void ExchangeBooks(const tmw::KeptBackup& backup, const std::string& set_aside,
                   tmw::UpdaterEvents& events);

}  // namespace rollback
