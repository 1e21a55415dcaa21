#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "services/updater_events.h"

// Transfers that the user can cancel. Both return false if the user has cancelled; any other
// failure is raised, with a message that names the URL.
namespace tmw {

// Runs the transfer and returns what it returns.
bool RunTransfer(UpdaterEvents& events, const std::string& url,
                 const std::function<bool()>& transfer);

// A small download into a file, which is replaced; see inet.h.
bool FetchFile(UpdaterEvents& events, const std::string& url, const std::string& local,
               std::int64_t max_bytes);

}  // namespace tmw
