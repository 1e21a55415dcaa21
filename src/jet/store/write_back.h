#pragma once

#include "jet/store/container.h"

namespace jet {

class Session;

// Writes the session's database as a whole new file and gives it the name of the old one: tables
// that nobody changed are copied from the container's file, the others come from the working store.
// No transaction may be open. Until the name is given a failure leaves the old file as it was.
// Returns false if the new file is in its place but its name may not survive a crash of the system.
bool WriteBack(Session& session, Container& container);

}  // namespace jet
