#pragma once

#include "engine/records.h"
#include "services/updater_events.h"

// What of a release is out of date on this computer.
namespace tmw {

// Marks the records whose file or table differs from what is installed, and adds up what is to be
// loaded. Returns false, and need is unfinished, if the user has cancelled or the database could
// not be opened, which has been reported.
bool BuildUpdateList(Manifest& manifest, bool is_client, UpdaterEvents& events, UpdateNeed& need);

// Marks a file that is missing or has another length or hash. The hash is computed only if the
// length is right.
void CheckForFileUpdate(WuFileNode& file);

// Marks a dictionary that is missing or has another content, never a user table. Returns false if
// the user database could not be opened, which has been reported.
bool CheckForTableUpdate(WuTableNode& table);

}  // namespace tmw
