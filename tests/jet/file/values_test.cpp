#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "jet/errors.h"
#include "jet/file/damage.h"
#include "jet/file/decimal_bytes.h"
#include "jet/file/packed_text.h"
#include "jet/file/stored_value.h"
#include "tests/support/database_values.h"

namespace {

using jet::file::ColumnLayout;
using jet::file::ColumnType;
using tests::DatabaseValue;
using namespace std::string_literals;

TEST(JetFileText, IsUnpackedWhateverItsForm) {
  const struct {
    std::string stored;
    const char* text;
  } cases[] = {
      {"", ""},
      {"a\0\x31\x04"s, "aб"},
      {"\xFF\xFE"s, ""},
      {"\xFF\xFE"
       "abc"s,
       "abc"},
      {"\xFF\xFE"
       "a\xE9"s,
       "aé"},
      // Compressed, plain and compressed again.
      {"\xFF\xFE"
       "a\0\x31\x04\x32\x04\0b"s,
       "aбвb"},
      {"\xFF\xFE\0\x31\x04"s, "б"},
      {"\xFF\xFE"
       "a\0\0b"s,
       "ab"},
      // Cut within a character.
      {"a\0b"s, "a"},
      {"\xFF\xFE\0\x31\x04\x32"s, "б"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(jet::file::UnpackText(c.stored), c.text);
}

TEST(JetFileDecimals, KeepEveryDigit) {
  const struct {
    const char* text;
    std::uint8_t scale;
    const char* back;
  } cases[] = {
      {"0", 0, "0"},
      {"-0", 2, "0"},
      {"12.5", 2, "12.5"},
      {"-12.50", 1, "-12.5"},
      {"0.0001", 4, "0.0001"},
      {"9999999999999999999999999999", 0, "9999999999999999999999999999"},
      {"-0.0000000000000000000000000001", 28, "-0.0000000000000000000000000001"},
      {"340282366920938463463374607431768211455", 0, "340282366920938463463374607431768211455"},
      {"340282366920938463463374607431768211456", 0, nullptr},
      {"1.25", 1, nullptr},
      {"1e5", 0, nullptr},
      {"", 0, nullptr},
  };
  for (const auto& c : cases) {
    const auto bytes = jet::file::DecimalBytes(c.text, c.scale);
    ASSERT_EQ(bytes.has_value(), c.back != nullptr) << c.text;
    if (!bytes) continue;
    EXPECT_EQ(jet::file::DecimalText(*bytes, c.scale), c.back);
  }
}

TEST(JetFileValues, GoToTheFileAndComeBack) {
  const struct {
    ColumnType type;
    DatabaseValue value;
    std::string stored;
  } cases[] = {
      {ColumnType::kBoolean, true, "\1"},
      {ColumnType::kByte, std::uint8_t{200}, "\xC8"},
      {ColumnType::kInteger, std::int16_t{-2}, "\xFE\xFF"},
      {ColumnType::kLong, std::int32_t{-2}, "\xFE\xFF\xFF\xFF"},
      {ColumnType::kCurrency, tests::CurrencyValue{12345}, "\x39\x30\0\0\0\0\0\0"s},
      {ColumnType::kSingle, 1.5F, "\0\0\xC0\x3F"s},
      {ColumnType::kDouble, -1.5, "\0\0\0\0\0\0\xF8\xBF"s},
      {ColumnType::kDate, tests::DateValue{-1.25}, "\0\0\0\0\0\0\xF4\xBF"s},
      {ColumnType::kText, "б"s, "\x31\x04"},
      {ColumnType::kMemo, ""s, ""},
      {ColumnType::kOle, tests::BinaryValue{"\0\1"s}, "\0\1"s},
      {ColumnType::kGuid, "{guid {00112233-4455-6677-8899-AABBCCDDEEFF}}"s,
       "\x33\x22\x11\0\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF"s},
      {ColumnType::kNumeric, tests::DecimalValue{"-2.5"},
       "\x80\0\0\0\0\0\0\0\0\0\0\0\0\xFA\0\0\0"s},
  };
  for (const auto& c : cases) {
    ColumnLayout column;
    column.type = c.type;
    column.sort_order = 2U << 8U;  // a numeric column's scale
    EXPECT_EQ(jet::file::ToStored(column, c.value), c.stored);
    EXPECT_EQ(jet::file::ToValue(column, c.stored), c.value);
    if (c.type == ColumnType::kBoolean) continue;
    EXPECT_EQ(jet::file::ToStored(column, tests::NullValue{}), std::nullopt);
    EXPECT_EQ(jet::file::ToValue(column, std::nullopt), DatabaseValue(tests::NullValue{}));
    if (jet::file::ValueWidth(c.type) == 0) continue;
    EXPECT_THROW(jet::file::ToValue(column, "abc"), jet::file::Damage);
  }
}

}  // namespace
