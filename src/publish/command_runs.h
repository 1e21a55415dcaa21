#pragma once

#include "tools/command_line.h"

// The commands of tmpublish. Each prints its answer and gives the exit code.
namespace publish {

int RunAnnounce(const tools::Arguments& arguments);
int RunCheck(const tools::Arguments& arguments);
int RunDiff(const tools::Arguments& arguments);
int RunKeygen(const tools::Arguments& arguments);
int RunPrune(const tools::Arguments& arguments);
int RunPublish(const tools::Arguments& arguments);
int RunRenew(const tools::Arguments& arguments);
int RunRetract(const tools::Arguments& arguments);

}  // namespace publish
