#include "foundation/text.h"

#include <gtest/gtest.h>

#include "foundation/string_accumulator.h"

namespace tmw {
namespace {

TEST(Text, SplittingKeepsEmptyPieces) {
  using Pieces = std::vector<std::string>;
  EXPECT_EQ(Split("a\r\nb\r\n", "\r\n"), (Pieces{"a", "b", ""}));
  EXPECT_EQ(Split("", "|"), Pieces{""});
  EXPECT_EQ(Split("|", "|"), (Pieces{"", ""}));
}

TEST(Text, TrimmingTakesBlanksOnlyAtTheEnds) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("\ta "), "\ta");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(TrimCharacters("\r\n x;\n", " \r\n"), "x;");
}

TEST(Text, HexadecimalIsUpperCaseAndTwosComplement) {
  EXPECT_EQ(ToHex(1234), "4D2");
  EXPECT_EQ(ToHex(0), "0");
  EXPECT_EQ(ToHex(-2147221164), "80040154");
}

TEST(Text, ComparisonWithoutCaseKnowsCyrillic) {
  EXPECT_TRUE(EqualIgnoringCase("Отчёт.TMS", "ОТЧЁТ.tms"));
  EXPECT_FALSE(EqualIgnoringCase("е", "ё"));
}

TEST(StringAccumulator, LinesEndWithCrLf) {
  StringAccumulator text;
  text.Add("a");
  text.AddLine("b");
  text.AddLine("");
  EXPECT_EQ(text.Text(), "ab\r\n\r\n");
  EXPECT_EQ(text.TakeText(), "ab\r\n\r\n");
  EXPECT_EQ(text.Text(), "");
}

}  // namespace
}  // namespace tmw
