#pragma once

#include <string>

#include "tests/support/sandbox.h"

namespace tests {

// The path of the small program that tests start; its arguments are described in its source.
std::string ChildProgram();

// Starts it with those arguments and does not wait; returns its id. Not one of them outlives the
// test by much: a script that waits ends with a short sleep.
std::int32_t StartChild(const std::string& arguments);

// Kills a process the hard way (kill -9, taskkill /F).
void KillProcess(std::int32_t id);

// Waits until the file is there and has a whole first line, which is returned without its end;
// fails the test after 20 seconds.
std::string AwaitLine(const Sandbox& sandbox, const std::string& name);

}  // namespace tests
