#pragma once

// A run that the user stops (Ctrl+C) ends like one that fails: it removes what it has made.
namespace tools {

// From now on SIGINT and SIGTERM ask the run to stop; a second one ends the process at once, the
// system's own way.
void ListenForStop();

// Whether the user has asked for a stop. May be called on any thread.
bool IsStopped();

// The reverse, for calls that ask whether to go on.
inline bool GoesOn() {
  return !IsStopped();
}

// Raises a ProgramError if the user has asked for a stop. Cheap enough for every piece of a file;
// may be called on any thread.
void ThrowIfStopped();

}  // namespace tools
