#pragma once

#include "engine/records.h"
#include "services/updater_events.h"

// Finds out which components of a release are out of date on this computer.
namespace tmw {

// Marks the records whose file or table differs from what is installed, and adds up the sizes of
// what is to be loaded. Returns false if the user has cancelled or if the database could not be
// opened, which has been reported; need is incomplete then.
bool BuildUpdateList(Manifest& manifest, bool is_client, UpdaterEvents& events, UpdateNeed& need);

// Marks a file that is missing or has another length or hash. The hash is computed only if the
// length is right.
void CheckForFileUpdate(WuFileNode& file);

// Marks a dictionary that is missing or has another content, never a user table. Returns false if
// the user database could not be opened, which has been reported.
bool CheckForTableUpdate(WuTableNode& table);

}  // namespace tmw
