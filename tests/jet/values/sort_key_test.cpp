#include "jet/values/sort_key.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
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
  };
  for (const auto& c : cases)
    EXPECT_EQ(Hex(jet::SortKey(c.text)), c.key) << c.text;
}

TEST(SortKey, OrdersWordsAsTheProductsListsDo) {
  const std::vector<std::string> ordered = {
      "",      " а",   "_",    "10",    "9",   "A",  "coop", "co-op", "cooper", "z",    "Абв",
      "Белка", "Ежик", "Ёжик", "Ежики", "Жук", "Ия", "Йод",  "Кот",   "Яма",    "Яма-2"};
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
  texts.insert(texts.end(), {"к漢т", "кéт", "к😀т", "кот "});
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
