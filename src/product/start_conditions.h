#pragma once

#include <string>

#include "services/mutexes.h"

// What decides whether a program may change the product that is installed here.
namespace tmw {

// Whether the settings call this computer a client, which uses the databases of a server.
bool IsClientInstallation();

// Whether the product in that root folder is shared by clients: only they update it.
bool HasClientLists(const std::string& root);

// Waits, with the user's consent, until the product's applications are closed, and takes the
// updater's mutex and the lock of the product's root folder; an empty root is not known and has
// none. Returns false if the user gives up.
bool WaitForOthersAndLock(const std::string& root, const WaitingTexts& texts = kUpdaterWaits);

}  // namespace tmw
