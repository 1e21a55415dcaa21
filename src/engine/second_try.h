#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "ports/clock.h"
#include "services/updater_events.h"

namespace tmw {

// Runs transfers that the user can cancel. Nothing is read while a question is on the screen, and a
// server may close the connection meanwhile: a transfer that fails after such a rest is tried once
// more.
class SecondTry {
 public:
  SecondTry(UpdaterEvents& events, ports::Clock& clock) : events_(events), clock_(clock) {}

  // Returns what the transfer returns; false if it fails after the user has cancelled. Any other
  // failure is raised, with a message that names the URL.
  bool Run(const std::string& url, const std::function<bool()>& transfer);

  // The transfer calls this again and again: pending events run here and nowhere else. Returns
  // false once the user has cancelled.
  bool MayGoOn();

  // A small download into a file, which is replaced; see inet.h.
  bool Fetch(const std::string& url, const std::string& local, std::int64_t max_bytes);

 private:
  UpdaterEvents& events_;
  ports::Clock& clock_;
  bool has_rested_ = false;
};

}  // namespace tmw
