#pragma once

#include <functional>
#include <memory>
#include <string>

#include "services/progress_window.h"

// Entry, command line and start-up sequence (module miMain).
namespace tmw {

using ProgressWindowFactory = std::function<std::unique_ptr<ProgressWindow>()>;

// The start-up sequence: settings and command line, the refusal on a network installation, waiting
// for the product and its siblings, the updater's lock, the run, the final message, the product's
// start. An error is shown, never thrown; GetRunOutcome says how it ended.
void Main(const ProgressWindowFactory& make_progress_window);

// Fills the settings record from the product's settings and this process's command line. Returns
// false if the command line was not understood, which has been reported.
bool ParseCmdLine();

void CmdLineError(const std::string& message);

// Starts the product again if the command line named it and the file exists.
void RunMainExeFile();

// Releases the updater's lock and ends the process; called once the next updater has been started.
[[noreturn]] void ExitUpdater();

// Ends the process with exit code 0 without any clean-up.
[[noreturn]] void UnconditionallyTerminateApplication();

}  // namespace tmw
