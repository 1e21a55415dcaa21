#include "jet/store/number_functions.h"

#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string>

#include "jet/errors.h"
#include "jet/values/coercion.h"
#include "jet/values/value_type.h"

namespace jet {
namespace {

// Whole numbers are returned unchanged.
template <auto function>
void Rounded(FunctionCall& call) {
  if (call.IsWhole(0)) {
    call.PutArgument(0);
  } else {
    call.PutNumber(function(call.Number(0)));
  }
}

template <auto function>
void Computed(FunctionCall& call) {
  const double result = function(call.Number(0));
  if (std::isnan(result)) Fail(kInvalidCall);
  call.PutNumber(result);
}

// Zero has no logarithm either.
void Logarithm(FunctionCall& call) {
  const double value = call.Number(0);
  if (!(value > 0)) Fail(kInvalidCall);
  call.PutNumber(std::log(value));
}

void Absolute(FunctionCall& call) {
  if (call.IsWhole(0)) {
    const std::int64_t value = call.Integer(0);
    call.PutInteger(value < 0 ? -value : value);
  } else {
    call.PutNumber(std::fabs(call.Number(0)));
  }
}

void Sign(FunctionCall& call) {
  const double value = call.Number(0);
  call.PutInteger(value < 0 ? -1 : value > 0 ? 1 : 0);
}

// Rounds the ten-thousandths of the amount, halves to even.
double RoundedAmount(double value, std::int32_t digits) {
  std::int64_t amount = 0;
  if (!ToCurrency(value, amount)) Fail(kOverflow);
  constexpr std::array<std::int64_t, 4> kSteps = {10000, 1000, 100, 10};
  const std::int64_t step = kSteps.at(static_cast<std::size_t>(digits));
  std::int64_t steps = amount / step;
  const std::int64_t twice = 2 * std::abs(amount % step);
  if (twice > step || (twice == step && steps % 2 != 0)) steps += amount < 0 ? -1 : 1;
  return static_cast<double>(steps * step) / 10000;
}

void Scaled(FunctionCall& call) {
  std::int64_t amount = 0;
  if (!ToCurrency(call.Number(0), amount)) Fail(kOverflow);
  call.PutInteger(amount);
}

// A sum or difference. SQLite turns it into a floating-point number if it overflows.
void Amount(FunctionCall& call) {
  if (!call.IsWhole(0)) Fail(kOverflow);
  call.PutArgument(0);
}

// Rounds halves to even. The factors are split at the decimal point, so that no partial product
// exceeds 64 bits unless the result does.
void AmountProduct(FunctionCall& call) {
  constexpr std::int64_t kScale = 10000;
  constexpr double kMost = 9.2233720368e18;
  const std::int64_t a = call.Integer(0);
  const std::int64_t b = call.Integer(1);
  if (std::fabs(static_cast<double>(a) * static_cast<double>(b) / kScale) > kMost) Fail(kOverflow);
  const std::int64_t parts = a % kScale * (b % kScale);
  std::int64_t product = a / kScale * b + a % kScale * (b / kScale) + parts / kScale;
  const std::int64_t twice = 2 * std::abs(parts % kScale);
  if (twice > kScale || (twice == kScale && product % 2 != 0)) product += parts < 0 ? -1 : 1;
  call.PutInteger(product);
}

void Round(FunctionCall& call) {
  constexpr std::int32_t kMostDigits = 22;
  const std::int32_t digits = call.WholeOr(2, 0);
  if (digits < 0 || digits > kMostDigits) Fail(kInvalidCall);
  if (call.IsWhole(0)) {
    call.PutArgument(0);
    return;
  }
  const double value = call.Number(0);
  const bool is_amount = call.Integer(1) == static_cast<std::int64_t>(ValueType::kCurrency);
  if (is_amount && digits < 4) {
    call.PutNumber(RoundedAmount(value, digits));
    return;
  }
  const double scale = std::pow(10, digits);
  const double scaled = std::nearbyint(value * scale);
  call.PutNumber(std::isfinite(scaled) ? scaled / scale : value);
}

// A negative number seeds the sequence, zero repeats the last result.
void Random(FunctionCall& call) {
  constexpr std::uint32_t kMask = 0xFFFFFF;
  std::uint32_t& state = call.Context().random_state;
  const double number = call.Count() > 0 ? call.Number(0) : 1;
  if (number < -std::numeric_limits<float>::max()) Fail(kOverflow);
  if (number < 0) {
    const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(number));
    state = (bits + (bits >> 24U)) & kMask;
  }
  if (number != 0) state = (state * 1140671485U + 12820163U) & kMask;
  call.PutNumber(static_cast<double>(state) / (kMask + 1));
}

// The range that contains the number, as a text.
void Partition(FunctionCall& call) {
  const std::int64_t number = call.Whole(0);
  const std::int64_t first = call.Whole(1);
  const std::int64_t last = call.Whole(2);
  const std::int64_t width = call.Whole(3);
  if (first < 0 || last <= first || width < 1) Fail(kInvalidCall);
  const std::size_t length =
      std::max(std::to_string(first - 1).size(), std::to_string(last + 1).size());
  const auto padded = [length](const std::string& text) {
    return std::string(length - std::min(length, text.size()), ' ') + text;
  };
  if (number < first) {
    call.PutText(padded("") + ":" + padded(std::to_string(first - 1)));
  } else if (number > last) {
    call.PutText(padded(std::to_string(last + 1)) + ":" + padded(""));
  } else {
    const std::int64_t low = first + (number - first) / width * width;
    call.PutText(padded(std::to_string(low)) + ":" +
                 padded(std::to_string(std::min(low + width - 1, last))));
  }
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kAbs, Strict<Absolute>},
    {fn::kAmount, Strict<Amount>},
    {fn::kAmountProduct, Strict<AmountProduct>},
    {fn::kAtn, Strict<Computed<[](double x) { return std::atan(x); }>>},
    {fn::kCos, Strict<Computed<[](double x) { return std::cos(x); }>>},
    {fn::kExp, Strict<Computed<[](double x) { return std::exp(x); }>>},
    {fn::kFix, Strict<Rounded<[](double x) { return std::trunc(x); }>>},
    {fn::kInt, Strict<Rounded<[](double x) { return std::floor(x); }>>},
    {fn::kLog, Strict<Logarithm>},
    {fn::kPartition, Strict<Partition>},
    {fn::kRandom, Strict<Random>},
    {fn::kRound, Strict<Round>},
    {fn::kScaled, Strict<Scaled>},
    {fn::kSgn, Strict<Sign>},
    {fn::kSin, Strict<Computed<[](double x) { return std::sin(x); }>>},
    {fn::kSqr, Strict<Computed<[](double x) { return std::sqrt(x); }>>},
    {fn::kTan, Strict<Computed<[](double x) { return std::tan(x); }>>},
};

}  // namespace

std::span<const FunctionEntry> NumberFunctions() {
  return kFunctions;
}

}  // namespace jet
