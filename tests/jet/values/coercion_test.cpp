#include "jet/values/coercion.h"

#include <gtest/gtest.h>

#include <string>

#include "jet/values/date_literal.h"
#include "jet/values/like.h"
#include "jet/values/value_text.h"
#include "tests/jet/database_fixture.h"
#include "tests/support/database_values.h"

namespace tests {
namespace {

std::string Converted(const DatabaseValue& value, DataType type, std::int32_t size = 0) {
  std::string words;
  const std::int32_t error =
      ErrorOf([&] { words = Words(jet::ConvertTo(value, type, size, 3421)); });
  return error == 0 ? words : "error " + std::to_string(error);
}

TEST(Coercion, AssignmentConvertsToTheFieldsTypeOrFails) {
  const struct {
    DatabaseValue value;
    DataType type;
    const char* result;
  } cases[] = {
      {NullValue{}, DataType::kLong, "Null"},
      {EmptyValue{}, DataType::kText, "Null"},
      {NullValue{}, DataType::kBoolean, "False"},
      // whole numbers round halves to even and are range-checked
      {0.5, DataType::kByte, "Byte 0"},
      {1.5, DataType::kByte, "Byte 2"},
      {255.4, DataType::kByte, "Byte 255"},
      {255.5, DataType::kByte, "error 3421"},
      {-0.6, DataType::kByte, "error 3421"},
      {-32768.5, DataType::kInteger, "Integer -32768"},
      {32767.5, DataType::kInteger, "error 3421"},
      {2147483647.4, DataType::kLong, "Long 2147483647"},
      {2147483648.0, DataType::kLong, "error 3421"},
      {true, DataType::kLong, "Long -1"},
      {true, DataType::kByte, "error 3421"},
      {DateValue{36892.75}, DataType::kLong, "Long 36893"},
      {std::string(" 7,5 "), DataType::kLong, "Long 8"},
      {std::string("1e3"), DataType::kLong, "Long 1000"},
      {std::string(""), DataType::kLong, "error 3421"},
      {std::string("7 штук"), DataType::kLong, "error 3421"},
      {BinaryValue{"7"}, DataType::kLong, "error 3421"},
      {OtherValue{9}, DataType::kLong, "error 3421"},
      // amounts are exact from texts, to the nearest ten-thousandth from numbers
      {std::string("922337203685477,5807"), DataType::kCurrency, "Currency 922337203685477.5807"},
      {std::string("922337203685477,5808"), DataType::kCurrency, "error 3421"},
      {0.00016, DataType::kCurrency, "Currency 0.0002"},
      {-0.00004, DataType::kCurrency, "Currency 0"},
      {1e16, DataType::kCurrency, "error 3421"},
      {DecimalValue{"12.3456"}, DataType::kCurrency, "Currency 12.3456"},
      {CurrencyValue{15000}, DataType::kDouble, "Double 1.5"},
      // floating-point numbers
      {0.1, DataType::kSingle, "Single 0.1"},
      {1e39, DataType::kSingle, "error 3421"},
      {std::string("-1,5e-300"), DataType::kDouble, "Double -1.5E-300"},
      {std::string("nan"), DataType::kDouble, "error 3421"},
      // Booleans
      {0.001, DataType::kBoolean, "True"},
      {std::string("Yes"), DataType::kBoolean, "True"},
      {std::string("off"), DataType::kBoolean, "False"},
      {std::string("0"), DataType::kBoolean, "False"},
      {std::string("да"), DataType::kBoolean, "error 3421"},
      // dates
      {36892.5, DataType::kDate, "Date 36892.5"},
      {-657434.5, DataType::kDate, "Date -657434.5"},
      {-657435.0, DataType::kDate, "error 3421"},
      {2958466.0, DataType::kDate, "error 3421"},
      {std::string("1.2.01"), DataType::kDate, "Date 36923"},
      {std::string("1/2/30"), DataType::kDate, "Date 10990"},
      {std::string("2001-02-01 6:00"), DataType::kDate, "Date 36923.25"},
      {std::string("18:00"), DataType::kDate, "Date 0.75"},
      {std::string("31.02.2001"), DataType::kDate, "error 3421"},
      {std::string("36923"), DataType::kDate, "Date 36923"},
      // texts
      {-0.5, DataType::kText, "Text -0,5"},
      {0.1F, DataType::kMemo, "Text 0,1"},
      {true, DataType::kText, "Text -1"},
      {DateValue{36892}, DataType::kText, "Text 01.01.2001"},
      {DateValue{0}, DataType::kText, "Text 30.12.1899"},
      {DateValue{0.5}, DataType::kText, "Text 12:00:00"},
      {DateValue{36892.0625}, DataType::kText, "Text 01.01.2001 1:30:00"},
      {BinaryValue{"x"}, DataType::kText, "error 3421"},
      // bytes
      {BinaryValue{"xy"}, DataType::kLongBinary, "Binary 2"},
      {std::string("xy"), DataType::kLongBinary, "error 3421"},
      {std::string("{0123ABcd-89AB-CDEF-0123-456789abcdef}"), DataType::kGuid,
       "Text {guid {0123ABCD-89AB-CDEF-0123-456789ABCDEF}}"},
      {std::string("0123ABcd-89AB-CDEF-0123-456789abcde"), DataType::kGuid, "error 3421"},
      {std::string("0123ABcd+89AB-CDEF-0123-456789abcdef"), DataType::kGuid, "error 3421"},
      {BinaryValue{std::string(16, '\1')}, DataType::kGuid,
       "Text {guid {01010101-0101-0101-0101-010101010101}}"},
      {1.0, DataType::kBigInt, "error 3259"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Converted(c.value, c.type), c.result)
        << Words(c.value) << " to " << static_cast<int>(c.type);
}

TEST(Coercion, SizesCountUtf16UnitsAndBytes) {
  EXPECT_EQ(Converted(std::string("Ёж№"), DataType::kText, 3), "Text Ёж№");
  EXPECT_EQ(Converted(std::string("Ёж№ "), DataType::kText, 3), "error 3163");
  EXPECT_EQ(Converted(std::string("😀"), DataType::kText, 2), "Text 😀");
  EXPECT_EQ(Converted(std::string("😀"), DataType::kText, 1), "error 3163");
  EXPECT_EQ(Converted(BinaryValue{"abc"}, DataType::kBinary, 2), "error 3163");
  EXPECT_EQ(jet::FieldSize(DataType::kText, 0, "f"), 255);
  EXPECT_EQ(jet::FieldSize(DataType::kLong, 77, "f"), 4);
  EXPECT_EQ(ErrorOf([] { jet::FieldSize(DataType::kBinary, 511, "f"); }), 3163);
  EXPECT_EQ(ErrorOf([] { jet::FieldSize(DataType::kBigInt, 8, "f"); }), 3259);
}

TEST(Like, FollowsJetsWildcards) {
  const struct {
    const char* text;
    const char* pattern;
    bool matches;
  } cases[] = {
      {"", "", true},          {"", "*", true},          {"", "?", false},
      {"а", "?", true},        {"аб", "?", false},       {"абв", "а*в", true},
      {"абвг", "а*в", false},  {"ааб", "*аб", true},     {"абаб", "*аб", true},
      {"абаба", "*аб", false}, {"Ёж", "ёЖ", true},       {"a*b", "a[*]b", true},
      {"axb", "a[*]b", false}, {"7", "#", true},         {"x", "#", false},
      {"#", "[#]", true},      {"-", "[а-в-]", true},    {"!", "[!]", true},
      {"б", "[а-в]", true},    {"Б", "[!а-в]", false},   {"д", "[!а-в]", true},
      {"б", "[]", false},      {"ё", "[а-я]", true},     {"ё", "[а-е]", false},
      {"-", "[а-я]", false},   {"x%", "x%", true},       {"x_y", "x_y", true},
      {"a]", "a]", true},      {"aXbXc", "a*X*c", true}, {"aaaaaaaaaaaaaaab", "*a*a*a*a*c", false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(jet::MatchesLike(c.text, c.pattern), c.matches) << c.text << " like " << c.pattern;
}

TEST(DateLiteral, IsReadMonthFirstUnlessItCannotBe) {
  const struct {
    const char* text;
    const char* moment;
  } cases[] = {
      {"1/2/2003", "02.01.2003"},
      {"13/2/2003", "13.02.2003"},
      {"1-2-2003", "02.01.2003"},
      {"2003-02-01", "01.02.2003"},
      {"2003/12/31", "31.12.2003"},
      {"1/2/29", "02.01.2029"},
      {"1/2/30", "02.01.1930"},
      {"12/30/1899", "30.12.1899"},
      {" 1/2/2003  4:05 ", "02.01.2003 4:05:00"},
      {"1/2/2003 4:05:06 PM", "02.01.2003 16:05:06"},
      {"12:00 am", "30.12.1899"},
      {"12:30 pm", "12:30:00"},
      {"1 jan 2005", "01.01.2005"},
      {"December 31, 99 4:05", "31.12.1999 4:05:00"},
      {"2-May-2005 1:00 pm", "02.05.2005 13:00:00"},
  };
  for (const auto& c : cases) {
    const auto days = jet::ParseDateLiteral(c.text);
    EXPECT_EQ(days ? jet::DateText(*days) : "", c.moment) << c.text;
  }
  for (const char* const refused :
       {"", "13/13/2003", "2/30/2003", "1/2", "1/2/3/4", "25:00", "13:00 pm", "1/2/2003 x",
        "4:05 1/2/2003", "1.2.2003", "1 янв 2005", "31 feb 2005", "jan 2005", "1 2 jan"})
    EXPECT_FALSE(jet::ParseDateLiteral(refused)) << refused;
}

}  // namespace
}  // namespace tests
