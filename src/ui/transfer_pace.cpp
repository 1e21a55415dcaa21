#include "ui/transfer_pace.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "ports/ports.h"
#include "ports/system_info.h"
#include "ui/ui_texts.h"

namespace tmw {
namespace {

constexpr std::int64_t kLargestAdvance = 65536;
constexpr std::int64_t kSample = 1000;
// After so long without a sample the updater was busy with something other than the transfer.
constexpr std::int64_t kLongestSample = 3000;
constexpr std::int64_t kFirstWords = 3000;
constexpr std::int64_t kSilence = 5000;
constexpr double kFading = 8000;
// How far the promised end may be from the computed one: of the time left, and at least.
constexpr double kTolerance = 0.125;
constexpr double kLeastTolerance = 2000;
constexpr double kCorrection = 0.1;  // of a smaller deviation, with each sample

// The last seconds are counted down one by one, more of them in steps.
constexpr std::int64_t kSecondStep = 5;
constexpr std::int64_t kSingleSeconds = 20;
constexpr std::int64_t kMostHours = 99;

std::string SpeedWords(double bytes_per_second) {
  constexpr auto units = ui_texts::kSpeedUnits;
  double value = bytes_per_second;
  std::size_t unit = 0;
  for (; value >= 999.5 && unit + 1 < units.size(); ++unit)
    value /= 1024;
  const std::int64_t tenths = std::llround(value * 10);
  const bool is_whole = unit == 0 || tenths >= 100;
  std::string number = std::to_string(is_whole ? std::llround(value) : tenths / 10);
  if (!is_whole) {
    number += ports::CurrentPorts().system_info->DecimalSeparator() + std::to_string(tenths % 10);
  }
  return number + " " + units.at(unit);
}

// Empty if no time is left, or too much to be named.
std::string TimeLeftWords(double milliseconds) {
  const auto seconds = static_cast<std::int64_t>(std::ceil(milliseconds / 1000));
  if (seconds <= 0) return {};
  const std::int64_t step = seconds <= kSingleSeconds ? 1 : kSecondStep;
  const std::int64_t stepped = (seconds + step - 1) / step * step;
  if (stepped < 60) return ui_texts::SecondsLeft(stepped);
  const std::int64_t minutes = (seconds + 59) / 60;
  if (minutes < 60) return ui_texts::MinutesLeft(minutes);
  const std::int64_t hours = minutes / 60;
  return hours > kMostHours ? "" : ui_texts::HoursLeft(hours, minutes % 60);
}

}  // namespace

void TransferPace::Start(std::int64_t total, std::int64_t now) {
  total_ = total;
  position_ = 0;
  words_.clear();
  Forget(now);
}

void TransferPace::Forget(std::int64_t now) {
  known_since_ = sample_start_ = last_arrival_ = now;
  received_ = 0;
  averaged_bytes_ = averaged_time_ = end_ = 0;
}

void TransferPace::Advance(std::int64_t position) {
  const std::int64_t advance = position - std::exchange(position_, position);
  if (advance > 0 && advance <= kLargestAdvance) received_ += advance;
}

bool TransferPace::Update(std::int64_t now) {
  const std::int64_t passed = now - sample_start_;
  if (passed < kSample) return false;
  sample_start_ = now;
  const std::int64_t received = std::exchange(received_, 0);
  if (passed > kLongestSample) {
    // Busy time counts neither for the speed nor as silence, and moves the promised end.
    known_since_ += passed;
    last_arrival_ += passed;
    end_ += end_ > 0 ? static_cast<double>(passed) : 0;
    return false;
  }
  const double fading = std::exp(-static_cast<double>(passed) / kFading);
  averaged_bytes_ = averaged_bytes_ * fading + static_cast<double>(received);
  averaged_time_ = averaged_time_ * fading + static_cast<double>(passed);
  if (received > 0) last_arrival_ = now;
  if (now - last_arrival_ >= kSilence) Forget(now);
  std::string words = now - known_since_ < kFirstWords ? "" : MakeWords(now);
  return std::exchange(words_, std::move(words)) != words_;
}

std::string TransferPace::MakeWords(std::int64_t now) {
  const double speed = averaged_bytes_ / averaged_time_;  // per millisecond
  if (speed <= 0) return {};
  const double left = static_cast<double>(total_ - position_) / speed;
  const double computed_end = static_cast<double>(now) + left;
  const double tolerance = std::max(left * kTolerance, kLeastTolerance);
  const bool is_guessed_wrong = end_ <= 0 || std::abs(computed_end - end_) > tolerance;
  end_ = is_guessed_wrong ? computed_end : end_ + (computed_end - end_) * kCorrection;
  return SpeedWords(speed * 1000) + TimeLeftWords(end_ - static_cast<double>(now));
}

}  // namespace tmw
