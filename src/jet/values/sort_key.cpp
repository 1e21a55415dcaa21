#include "jet/values/sort_key.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "foundation/encodings.h"
#include "jet/values/latin_weights.h"
#include "jet/values/sort_weights.h"

namespace jet {
namespace {

using sort_weights::Weight;

constexpr std::size_t kKeyLength = 255;
constexpr char kEndOfLevel = 1;
constexpr char kNoAccent = 2;
constexpr std::uint8_t kForeignLead = 0xFE;

// The weights by code point, for the two ranges of Unicode that have any.
class WeightTable {
 public:
  WeightTable() {
    for (unsigned byte = 0; byte < 256; ++byte) {
      const char character = static_cast<char>(byte);
      const std::u16string unit =
          tmw::Utf8ToUtf16(tmw::CodePageToUtf8(tmw::CodePage::k1251, {&character, 1}));
      const std::size_t place = PlaceOf(unit[0]);
      if (place < weights_.size()) weights_[place] = sort_weights::kWeights[byte];
    }
    AddLatinLetters();
    AddSigns();
  }

  // Null for a character outside of both ranges.
  const Weight* Find(char32_t c) const {
    const std::size_t place = PlaceOf(c);
    return place < weights_.size() ? &weights_[place] : nullptr;
  }

 private:
  static constexpr char32_t kLetters = 0x500;
  static constexpr char32_t kSigns = 0x2000;
  static constexpr char32_t kSignCount = 0x200;

  // Code page 1251 comes first: the small letter of "İ" is "i".
  void Add(char32_t c, const Weight& weight) {
    for (const char32_t form : {c, tmw::LowerCaseCodePoint(c)}) {
      if (weights_[form] == Weight{}) weights_[form] = weight;
    }
  }

  void AddLatinLetters() {
    for (const sort_weights::AccentedLetters& letters : sort_weights::kAccentedLetters) {
      for (std::size_t i = 0; i < letters.pairs.size(); i += 2)
        Add(letters.pairs[i], {weights_[letters.pairs[i + 1]].primary, letters.accent, 0});
    }
    constexpr std::u16string_view kDouble = sort_weights::kDoubleLetters;
    for (std::size_t i = 0; i < kDouble.size(); i += 3) {
      const unsigned first = weights_[kDouble[i + 1]].primary;
      const unsigned second = weights_[kDouble[i + 2]].primary;
      Add(kDouble[i], {static_cast<std::uint16_t>(first | (second >> 8U)), 0, 0});
    }
  }

  void AddSigns() {
    for (const sort_weights::SignWeight& sign : sort_weights::kSigns)
      Add(sign.sign, {sign.primary, sign.accent, 0});
    std::uint8_t code = sort_weights::kFirstControlCode;
    for (char32_t c = sort_weights::kFirstControl; c < sort_weights::kEndOfControls; ++c)
      Add(c, {0, 0, code++});
  }

  static std::size_t PlaceOf(char32_t c) {
    if (c < kLetters) return c;
    return c < kSigns ? kLetters + kSignCount : kLetters + (c - kSigns);
  }

  std::array<Weight, kLetters + kSignCount> weights_{};
};

const WeightTable& Weights() {
  static const WeightTable table;
  return table;
}

// Reads a text by characters, without its trailing blanks. Malformed UTF-8 is read by bytes.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {
    while (!text_.empty() && text_.back() == ' ')
      text_.remove_suffix(1);
  }

  bool AtEnd() const { return position_ >= text_.size(); }

  char32_t Next() {
    const auto lead = static_cast<unsigned char>(text_[position_++]);
    if (lead < 0xC0) return lead;
    const std::size_t more = lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    char32_t c = lead & (0x3FU >> more);
    for (std::size_t i = 0; i < more && position_ < text_.size(); ++i)
      c = (c << 6U) | (static_cast<unsigned char>(text_[position_++]) & 0x3FU);
    return c;
  }

 private:
  std::string_view text_;
  std::size_t position_ = 0;
};

// The same for UTF-16. Surrogates without their partner are read as U+FFFD.
class UnitReader {
 public:
  explicit UnitReader(std::u16string_view text) : text_(text) {
    while (!text_.empty() && text_.back() == u' ')
      text_.remove_suffix(1);
  }

  bool AtEnd() const { return position_ >= text_.size(); }

  char32_t Next() {
    const char32_t unit = text_[position_++];
    if (unit < 0xD800 || unit > 0xDFFF) return unit;
    const bool is_pair =
        unit < 0xDC00 && position_ < text_.size() && (text_[position_] & 0xFC00) == 0xDC00;
    if (!is_pair) return 0xFFFD;
    return 0x10000 + ((unit & 0x3FFU) << 10U) + (text_[position_++] & 0x3FFU);
  }

 private:
  std::u16string_view text_;
  std::size_t position_ = 0;
};

bool HasWeight(const Weight& weight) {
  return weight.primary != 0 || weight.ignored_code != 0;
}

// Whether both bytes are weights of Latin letters.
bool IsDoubleLetter(std::uint16_t primary) {
  constexpr unsigned kFirstLetter = 0x4A;
  constexpr unsigned kBehindLetters = 0x79;
  const unsigned first = primary >> 8U;
  return first >= kFirstLetter && first < kBehindLetters && (primary & 0xFFU) >= kFirstLetter;
}

// The primary weights of a text, one after the other.
class PrimaryReader {
 public:
  explicit PrimaryReader(std::string_view text) : reader_(text) {}

  // A number that sorts like the weight's bytes; 0 at the end of the text. Sets has_later_levels if
  // a character has weights of the later levels.
  std::uint32_t Next(bool& has_later_levels) {
    if (second_letter_ != 0) return std::exchange(second_letter_, 0);
    while (!reader_.AtEnd()) {
      const char32_t c = reader_.Next();
      const Weight* const weight = Weights().Find(c);
      if (weight == nullptr || (!HasWeight(*weight) && c != 0))
        return (std::uint32_t{kForeignLead} << 24U) | tmw::LowerCaseCodePoint(c);
      if (weight->accent != 0 || weight->ignored_code != 0) has_later_levels = true;
      if (weight->primary == 0) continue;
      if (!IsDoubleLetter(weight->primary)) return std::uint32_t{weight->primary} << 16U;
      second_letter_ = std::uint32_t{weight->primary & 0xFFU} << 24U;
      return std::uint32_t{weight->primary & 0xFF00U} << 16U;
    }
    return 0;
  }

 private:
  Reader reader_;
  std::uint32_t second_letter_ = 0;
};

void Put(std::string& bytes, std::uint32_t byte) {
  bytes.push_back(static_cast<char>(byte & 0xFFU));
}

// The three levels of a key being built.
struct KeyParts {
  std::string& primaries;
  std::string accents;
  std::string ignored;
  std::uint32_t position = 0;  // of the next character with a primary weight

  void Add(char32_t c) {
    const Weight* const weight = Weights().Find(c);
    if (weight == nullptr || (!HasWeight(*weight) && c != 0)) {
      AddForeign(tmw::LowerCaseCodePoint(c));
      return;
    }
    if (weight->ignored_code != 0) {
      const std::uint32_t place = 0x8000U | (7 + 4 * position);
      Put(ignored, place >> 8U);
      Put(ignored, place);
      Put(ignored, 6);
      Put(ignored, weight->ignored_code);
    }
    if (weight->primary == 0) return;
    const char bytes[] = {static_cast<char>(weight->primary >> 8U),
                          static_cast<char>(weight->primary & 0xFFU)};
    primaries.append(bytes, bytes[1] == 0 ? 1 : 2);
    if (weight->accent != 0) {
      accents.resize(position, kNoAccent);
      Put(accents, weight->accent);
    }
    ++position;
  }

  void AddForeign(char32_t c) {
    Put(primaries, kForeignLead);
    Put(primaries, c >> 16U);
    Put(primaries, c >> 8U);
    Put(primaries, c);
    ++position;
  }
};

// The first level goes into the key as it is read.
template <typename AnyReader>
void AppendKey(AnyReader reader, std::size_t most, std::string& key) {
  KeyParts parts{key, {}, {}};
  for (std::size_t i = 0; i < most && !reader.AtEnd(); ++i)
    parts.Add(reader.Next());
  key.push_back(kEndOfLevel);
  key += parts.accents;
  if (!parts.ignored.empty()) key.append(3, kEndOfLevel).append(parts.ignored);
  key.push_back('\0');
}

// Bytes that both texts begin with, up to a character's end and not into blanks at a text's end.
std::size_t CommonBeginning(std::string_view a, std::string_view b) {
  const std::size_t most = std::min(a.size(), b.size());
  std::size_t common = 0;
  while (common < most && a[common] == b[common])
    ++common;
  const auto is_inside = [common](std::string_view text) {
    return common < text.size() && tmw::ContinuesCharacter(text[common]);
  };
  while (common > 0 && (a[common - 1] == ' ' || is_inside(a) || is_inside(b)))
    --common;
  return common;
}

std::string MakeKey(std::string_view text, std::size_t most) {
  std::string key;
  AppendKey(Reader(text), most, key);
  return key;
}

}  // namespace

std::string SortKey(std::string_view text) {
  return MakeKey(text, kKeyLength);
}

void AppendSortKey(std::u16string_view text, std::string& key) {
  AppendKey(UnitReader(text), kKeyLength, key);
}

bool HasKnownOrder(std::string_view text) {
  Reader reader(text);
  while (!reader.AtEnd()) {
    const char32_t c = reader.Next();
    const Weight* const weight = Weights().Find(c);
    if (weight == nullptr || (!HasWeight(*weight) && c != 0)) return false;
  }
  return true;
}

int CompareTexts(std::string_view a, std::string_view b) {
  if (a == b) return 0;
  const std::size_t common = CommonBeginning(a, b);
  PrimaryReader left(a.substr(common));
  PrimaryReader right(b.substr(common));
  bool has_later_levels = common != 0;
  for (;;) {
    const std::uint32_t x = left.Next(has_later_levels);
    const std::uint32_t y = right.Next(has_later_levels);
    if (x != y) return x < y ? -1 : 1;
    if (x == 0) break;
  }
  if (!has_later_levels) return 0;
  constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  return MakeKey(a, kAll).compare(MakeKey(b, kAll));
}

}  // namespace jet
