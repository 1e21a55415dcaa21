#include "foundation/error_handling.h"

#include <cstddef>
#include <exception>
#include <new>
#include <utility>

#include "foundation/encodings.h"
#include "foundation/error_environment.h"
#include "foundation/foundation_texts.h"
#include "foundation/text.h"
#include "ports/database_types.h"
#include "ports/front_end.h"
#include "ports/ports.h"
#include "ports/processes.h"

namespace tmw {
namespace {

// The program's file name without folder and extension.
std::string ExecutableName() {
  const ports::Processes* const processes = ports::CurrentPorts().processes;
  std::string name = processes == nullptr ? "TmWebUpdate" : processes->OwnProgram();
  const std::size_t separator = name.find_last_of("/\\");
  if (separator != std::string::npos) name.erase(0, separator + 1);
  const std::size_t dot = name.rfind('.');
  if (dot != std::string::npos && dot > 0) name.erase(dot);
  return name;
}

void ResetCursor() {
  ports::FrontEnd* const front_end = ports::CurrentPorts().front_end;
  if (front_end != nullptr) front_end->ResetCursor();
}

bool IsUnattended() {
  const auto& ask = CurrentErrorEnvironment().is_unattended;
  return ask && ask();
}

bool IsLineBreak(char16_t c) {
  return c == u'\r' || c == u'\n';
}

// The 1-based position of the last "]" or "}" that a line break follows directly; 0 when none.
std::size_t FindEndOfFrames(const std::u16string& text) {
  for (std::size_t position = text.size(); position > 1; --position) {
    const char16_t bracket = text[position - 2];
    if ((bracket == u']' || bracket == u'}') && IsLineBreak(text[position - 1]))
      return position - 1;
  }
  return 0;
}

}  // namespace

std::string MakeFrame(std::string_view module, std::string_view procedure, std::int32_t line,
                      std::string_view extra) {
  std::string frame = "[" + ExecutableName() + "::";
  frame += module.empty() ? "?" : module;
  if (!procedure.empty()) frame.append(".").append(procedure);
  if (line != 0) frame += " (" + std::to_string(line) + ")";
  frame += "]";
  if (!extra.empty()) frame.append(" {").append(extra).append("}");
  return frame;
}

std::string ChainSource(const std::string& frame, const std::string& previous_source) {
  if (previous_source.empty()) return frame;
  const bool is_bracketed = previous_source.front() == '[';
  return frame + std::string(kCrLf) +
         (is_bracketed ? previous_source : "[" + previous_source + "]");
}

void ProcessError(ErrorMode mode, std::string_view module, std::string_view procedure,
                  std::string_view extra, const std::string& previous_source,
                  const std::string& description, std::int32_t number, std::int32_t line) {
  if (!IsUnattended()) ResetCursor();
  std::string source = ChainSource(MakeFrame(module, procedure, line, extra), previous_source);
  switch (mode) {
    case ErrorMode::kRaise:
      throw ProgramError(number, description, std::move(source));
    case ErrorMode::kShow:
      ShowErrorWindow(number, description, source, "");
      break;
  }
}

ProgramError CurrentError() {
  try {
    throw;
  } catch (const ProgramError& error) {
    return error;
  } catch (const ports::DatabaseError& error) {
    return {error.Number, error.Description, error.Source};
  } catch (const std::bad_alloc&) {
    return {kOutOfMemoryErrorNumber, foundation_texts::kOutOfMemory};
  } catch (const std::exception& error) {
    return {kInternalErrorNumber, foundation_texts::InternalError(error.what())};
  } catch (...) {
    return {kInternalErrorNumber, foundation_texts::kInternalError};
  }
}

void ReRaiseError(std::string_view module, std::string_view procedure, std::string_view extra) {
  const ProgramError error = CurrentError();
  ProcessError(ErrorMode::kRaise, module, procedure, extra, error.Source, error.Description,
               error.Number, 0);
  std::terminate();  // kRaise always throws
}

void ReportError(std::string_view module, std::string_view procedure, std::string_view extra,
                 ReportedWindow* window) {
  const ProgramError error = CurrentError();
  ProcessError(ErrorMode::kShow, module, procedure, extra, error.Source, error.Description,
               error.Number, 0);
  if (window == nullptr) return;
  try {
    window->Hide();
  } catch (
      ...) {  // NOLINT(bugprone-empty-catch): a window that cannot be hidden is unloaded anyway
  }
  try {
    window->Unload();
  } catch (...) {  // NOLINT(bugprone-empty-catch): the error has been shown; nothing is left to do
  }
}

void ShowErrorWindow(std::int32_t number, const std::string& description, const std::string& chain,
                     const std::string& extra) {
  try {
    ResetCursor();
    const auto& make = CurrentErrorEnvironment().make_error_window;
    if (!make) return;
    const std::unique_ptr<ErrorWindow> window = make();
    window->Execute(description, chain, number, extra);
  } catch (...) {  // NOLINT(bugprone-empty-catch): reporting an error must not raise another
  }
}

void SplitErrorText(const std::string& text, std::string& message, std::string& frames) {
  // Positions are 1-based and count characters, as the rule is written: a message of one character
  // at the very end is dropped on purpose.
  const std::u16string units = Utf8ToUtf16(text);
  std::size_t position = FindEndOfFrames(units);
  if (position > 1) {
    ++position;
    while (position < units.size() && IsLineBreak(units[position - 1]))
      ++position;
  }
  if (position == 0) {
    message = text;
    frames.clear();
    return;
  }
  message = position < units.size() ? Utf16ToUtf8(units.substr(position - 1)) : std::string();
  frames = position >= 2 ? Utf16ToUtf8(units.substr(0, position - 1)) : std::string();
}

}  // namespace tmw
