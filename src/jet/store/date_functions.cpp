#include "jet/store/date_functions.h"

#include <cmath>

#include "foundation/date_parts.h"
#include "jet/errors.h"
#include "jet/values/calendar.h"

namespace jet {
namespace {

void Now(FunctionCall& call) {
  call.PutNumber(LocalNow());
}

void Date(FunctionCall& call) {
  call.PutNumber(std::floor(LocalNow()));
}

void Time(FunctionCall& call) {
  const double now = LocalNow();
  call.PutNumber(now - std::floor(now));
}

void Timer(FunctionCall& call) {
  const double now = LocalNow();
  call.PutNumber(std::round((now - std::floor(now)) * 86400));
}

void DatePart(FunctionCall& call) {
  const WeekRules rules = MakeWeekRules(call.WholeOr(2, 1), call.WholeOr(3, 1));
  call.PutInteger(PartOf(call.Moment(1), ParseInterval(call.Text(0)), rules));
}

void DateAdd(FunctionCall& call) {
  call.PutNumber(AddIntervals(call.Moment(2), ParseInterval(call.Text(0)), call.Whole(1)));
}

void DateDifference(FunctionCall& call) {
  const WeekRules rules = MakeWeekRules(call.WholeOr(3, 1), call.WholeOr(4, 1));
  call.PutInteger(
      IntervalsBetween(call.Moment(1), call.Moment(2), ParseInterval(call.Text(0)), rules));
}

void DateSerial(FunctionCall& call) {
  call.PutNumber(DateOf(call.Whole(0), call.Whole(1), call.Whole(2)));
}

// Values beyond a day carry over to days.
void TimeSerial(FunctionCall& call) {
  const std::int64_t seconds = std::int64_t{call.Whole(0)} * 3600 +
                               std::int64_t{call.Whole(1)} * 60 + std::int64_t{call.Whole(2)};
  const double days = static_cast<double>(seconds) / 86400;
  if (!tmw::IsDateInRange(days)) Fail(kInvalidCall);
  call.PutNumber(days);
}

void DayOnly(FunctionCall& call) {
  call.PutNumber(std::trunc(call.Moment(0)));
}

void TimeOnly(FunctionCall& call) {
  const double days = call.Moment(0);
  call.PutNumber(std::fabs(days - std::trunc(days)));
}

void NameOfMonth(FunctionCall& call) {
  call.PutText(MonthName(call.Whole(0), call.WholeOr(1, 0) != 0));
}

// Monday is day 1 by default.
void NameOfWeekday(FunctionCall& call) {
  const std::int32_t day = call.Whole(0);
  if (day < 1 || day > 7) Fail(kInvalidCall);
  const WeekRules rules = MakeWeekRules(call.WholeOr(2, 0), 1);
  call.PutText(DayName((day + rules.first_day - 2) % 7 + 1, call.WholeOr(1, 0) != 0));
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kDate, Guarded<Date>},
    {fn::kDateAdd, Strict<DateAdd>},
    {fn::kDateDifference, Strict<DateDifference>},
    {fn::kDatePart, Strict<DatePart>},
    {fn::kDateSerial, Strict<DateSerial>},
    {fn::kDayOnly, Strict<DayOnly>},
    {fn::kMonthName, Strict<NameOfMonth>},
    {fn::kNow, Guarded<Now>},
    {fn::kTime, Guarded<Time>},
    {fn::kTimeOnly, Strict<TimeOnly>},
    {fn::kTimer, Guarded<Timer>},
    {fn::kTimeSerial, Strict<TimeSerial>},
    {fn::kWeekdayName, Strict<NameOfWeekday>},
};

}  // namespace

std::span<const FunctionEntry> DateFunctions() {
  return kFunctions;
}

}  // namespace jet
