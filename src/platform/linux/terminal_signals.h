#pragma once

#include <csignal>
#include <map>

namespace platform {

// Catches the keys and signals that would end the program for as long as the object lives: they are
// only counted, and the progress window acts on them. A signal that was ignored when the program
// started stays ignored. One object at a time.
class TerminalSignals {
 public:
  TerminalSignals();
  TerminalSignals(const TerminalSignals&) = delete;
  TerminalSignals& operator=(const TerminalSignals&) = delete;
  ~TerminalSignals();

  struct News {
    int interrupts = 0;         // Ctrl+C
    bool is_stop = false;       // the terminal has been closed, or the system asks for the end
    bool is_resized = false;    // the terminal has another size
    bool is_continued = false;  // the program was stopped meanwhile (Ctrl+Z)
  };

  // Costs next to nothing.
  bool HasNews() const;

  // What has arrived since the last call.
  News Take();

 private:
  std::map<int, struct sigaction> saved_;
};

// Waits until the descriptor can be read. Returns false if a signal to act on has arrived first.
bool WaitForInput(int descriptor);

}  // namespace platform
