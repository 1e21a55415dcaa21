#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/program_error.h"

// Frames and chain of an error (module mErrorHandling).
//
// A procedure that guards its body is a function-try-block whose handler is
//   catch (...) { ReRaiseError(kModule, "OpenFile"); }
// and an outermost action's handler is
//   catch (...) { ReportError(kModule, "theTimer_Timer"); }
namespace tmw {

enum class ErrorMode : std::int32_t { kRaise = 1, kShow = 2 };

// A form that an outermost handler closes after its error has been shown.
class ReportedWindow {
 public:
  virtual ~ReportedWindow() = default;
  virtual void Hide() = 0;
  virtual void Unload() = 0;
};

// "[TmWebUpdate::Module.Procedure (line)] {extra}"
std::string MakeFrame(std::string_view module, std::string_view procedure, std::int32_t line,
                      std::string_view extra);

// The frame put in front of a previous source, which is bracketed unless it already is.
std::string ChainSource(const std::string& frame, const std::string& previous_source);

// Adds the frame to the chain and throws (kRaise) or shows the error window (kShow).
void ProcessError(ErrorMode mode, std::string_view module, std::string_view procedure,
                  std::string_view extra, const std::string& previous_source,
                  const std::string& description, std::int32_t number, std::int32_t line);

// To be called inside a catch block: passes the error in flight on with a frame. An exception that
// is not a ProgramError becomes one here, once; a database error keeps its number and source.
[[noreturn]] void ReRaiseError(std::string_view module, std::string_view procedure,
                               std::string_view extra = {});

// To be called inside a catch block of an outermost handler: shows the error in flight and returns.
// A window that was passed is hidden and unloaded afterwards; failures of that are ignored.
void ReportError(std::string_view module, std::string_view procedure, std::string_view extra = {},
                 ReportedWindow* window = nullptr);

// Failures of the window itself are ignored.
void ShowErrorWindow(std::int32_t number, const std::string& description, const std::string& chain,
                     const std::string& extra);

// The exception in flight as a ProgramError. To be called inside a catch block.
ProgramError CurrentError();

// Separates a text that ends with frames from the message that follows them.
void SplitErrorText(const std::string& text, std::string& message, std::string& frames);

}  // namespace tmw
