#include "foundation/encodings.h"

#include <gtest/gtest.h>

namespace tmw {
namespace {

using std::string_literals::operator""s;

TEST(Encodings, EveryByteOfACodePageComesBackAsItself) {
  for (const CodePage page : {CodePage::k1251, CodePage::k866}) {
    std::string bytes;
    for (int b = 0; b < 256; ++b)
      bytes.push_back(static_cast<char>(b));
    const std::string text = CodePageToUtf8(page, bytes);
    EXPECT_EQ(Utf8ToCodePage(page, text), bytes);
    EXPECT_EQ(TryUtf8ToCodePage(page, text), bytes);
  }
}

TEST(Encodings, KnownBytesOfTheCyrillicCodePages) {
  EXPECT_EQ(Utf8ToCodePage(CodePage::k1251, "Ёж №5 — «я»"), "\xA8\xE6 \xB9\x35 \x97 \xAB\xFF\xBB"s);
  EXPECT_EQ(Utf8ToCodePage(CodePage::k866, "Ёж №5 я░"), "\xF0\xA6 \xFC\x35 \xEF\xB0"s);
  EXPECT_EQ(CodePageToUtf8(CodePage::k1251, "\x98"), "\xC2\x98");
}

TEST(Encodings, WhatACodePageLacksIsAQuestionMarkPerUnitOrRefused) {
  EXPECT_EQ(Utf8ToCodePage(CodePage::k1251, "a中b\xF0\x9F\x98\x80"), "a?b??");
  EXPECT_EQ(Utf8ToCodePage(CodePage::k866, "—\xFF"), "??");
  EXPECT_EQ(TryUtf8ToCodePage(CodePage::k1251, "中"), std::nullopt);
  EXPECT_EQ(TryUtf8ToCodePage(CodePage::k866, "\xD0"), std::nullopt);
}

TEST(Encodings, MalformedUtf8IsReplacedByteByByteAndRefusedWhenAsked) {
  struct Case {
    std::string bytes;
    std::u16string replaced;
  };
  const Case cases[] = {
      {"\x80", u"\uFFFD"},                                // lone continuation
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong "/"
      {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},            // overlong, three bytes
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
      {"a\xD0", u"a\uFFFD"},                              // cut off
      {"\xD0\x41",
       u"\uFFFD"
       u"A"},  // broken second byte
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Utf8ToUtf16(c.bytes), c.replaced);
    EXPECT_EQ(TryUtf8ToUtf16(c.bytes), std::nullopt);
  }
}

TEST(Encodings, Utf16KeepsPairsAndReplacesLoneSurrogates) {
  EXPECT_EQ(Utf8ToUtf16("я\xF0\x9F\x98\x80"), u"я\U0001F600");
  EXPECT_EQ(Utf16ToUtf8(u"я\U0001F600"), "я\xF0\x9F\x98\x80");
  const char16_t lone[] = {0xD83D, u'x', 0xDE00};
  EXPECT_EQ(Utf16ToUtf8({lone, 3}), "\xEF\xBF\xBDx\xEF\xBF\xBD");
  EXPECT_EQ(Utf16ToBytes(u"aЯ"), "a\0\x2F\x04"s);
  EXPECT_EQ(BytesToUtf16("a\0\x2F\x04!"s), u"aЯ");
}

TEST(Encodings, LowerCaseFollowsUnicodeAndNotTheLocale) {
  struct Case {
    const char* text;
    const char* lower;
  };
  const Case cases[] = {
      {"ABC xyz [09]", "abc xyz [09]"},
      {"ЁЖИК Їжак", "ёжик їжак"},
      {"ÀÉÎÕÜ ß ÿ Ÿ", "àéîõü ß ÿ ÿ"},
      {"ΑΒΓΩ", "αβγω"},
      {"ĀĂĄ ŁŻ", "āăą łż"},
      {"×÷", "×÷"},
      {"ЍЏ Ґ Ҳ", "ѝџ ґ ҳ"},
      {"İ", "i"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(LowerCase(c.text), c.lower);
}

}  // namespace
}  // namespace tmw
