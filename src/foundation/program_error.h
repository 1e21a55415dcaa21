#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace tmw {

// Number of the program's own failures, whose message is meant for the user as it stands.
inline constexpr std::int32_t kProgramErrorNumber = 1001;

// Numbers of the C++ library's exceptions when they enter the chain.
inline constexpr std::int32_t kOverflowErrorNumber = 6;
inline constexpr std::int32_t kOutOfMemoryErrorNumber = 7;
inline constexpr std::int32_t kTypeMismatchErrorNumber = 13;
inline constexpr std::int32_t kInternalErrorNumber = 51;

// The one error that travels through the program. Thrown by value, caught by reference.
class ProgramError : public std::exception {
 public:
  ProgramError(std::int32_t number, std::string description, std::string source = {});

  const char* what() const noexcept override { return Description.c_str(); }

  // A system error code as it is, a component's own number, or kProgramErrorNumber.
  std::int32_t Number;
  // The message: set when the error is made, never changed on the way up. Detail sections are
  // separated by the character with code 1; the first one is the short message.
  std::string Description;
  // The chain of frames, outermost first, separated by CR LF; empty (or a foreign component's name)
  // when the error is made.
  std::string Source;
};

// Throws number kProgramErrorNumber with that message.
[[noreturn]] void RaiseProgramError(std::string description);

}  // namespace tmw
