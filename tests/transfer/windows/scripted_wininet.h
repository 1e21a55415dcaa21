#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tests {

// What the library of scripted_wininet.cpp serves, how it misbehaves, and what it was asked.
struct InternetScript {
  int seek_error = 0;                 // of noting the position
  int seek_shift = 0;                 // the position noted is the asked one and this
  int error_behind_seek = 0;          // of reading from there
  bool is_empty_behind_seek = false;  // nor are there any bytes
  int silence_in_opening = 0;         // milliseconds
  int silence_in_reading = 0;         // milliseconds, in every read
  std::string body;
  std::size_t piece = 0;  // bytes that arrive at once; 0: a read brings what it has room for

  std::vector<std::string> log;  // "open", "open anew" (past the cache), "seek", "read", in order
  unsigned long flags = 0;       // of the last opening
  std::vector<unsigned long> options;
};

// The library's export: the script that its calls follow from now on, which is not owned.
using SetScriptCall = void (*)(InternetScript* script);

}  // namespace tests
