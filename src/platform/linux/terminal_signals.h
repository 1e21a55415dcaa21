#pragma once

#include <csignal>
#include <map>

namespace platform {

// Takes the keys and signals that would end the program, for as long as the object lives: they are
// only counted, for the window of a run to act on. A signal that the starter of the program had
// ignored stays ignored. One object at a time.
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

  // What has come since the last call.
  News Take();

 private:
  std::map<int, struct sigaction> saved_;
};

// Waits until the descriptor can be read. False when a signal to act on has come first, or had come
// before.
bool WaitForInput(int descriptor);

}  // namespace platform
