#include "jet/values/sort_key.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/encodings.h"

namespace {

std::string Hex(const std::string& bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4U];
    text += kDigits[static_cast<unsigned char>(c) & 0x0FU];
  }
  return text;
}

TEST(SortKey, IsMadeOfWeightsAccentsAndIgnoredCharacters) {
  const struct {
    const char* text;
    const char* key;
  } cases[] = {
      {"", "0100"},
      {"MSysDb", "606B766B4F4C0100"},
      {"msysdb  ", "606B766B4F4C0100"},
      {"Ёлка", "793679417940792F011300"},
      {"a-b", "4A4C01010101800B068200"},
      {"№ 1", "630207380100"},
      // Letters with accents, letters that are two, İ beside i.
      {"Müller", "606F5E5E516901021300"},
      {"mÜLLER", "606F5E5E516901021300"},
      {"Straße", "6B6D694A6B6B510100"},
      {"œuvre", "64516F7169510100"},
      {"İi", "5959011000"},
      {"½¿", "37162B160100"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Hex(jet::SortKey(c.text)), c.key) << c.text;
}

TEST(SortKey, OrdersWordsAsTheProductsListsDo) {
  const std::vector<std::string> ordered = {
      "",      " а",   "_",    "10",    "9",   "A",  "coop", "co-op", "cooper", "z",    "Абв",
      "Белка", "Ежик", "Ёжик", "Ежики", "Жук", "Ия", "Йод",  "Кот",   "Яма",    "Яма-2"};
  // Double letters lie between what their letters do.
  for (const auto& [a, b] : {std::pair("Strasse", "Straßf"), std::pair("Straße", "Strasst")}) {
    EXPECT_LT(jet::CompareTexts(a, b), 0) << a;
    EXPECT_LT(jet::SortKey(a), jet::SortKey(b)) << a;
  }
  EXPECT_EQ(jet::CompareTexts("STRASSE", "Straße"), 0);
  for (std::size_t i = 0; i + 1 < ordered.size(); ++i) {
    EXPECT_LT(jet::CompareTexts(ordered[i], ordered[i + 1]), 0)
        << ordered[i] << " | " << ordered[i + 1];
    EXPECT_LT(jet::SortKey(ordered[i]), jet::SortKey(ordered[i + 1])) << ordered[i];
  }
}

TEST(SortKey, AgreesWithTheComparisonForEveryPairOfCharacters) {
  std::vector<std::string> texts;
  for (int byte = 1; byte < 256; ++byte) {
    const char c = static_cast<char>(byte);
    texts.push_back("к" + tmw::CodePageToUtf8(tmw::CodePage::k1251, {&c, 1}) + "т");
  }
  for (char32_t c = 0x80; c < 0x180; c += 3)
    texts.push_back("к" + tmw::Utf16ToUtf8(std::u16string(1, static_cast<char16_t>(c))) + "т");
  texts.insert(texts.end(), {"к漢т", "кét", "к😀т", "кот "});
  EXPECT_TRUE(jet::HasKnownOrder("Müller № 1"));
  EXPECT_FALSE(jet::HasKnownOrder("αβγ"));
  for (const std::string& a : texts) {
    for (const std::string& b : texts) {
      const int by_key = jet::SortKey(a).compare(jet::SortKey(b));
      const int direct = jet::CompareTexts(a, b);
      ASSERT_EQ(by_key < 0, direct < 0) << a << " | " << b;
      ASSERT_EQ(by_key == 0, direct == 0) << a << " | " << b;
    }
  }
}

}  // namespace
