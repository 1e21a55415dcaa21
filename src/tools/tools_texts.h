#pragma once

#include <cstdint>
#include <string>

// What every command-line tool says, whatever its commands do.
namespace tools::texts {

// Wrong command lines. Options are named with their dashes.
inline constexpr const char* kNoCommand = "no command";
inline constexpr const char* kTooFewArguments = "too few arguments";
inline constexpr const char* kTooManyArguments = "too many arguments";
inline std::string UnknownCommand(const std::string& name) {
  return "unknown command " + name;
}
inline std::string UnknownOption(const std::string& option) {
  return "unknown option " + option;
}
inline std::string OptionIsMissing(const std::string& option) {
  return option + " is missing";
}
inline std::string OptionNeedsValue(const std::string& option) {
  return option + " needs a value";
}
inline std::string OptionTakesNoValue(const std::string& option) {
  return option + " takes no value";
}
inline std::string WithHelpHint(const std::string& complaint, const std::string& program) {
  return complaint + "; see " + program + " --help";
}

inline std::string NumberedError(std::int32_t number, const std::string& description) {
  return "error " + std::to_string(number) + ": " + description;
}
inline constexpr const char* kStopped = "Stopped.";

inline constexpr const char* kJsonHelp = "with any command: one JSON object on standard output";

inline std::string StepDone(const std::string& step, std::size_t percent) {
  return step + ": " + std::to_string(percent) + " %";
}

}  // namespace tools::texts
