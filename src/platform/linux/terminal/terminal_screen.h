#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/terminal/terminal.h"

namespace platform {

// What the lines at the end of the screen are to show.
class StatusBlock {
 public:
  virtual ~StatusBlock() = default;

  // Lines for so many columns; longer ones are cut.
  virtual std::vector<std::string> Lines(int columns) const = 0;
};

// The terminal with one status block, redrawn in place, below everything else that is written. The
// cursor is never hidden and always rests at the start of the line below the block: whatever ends
// the program, nothing has to be put back.
class TerminalScreen {
 public:
  Terminal& GetTerminal() { return terminal_; }

  // Shows the block until Detach; the block must live that long.
  void Attach(const StatusBlock& block);
  void Detach();

  // Brings the screen up to date. Where no cursor can be moved, and in the background of the
  // terminal, nothing is drawn.
  void Draw();

  // To be called when the program has the terminal back: the block has been overwritten.
  void Resume();

  // For the duration of a box the block is removed and keys are echoed.
  class Box {
   public:
    explicit Box(TerminalScreen& screen);
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    ~Box();

   private:
    TerminalScreen& screen_;
  };

 private:
  int DrawnRows(int columns) const;
  void Erase();

  Terminal terminal_;
  const StatusBlock* block_ = nullptr;
  int boxes_ = 0;
  std::vector<std::string> drawn_;
  TerminalSize drawn_size_;
};

}  // namespace platform
