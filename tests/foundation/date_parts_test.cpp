#include "foundation/date_parts.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tmw {
namespace {

std::string Words(const DateParts& p) {
  std::string text;
  for (const int part : {p.year, p.month, p.day, p.hour, p.minute, p.second})
    text += (text.empty() ? "" : " ") + std::to_string(part);
  return text;
}

TEST(DateParts, DaysAndTheirPartsGoTogether) {
  const struct {
    double days;
    const char* parts;
  } cases[] = {
      {0, "1899 12 30 0 0 0"},
      {1, "1899 12 31 0 0 0"},
      {0.5, "1899 12 30 12 0 0"},
      {-1, "1899 12 29 0 0 0"},
      {-1.25, "1899 12 29 6 0 0"},
      {-0.75, "1899 12 30 18 0 0"},
      {36892, "2001 1 1 0 0 0"},
      {36585, "2000 2 29 0 0 0"},
      {60, "1900 2 28 0 0 0"},
      {61, "1900 3 1 0 0 0"},
      {kFirstDay, "100 1 1 0 0 0"},
      {kLastDay, "9999 12 31 0 0 0"},
      {38415.43090277778, "2005 3 4 10 20 30"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Words(PartsOfDate(c.days)), c.parts) << c.days;
  EXPECT_EQ(Words(PartsOfDate(36892 - 1e-9)), "2001 1 1 0 0 0") << "rounded over midnight";
}

// The time of day counts away from midnight before 1899-12-30 too, so both signs come back.
TEST(DateParts, EverySecondOfADayComesBack) {
  for (const double day : {-657434.0, -2.0, 0.0, 36892.0, 2958465.0}) {
    for (int second = 0; second < 86400; second += 7) {
      DateParts parts = PartsOfDate(day);
      parts.hour = second / 3600;
      parts.minute = second / 60 % 60;
      parts.second = second % 60;
      const std::optional<double> days = DateFromParts(parts);
      ASSERT_TRUE(days);
      ASSERT_EQ(Words(PartsOfDate(*days)), Words(parts)) << *days;
    }
  }
}

}  // namespace
}  // namespace tmw
