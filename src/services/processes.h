#pragma once

#include <cstdint>
#include <string>

#include "foundation/command_line.h"  // SplitCommandLine belongs to this module

// Starting other programs (module mProcesses).
namespace tmw {

// Flags of RunProcess: bit 0 forces the feedback cursor on, bit 1 off, bits 8 to 11 hold a
// show-window command (1 to 11; 0 is none).
inline constexpr std::int32_t kForceFeedbackOn = 0x1;
inline constexpr std::int32_t kForceFeedbackOff = 0x2;
inline constexpr std::int32_t kShowWindowMask = 0xF00;
inline constexpr std::int32_t kShowWindowUnit = 0x100;

// A bit of our own: the started program is the updater that takes this one's place. On Linux the
// process that waits on the terminal then waits for it too; Windows has no such process.
inline constexpr std::int32_t kContinuesChain = 0x10000;

// Starts a program. An empty text counts as not given; without exe_name the first word of cmd_line
// is the program. With wait, pending window events run until the program ends, and the result is
// its exit code (0 if that cannot be read); otherwise the result is its process id. A start that
// needs administrator rights goes through RunProcessInElevationMode; other failures are raised.
std::int32_t RunProcess(const std::string& exe_name, const std::string& cmd_line,
                        const std::string& work_dir, bool wait, std::int32_t flags);

// The same after asking the user for administrator rights; raises an error if they decline.
// flags: kContinuesChain or nothing.
std::int32_t RunProcessInElevationMode(const std::string& exe_name, const std::string& cmd_line,
                                       const std::string& work_dir, bool wait,
                                       std::int32_t flags = 0);

// The command line of a successor of this process: the program, own_options (with blanks between
// them), then what this process was started with, because the later of two equal options counts.
std::string RestartLine(const std::string& program, const std::string& own_options);

// Splits the program off a full command line at its first blank outside quotes. exe_name is filled
// only when empty, and keeps its quotes; cmd_line becomes the parameters. A line without such a
// blank stays whole in cmd_line.
void NormalizeExeNameAndCmdLine(std::string& exe_name, std::string& cmd_line);

}  // namespace tmw
