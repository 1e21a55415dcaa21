#include "foundation/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace tmw {
namespace {

TEST(NumberText, DoublesHaveFifteenDigitsAndSinglesSeven) {
  const struct {
    double value;
    const char* as_double;
    const char* as_single;
  } cases[] = {
      {0, "0", "0"},
      {-0.0, "0", "0"},
      {1, "1", "1"},
      {-12.5, "-12.5", "-12.5"},
      {1.0 / 3, "0.333333333333333", "0.3333333"},
      {2.0 / 3, "0.666666666666667", "0.6666667"},
      {123456789, "123456789", "1.234568E+08"},
      {999999.9, "999999.9", "999999.9"},
      {9999999.9, "9999999.9", "1E+07"},
      {999999999999999, "999999999999999", "1E+15"},
      {1e15, "1E+15", "1E+15"},
      {0.0001, "0.0001", "0.0001"},
      {0.00001, "1E-05", "1E-05"},
      {1.5e-7, "1.5E-07", "1.5E-07"},
      {3.4e38, "3.4E+38", "3.4E+38"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DoubleToText(c.value), c.as_double);
    EXPECT_EQ(SingleToText(static_cast<float>(c.value)), c.as_single);
  }
  EXPECT_EQ(DoubleToText(std::numeric_limits<double>::max()), "1.79769313486232E+308");
  EXPECT_EQ(DoubleToText(5e-324), "4.94065645841247E-324");
}

TEST(NumberText, CurrencyIsExactBothWays) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const struct {
    std::int64_t amount;
    const char* text;
  } cases[] = {
      {0, "0"},
      {1, "0.0001"},
      {-1, "-0.0001"},
      {10000, "1"},
      {12500, "1.25"},
      {-123450000, "-12345"},
      {100100, "10.01"},
      {kMost, "922337203685477.5807"},
      {-kMost - 1, "-922337203685477.5808"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CurrencyToText(c.amount), c.text);
    EXPECT_EQ(ReadCurrency(c.text), c.amount) << c.text;
  }
  for (const char* const text :
       {"", "-", ".5", "1.00001", "1e3", "+1", "1,5", " 1", "1 ", "922337203685477.5808",
        "-922337203685477.5809", "9999999999999999", "1.2.3", "--1"})
    EXPECT_EQ(ReadCurrency(text), std::nullopt) << text;
  EXPECT_EQ(ReadCurrency("7."), 70000);
}

TEST(NumberText, ReadsTheNumberThatATextBeginsWith) {
  const struct {
    const char* text;
    double value;
    std::size_t length;
  } cases[] = {
      {"", 0, 0},    {"x", 0, 0},        {"-", 0, 0},       {".", 0, 0},      {"-.5", -0.5, 3},
      {"5.", 5, 2},  {"+7", 7, 2},       {"12abc", 12, 2},  {"1e3", 1000, 3}, {"1e", 1, 1},
      {"1e+", 1, 1}, {"1E-2x", 0.01, 4}, {"1.2.3", 1.2, 3}, {"0x10", 0, 1},   {" 5", 0, 0},
      {"1,5", 1, 1}, {"-0", 0, 2},       {"nan", 0, 0},     {"inf", 0, 0},    {"1e-400", 0, 6},
  };
  for (const auto& c : cases) {
    std::size_t length = 99;
    EXPECT_EQ(ReadNumberPrefix(c.text, &length), c.value) << c.text;
    EXPECT_EQ(length, c.length) << c.text;
  }
  EXPECT_TRUE(std::isinf(ReadNumberPrefix("1e999")));
}

}  // namespace
}  // namespace tmw
