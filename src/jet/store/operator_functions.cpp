#include "jet/store/operator_functions.h"

#include <cmath>
#include <limits>
#include <string>

#include "jet/errors.h"
#include "jet/values/like.h"
#include "jet/values/sort_key.h"

namespace jet {
namespace {

// The operator &: Null counts as an empty text unless both operands are Null.
void Join(FunctionCall& call) {
  if (call.IsNull(0) && call.IsNull(1)) return;
  std::string text;
  for (int i = 0; i < 2; ++i) {
    if (!call.IsNull(i)) text += call.Text(i);
  }
  call.PutText(text);
}

// The operator + for values of statically unknown types.
void Add(FunctionCall& call) {
  if (call.IsText(0) && call.IsText(1)) {
    call.PutText(std::string(call.Text(0)) + std::string(call.Text(1)));
  } else {
    call.PutNumber(call.Number(0) + call.Number(1));
  }
}

// Checks that a result of whole numbers fits 32 bits.
void Long(FunctionCall& call) {
  const std::int64_t number = call.Integer(0);
  if (!call.IsWhole(0) || number < std::numeric_limits<std::int32_t>::min() ||
      number > std::numeric_limits<std::int32_t>::max())
    Fail(kOverflow);
  call.PutArgument(0);
}

void Divide(FunctionCall& call) {
  const double divisor = call.Number(1);
  if (divisor == 0) Fail(kDivisionByZero);
  call.PutNumber(call.Number(0) / divisor);
}

void Whole(FunctionCall& call) {
  call.PutInteger(call.Whole(0));
}

// \ and Mod round their operands first.
std::int64_t DivisorOf(const FunctionCall& call) {
  const std::int64_t divisor = call.Whole(1);
  if (divisor == 0) Fail(kDivisionByZero);
  return divisor;
}

void WholeDivide(FunctionCall& call) {
  const std::int64_t divisor = DivisorOf(call);
  const std::int64_t quotient = call.Whole(0) / divisor;
  if (quotient > std::numeric_limits<std::int32_t>::max()) Fail(kOverflow);
  call.PutInteger(quotient);
}

void Modulo(FunctionCall& call) {
  const std::int64_t divisor = DivisorOf(call);
  call.PutInteger(call.Whole(0) % divisor);
}

void Power(FunctionCall& call) {
  const double base = call.Number(0);
  const double power = std::pow(base, call.Number(1));
  if (std::isnan(power) || (base == 0 && std::isinf(power))) Fail(kInvalidCall);
  call.PutNumber(power);
}

template <Wildcards wildcards>
void Like(FunctionCall& call) {
  call.PutTruth(MatchesLike(call.Text(0), call.Text(1), wildcards));
}

// A text does not compare with a number.
int CompareValues(const FunctionCall& call, int a, int b) {
  const bool is_text = call.IsText(a);
  if (is_text != call.IsText(b)) Fail(kTypeMismatch);
  if (is_text) return CompareTexts(call.Text(a), call.Text(b));
  const double x = call.Number(a);
  const double y = call.Number(b);
  return x < y ? -1 : x > y ? 1 : 0;
}

void Compare(FunctionCall& call) {
  call.PutInteger(CompareValues(call, 0, 1));
}

void Between(FunctionCall& call) {
  const int low = CompareValues(call, 0, 1);
  const int high = CompareValues(call, 0, 2);
  call.PutTruth((low >= 0 && high <= 0) || (low <= 0 && high >= 0));
}

// If the value is not found, a Null among the items makes the result Null.
void In(FunctionCall& call) {
  if (call.IsNull(0)) return;
  bool met_null = false;
  for (int i = 1; i < call.Count(); ++i) {
    if (call.IsNull(i)) {
      met_null = true;
    } else if (CompareValues(call, 0, i) == 0) {
      call.PutTruth(true);
      return;
    }
  }
  if (!met_null) call.PutTruth(false);
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kAdd, Strict<Add>},
    {fn::kAlike, Strict<Like<Wildcards::kAnsi>>},
    {fn::kBetween, Strict<Between>},
    {fn::kCompare, Strict<Compare>},
    {fn::kDivide, Strict<Divide>},
    {fn::kIn, Guarded<In>},
    {fn::kJoin, Guarded<Join>},
    {fn::kLike, Strict<Like<Wildcards::kJet>>},
    {fn::kLong, Strict<Long>},
    {fn::kModulo, Strict<Modulo>},
    {fn::kPower, Strict<Power>},
    {fn::kWhole, Strict<Whole>},
    {fn::kWholeDivide, Strict<WholeDivide>},
};

}  // namespace

std::span<const FunctionEntry> OperatorFunctions() {
  return kFunctions;
}

}  // namespace jet
