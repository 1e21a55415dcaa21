#pragma once

#include <string>
#include <vector>

#include "publish/faults.h"

// The list of servers, a line each.
namespace publish {

// Checks one server: a fault if it is no address, a warning if it has no scheme.
void CheckServer(const std::string& server, const std::string& place, Faults& faults);

// Checks the text of the whole list.
void CheckServerList(const std::string& text, Faults& faults);

// The servers of a list as updaters take them: what has no scheme is plain HTTP.
std::vector<std::string> ServersOf(const std::string& text);

}  // namespace publish
