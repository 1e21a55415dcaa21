#pragma once

// What every command-line tool prints, whatever its commands do; %1 to %9 stand for the values that
// Fill puts in.
namespace tools::texts {

// Wrong command lines; options are named with their dashes.
inline constexpr const char* kNoCommand = "no command";
inline constexpr const char* kUnknownCommand = "unknown command %1";
inline constexpr const char* kTooFewArguments = "too few arguments";
inline constexpr const char* kTooManyArguments = "too many arguments";
inline constexpr const char* kUnknownOption = "unknown option %1";
inline constexpr const char* kOptionIsMissing = "%1 is missing";
inline constexpr const char* kOptionNeedsValue = "%1 needs a value";
inline constexpr const char* kOptionTakesNoValue = "%1 takes no value";
inline constexpr const char* kWithHelpHint = "%1; see %2 --help";

// Failures. A text that ends with a blank is the line above the system's error text.
inline constexpr const char* kNumberedError = "error %1: %2";
inline constexpr const char* kStopped = "Stopped.";
inline constexpr const char* kCannotWrite = "Cannot write %1: ";

inline constexpr const char* kJsonHelp = "with any command: one JSON object on standard output";
inline constexpr const char* kProgress = "%1: %2 %";
inline constexpr const char* kPace = ", %1/s, %2 left";

}  // namespace tools::texts
