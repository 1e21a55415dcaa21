#include "database/db_string.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/program_error.h"
#include "tests/support/caught.h"
#include "tests/support/database_values.h"

namespace tests {
namespace {

TEST(DBString, EveryKindOfValueHasItsText) {
  const struct {
    DatabaseValue value;
    const char* text;
  } cases[] = {
      {EmptyValue{}, "E"},
      {NullValue{}, ""},
      {std::int16_t{-7}, "-7"},
      {std::int32_t{2147483647}, "2147483647"},
      {std::uint8_t{255}, "255"},
      {0.5, "0.5"},
      {0.1 + 0.2, "0.3"},
      {0.1F, "0.1"},
      {CurrencyValue{9223372036854775807}, "922337203685477.5807"},
      {DecimalValue{"12345678901234567890.5"}, "12345678901234567890.5"},
      {DateValue{0}, "D0"},
      {DateValue{36892}, "d0"},
      {DateValue{36893}, "d1"},
      {DateValue{36891}, "d-1"},
      {DateValue{38415.43078703704}, "D20050304102020"},
      {DateValue{-1.25}, "D18991229060000"},
      {DateValue{0.5}, "D18991230120000"},
      {DateValue{36892.999999999}, "D20010102000000"},
      {std::string(), "S"},
      {std::string("a|b^c\r\n"), "Sa^2b^1c^3"},
      {std::string("\r \n\t\u00A0\n\r"), "S^4 ^5^6^7^5^4"},
      {std::string("Ёлка №1"), "SЁлка №1"},
      {true, "T"},
      {false, "F"},
      {BinaryValue{"x"}, "? (0x2011)"},
      {OtherValue{9}, "? (0x9)"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(tmw::VariantToDBString(c.value), c.text);
}

TEST(DBString, TextsComeBackAsTheirValues) {
  const struct {
    const char* text;
    DatabaseValue value;
  } cases[] = {
      {"E", EmptyValue{}},
      {"", NullValue{}},
      {"S", std::string()},
      {"S^1^2^3^4^5^6^7", std::string("^|\r\n\r\n\t\u00A0")},
      {"S^12", std::string("^2")},
      {"S^8^", std::string("^8^")},
      {"d0", DateValue{36892}},
      {"d-1", DateValue{36891}},
      {"D0", DateValue{0}},
      {"D20050304102030", DateValue{38415 + 37230 / 86400.0}},
      {"D18991229060000", DateValue{-1.25}},
      {"T", true},
      {"F", false},
      {"42", 42.0},
      {"-7.5E2x", -750.0},
      {"-", 0.0},
  };
  for (const auto& c : cases)
    EXPECT_EQ(tmw::DBStringToVariant(c.text), c.value) << c.text;
}

TEST(DBString, OtherTextsAreRefused) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"? (0x2011)", "Unrecognizing value in DBString: [? (0x2011)]"},
      {"x", "Unrecognizing value in DBString: [x]"},
      {"d", "Unrecognizing value in DBString: [d]"},
      {"d1x", "Unrecognizing value in DBString: [d1x]"},
      {"d9999999", "Unrecognizing value in DBString: [d9999999]"},
      {"D2005", "Invalid date in DBString: [D2005]"},
      {"D20051304102030", "Invalid date in DBString: [D20051304102030]"},
      {"D2005030410203x", "Invalid date in DBString: [D2005030410203x]"},
  };
  for (const auto& c : cases) {
    const tmw::ProgramError error = Caught([&] { tmw::DBStringToVariant(c.text); });
    EXPECT_EQ(error.Number, 1001) << c.text;
    EXPECT_EQ(error.Description, c.message);
    EXPECT_NE(error.Source.find("::miDBExport.DBStringToVariant]"), std::string::npos);
  }
}

TEST(DBString, FieldTypesHaveTokensOrTheirCode) {
  const char* const tokens[] = {"U0",     "Bool", "Byte", "Int",   "Long",   "Curr",
                                "Single", "Dbl",  "Date", "Bin",   "Text",   "LongBin",
                                "Memo",   "U13",  "U14",  "Guid",  "BigInt", "VarBin",
                                "Char",   "Num",  "Dec",  "Float", "Time",   "TimeStamp"};
  for (std::int32_t code = 0; code < 24; ++code) {
    EXPECT_EQ(tmw::FieldTypeToStr(static_cast<DataType>(code)), tokens[code]);
    const auto back = tmw::FieldTypeFromStr(tokens[code]);
    EXPECT_EQ(back.has_value(), tokens[code][0] != 'U') << code;
    if (back) {
      EXPECT_EQ(*back, static_cast<DataType>(code));
    }
  }
}

}  // namespace
}  // namespace tests
