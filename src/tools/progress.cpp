#include "tools/progress.h"

#include <algorithm>
#include <iostream>

#include "ports/clock.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "tools/fill.h"
#include "tools/stop.h"
#include "tools/tools_texts.h"

namespace tools {
namespace {

constexpr std::int64_t kMsPerSecond = 1000;
constexpr std::int64_t kRewriteAfterMs = 200;
// A rate of the first moments would mislead.
constexpr std::int64_t kRateAfterMs = 1000;

std::int64_t Now() {
  return ports::CurrentPorts().clock->TickCount();
}

// With one digit behind the point if there is but one in front of it.
std::string Rounded(double number) {
  const auto tenths = static_cast<std::int64_t>(number * 10 + 0.5);
  constexpr std::int64_t kTen = 100;
  if (tenths >= kTen) return std::to_string((tenths + 5) / 10);
  return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string AmountText(double amount, bool is_bytes) {
  if (!is_bytes) return Rounded(amount);
  constexpr const char* kUnits[] = {"B", "KB", "MB", "GB"};
  constexpr double kStep = 1024;
  std::size_t unit = 0;
  for (; amount >= kStep && unit + 1 < std::size(kUnits); ++unit)
    amount /= kStep;
  return Rounded(amount) + " " + kUnits[unit];
}

// "1:05", "2:00:07".
std::string DurationText(std::int64_t seconds) {
  const auto two = [](std::int64_t number) {
    return (number < 10 ? ":0" : ":") + std::to_string(number);
  };
  constexpr std::int64_t kSixty = 60;
  const std::int64_t minutes = seconds / kSixty;
  const std::string end = two(seconds % kSixty);
  if (minutes < kSixty) return std::to_string(minutes) + end;
  return std::to_string(minutes / kSixty) + two(minutes % kSixty) + end;
}

}  // namespace

Progress::Progress() : Progress(ports::CurrentPorts().processes->HasTerminal()) {}

Progress::~Progress() {
  Clear();
}

void Progress::Begin(const std::string& step, std::size_t parts) {
  Start(step, static_cast<std::int64_t>(parts), false);
}

void Progress::BeginBytes(const std::string& step, std::int64_t bytes) {
  Start(step, bytes, true);
}

void Progress::Start(const std::string& step, std::int64_t amount, bool is_bytes) {
  ThrowIfStopped();
  Clear();
  const std::lock_guard lock(guard_);
  step_ = step;
  is_bytes_ = is_bytes;
  whole_ = amount;
  done_ = 0;
  if (!is_shown_) return;
  start_ = Now();
  Show(start_);
}

void Progress::Advance(std::size_t amount) {
  ThrowIfStopped();
  if (!is_shown_) return;
  const std::int64_t now = Now();
  const std::lock_guard lock(guard_);
  done_ += static_cast<std::int64_t>(amount);
  if (now - shown_ >= kRewriteAfterMs) Show(now);
}

void Progress::Clear() {
  const std::lock_guard lock(guard_);
  if (!is_shown_ || step_.empty()) return;
  std::cerr << "\r\x1B[K" << std::flush;
  step_.clear();
}

void Progress::Show(std::int64_t now) {
  shown_ = now;
  const double share =
      whole_ <= 0 ? 1 : std::min(1.0, static_cast<double>(done_) / static_cast<double>(whole_));
  std::string line = Fill(texts::kProgress, {step_, std::to_string(static_cast<int>(share * 100))});
  const std::int64_t elapsed = now - start_;
  if (elapsed >= kRateAfterMs && done_ > 0) {
    const double seconds = static_cast<double>(elapsed) / kMsPerSecond;
    const auto left = static_cast<std::int64_t>(seconds / share * (1 - share) + 0.5);
    line += Fill(texts::kPace,
                 {AmountText(static_cast<double>(done_) / seconds, is_bytes_), DurationText(left)});
  }
  std::cerr << '\r' << line << "\x1B[K" << std::flush;
}

}  // namespace tools
