#include "platform/linux/terminal/terminal_screen.h"

#include <algorithm>
#include <utility>

#include "platform/linux/terminal/terminal_text.h"

namespace platform {
namespace {

constexpr const char* kEraseLineEnd = "\x1b[K";
constexpr const char* kEraseBelow = "\x1b[J";

std::string CursorUp(int rows) {
  return rows == 0 ? "" : "\x1b[" + std::to_string(rows) + "A";
}

}  // namespace

void TerminalScreen::Attach(const StatusBlock& block) {
  block_ = &block;
  if (terminal_.HasCursor()) terminal_.KeepKeysUnseen(true);
  Draw();
}

void TerminalScreen::Detach() {
  Erase();
  block_ = nullptr;
  terminal_.KeepKeysUnseen(false);
}

void TerminalScreen::Draw() {
  if (block_ == nullptr || boxes_ > 0 || !terminal_.HasCursor() || !terminal_.IsForeground())
    return;
  const TerminalSize size = terminal_.Size();
  // A full line would take the cursor to the next one; a block as high as the screen would scroll.
  const int columns = std::max(size.columns - 1, 1);
  std::vector<std::string> lines = block_->Lines(columns);
  lines.resize(std::min(lines.size(), static_cast<std::size_t>(std::max(size.rows - 1, 1))));
  const std::string ellipsis = terminal_.AsSeen("…") == "…" ? "…" : "...";
  for (std::string& line : lines) {
    line = terminal_.AsSeen(line);
    std::replace(line.begin(), line.end(), '\n', ' ');
    line = FitColumns(line, columns, ellipsis);
  }
  if (lines == drawn_ && size.columns == drawn_size_.columns) return;
  std::string bytes = CursorUp(DrawnRows(size.columns));
  for (const std::string& line : lines)
    bytes += terminal_.Encode(line) + kEraseLineEnd + "\r\n";
  terminal_.WriteBytes(bytes + kEraseBelow);
  drawn_ = std::move(lines);
  drawn_size_ = size;
}

// A terminal that has become narrower has wrapped the lines.
int TerminalScreen::DrawnRows(int columns) const {
  int rows = 0;
  for (const std::string& line : drawn_)
    rows += std::max((ColumnsOf(line) + columns - 1) / columns, 1);
  return rows;
}

void TerminalScreen::Erase() {
  if (!drawn_.empty() && terminal_.IsForeground())
    terminal_.WriteBytes(CursorUp(DrawnRows(terminal_.Size().columns)) + kEraseBelow);
  drawn_.clear();
}

void TerminalScreen::Resume() {
  drawn_.clear();
  if (block_ != nullptr && boxes_ == 0 && terminal_.HasCursor()) terminal_.KeepKeysUnseen(true);
  Draw();
}

TerminalScreen::Box::Box(TerminalScreen& screen) : screen_(screen) {
  ++screen_.boxes_;
  screen_.Erase();
  screen_.terminal_.KeepKeysUnseen(false);
  if (screen_.block_ != nullptr) screen_.terminal_.ForgetKeys();
}

TerminalScreen::Box::~Box() {
  --screen_.boxes_;
  if (screen_.boxes_ == 0 && screen_.block_ != nullptr) screen_.Resume();
}

}  // namespace platform
