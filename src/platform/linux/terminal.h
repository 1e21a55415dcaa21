#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The terminal that the program was started from: lines in and out, in the encoding of the user's
// locale. A locale that is not installed still tells its encoding by its name ("ru_RU.KOI8-R").
class Terminal {
 public:
  Terminal();

  // True when there is somebody to ask: input and error stream are a terminal, and this process is
  // not in its background.
  bool CanAnswer() const;

  // UTF-8 to the error stream, so that a redirected output stays clean. Control characters other
  // than line feeds are dropped: texts quote what servers say. Characters that the encoding lacks
  // become similar ones or "?". A stream that nobody reads any more is no failure.
  void Write(std::string_view text) const;

  // A line without its line break, as UTF-8; nothing at the end of the input, also in mid-line. A
  // hidden line is not echoed, and Ctrl+C declines it.
  std::optional<std::string> ReadLine(bool is_hidden) const;

 private:
  std::string encoding_;
};

}  // namespace platform
