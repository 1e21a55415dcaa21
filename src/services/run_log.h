#pragma once

#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>

// The log of the updater, always on: what each run decided and did, one line an event. It stands in
// the user's folder for records (ports/log_files.h) in two files of the same events: for people
//   2026-03-01 12:30:05.123 +03:00 4711 open address=https://u.example/f.tmz status=200
// and, one JSON object a line, for programs
//   {"time":"2026-03-01T12:30:05.123+03:00","process":4711,"event":"open",...}
// All processes of a chain of restarts append to the same files. Passwords never reach them. A log
// that cannot be written is left out: no call fails, and none throws.
namespace tmw {

// One value of an event. Texts that need it are written as JSON strings, in both files.
struct LogField {
  LogField(std::string_view field_name, std::string_view text) : name(field_name), value(text) {}
  LogField(std::string_view field_name, const char* text) : name(field_name), value(text) {}
  LogField(std::string_view field_name, const std::string& text) : name(field_name), value(text) {}
  LogField(std::string_view field_name, std::integral auto number)
      : name(field_name), value(std::to_string(number)), is_plain(true) {}
  LogField(std::string_view field_name, bool answer)
      : name(field_name), value(answer ? "true" : "false"), is_plain(true) {}

  std::string_view name;  // a word of lower-case letters and "_"
  std::string value;
  bool is_plain = false;  // a number, true or false
};

// The event's name is one word, as those of the fields.
void LogEvent(std::string_view event, std::initializer_list<LogField> fields = {}) noexcept;

// The path of the log for people; empty if this process has not been able to write it.
std::string RunLogPath();

// The text with the password of every "user:password@" and the value of every "password=" replaced
// by "***".
std::string WithoutPasswords(std::string_view text);

// Starts anew, for a test that changes the folder.
void ForgetRunLog();

}  // namespace tmw
