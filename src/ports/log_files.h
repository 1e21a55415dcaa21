#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ports/outcome.h"

namespace ports {

// A moment as the user's clock shows it.
struct LocalMoment {
  int year = 0;
  int month = 0;  // from 1
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
  int utc_offset = 0;  // minutes east of UTC
};

// Files to which several processes append at the same time, for the program's log.
class LogFiles {
 public:
  virtual ~LogFiles() = default;

  // The folder of this user for records that outlive temporary folders, without a separator at the
  // end; created if absent. Windows: %LOCALAPPDATA%\Tamrin. Linux: $XDG_STATE_HOME/tamrin, else
  // ~/.local/state/tamrin; nobody else may write to it.
  virtual Outcome<std::string> Folder() = 0;

  // Appends the bytes in one piece; the file is created if absent, readable by this user only on
  // Linux. A file that has reached the limit is renamed to old_path first, whose old content goes.
  virtual Status Append(const std::string& path, std::string_view bytes, std::int64_t limit,
                        const std::string& old_path) = 0;

  virtual LocalMoment Now() = 0;

  // The number of this process, which marks its lines.
  virtual std::int32_t OwnProcess() = 0;

  // What ends a line of a text that the user may open: CR LF on Windows, LF on Linux.
  virtual std::string_view LineEnd() = 0;
};

}  // namespace ports
