#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

class InputModes;

struct TerminalSize {
  int columns = 80;
  int rows = 24;
};

// The terminal that the program was started from: lines in and out, in the encoding of the user's
// locale. A stream that has lost its reader or its terminal is no failure.
class Terminal {
 public:
  Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal();

  // True if somebody can answer: input and error stream are a terminal, and this process is not in
  // the background.
  bool CanAnswer() const;

  // True when the error stream is a terminal on which a cursor can be moved, and no reader of the
  // output may write to the same terminal.
  bool HasCursor() const { return has_cursor_; }

  // False while the user's shell has the terminal for itself.
  bool IsForeground() const;

  // True when what goes to the output is seen where the error stream is.
  bool IsOutputSeen() const;

  TerminalSize Size() const;

  // UTF-8 to the error stream, so that a redirected output stays clean. Control characters other
  // than line feeds are dropped: texts quote what servers say. Characters that the encoding lacks
  // become similar ones or "?".
  void Write(std::string_view text) const;

  // The same to the output.
  void WriteOutput(std::string_view text) const;

  // The bytes that Write would write, and bytes to the error stream as they are.
  std::string Encode(std::string_view text) const;
  void WriteBytes(std::string_view bytes) const;

  // The text as it will be seen: what the encoding lacks is already replaced. UTF-8.
  std::string AsSeen(std::string_view text) const;

  // A line without its line break, as UTF-8; nothing at the end of the input, also in mid-line, and
  // when a window of a run is asked to end. A hidden line is not echoed, and Ctrl+C declines it.
  std::optional<std::string> ReadLine(bool is_hidden) const;

  // Whether keys that are typed while no question is open leave the screen unchanged.
  void KeepKeysUnseen(bool is_on);

  // Drops unread input, which cannot be the answer to a question that follows.
  void ForgetKeys() const;

 private:
  std::string encoding_;
  bool has_cursor_;
  std::unique_ptr<InputModes> unseen_keys_;
};

}  // namespace platform
