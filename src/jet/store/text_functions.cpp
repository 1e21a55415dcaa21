#include "jet/store/text_functions.h"

#include <algorithm>
#include <string>

#include "foundation/encodings.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/values/sort_key.h"
#include "jet/values/text_case.h"

// Positions and lengths count UTF-16 units.
namespace jet {
namespace {

// The longest result of a function whose arguments are short.
constexpr std::size_t kMostUnits = std::size_t{1} << 24U;
constexpr std::int32_t kBinaryComparison = 0;
constexpr std::int32_t kTextComparison = 1;  // as 2, the database's own order, does

std::u16string Units(const FunctionCall& call, int index) {
  return tmw::Utf8ToUtf16(call.Text(index));
}

void PutUnits(FunctionCall& call, std::u16string_view units) {
  call.PutText(tmw::Utf16ToUtf8(units));
}

std::size_t CountAt(const FunctionCall& call, int index) {
  const std::int32_t count = call.Whole(index);
  if (count < 0) Fail(kInvalidCall);
  return static_cast<std::size_t>(count);
}

std::size_t LengthAt(const FunctionCall& call, int index) {
  const std::size_t length = CountAt(call, index);
  if (length > kMostUnits) Fail(kTextTooLong);
  return length;
}

// The texts at the index and after it, in the form in which they are compared.
struct Pair {
  std::u16string text;
  std::u16string sought;
};

Pair ComparedPair(const FunctionCall& call, int index, std::int32_t comparison) {
  if (comparison < 0 || comparison > 2) Fail(kInvalidCall);
  if (comparison == kBinaryComparison) return {Units(call, index), Units(call, index + 1)};
  return {tmw::Utf8ToUtf16(tmw::LowerCase(call.Text(index))),
          tmw::Utf8ToUtf16(tmw::LowerCase(call.Text(index + 1)))};
}

void Left(FunctionCall& call) {
  const std::size_t count = CountAt(call, 1);
  PutUnits(call, std::u16string_view(Units(call, 0)).substr(0, count));
}

void Right(FunctionCall& call) {
  const std::size_t count = CountAt(call, 1);
  const std::u16string units = Units(call, 0);
  PutUnits(call, std::u16string_view(units).substr(units.size() - std::min(units.size(), count)));
}

void Mid(FunctionCall& call) {
  const std::size_t start = CountAt(call, 1);
  if (start == 0) Fail(kInvalidCall);
  const std::size_t count = call.Count() > 2 ? CountAt(call, 2) : std::u16string::npos;
  const std::u16string units = Units(call, 0);
  PutUnits(call, start > units.size() ? std::u16string_view()
                                      : std::u16string_view(units).substr(start - 1, count));
}

void Length(FunctionCall& call) {
  call.PutInteger(static_cast<std::int64_t>(Units(call, 0).size()));
}

// Positions count from 1; 0 means not found.
void PutPosition(FunctionCall& call, std::size_t found) {
  call.PutInteger(found == std::u16string::npos ? 0 : static_cast<std::int64_t>(found) + 1);
}

// The text is at the index, the text to find after it.
void Find(FunctionCall& call, int index, std::size_t start, std::int32_t comparison) {
  if (start == 0) Fail(kInvalidCall);
  const Pair pair = ComparedPair(call, index, comparison);
  if (pair.text.empty() || start > pair.text.size()) {
    call.PutInteger(0);
    return;
  }
  PutPosition(call, pair.text.find(pair.sought, start - 1));
}

void InText(FunctionCall& call) {
  if (call.Count() == 2) {
    Find(call, 0, 1, kTextComparison);
  } else {
    Find(call, 1, CountAt(call, 0), call.WholeOr(3, kTextComparison));
  }
}

void InTextReversed(FunctionCall& call) {
  const std::int32_t start = call.WholeOr(2, -1);
  if (start == 0 || start < -1) Fail(kInvalidCall);
  const Pair pair = ComparedPair(call, 0, call.WholeOr(3, kTextComparison));
  const std::size_t end = start < 0 ? pair.text.size() : static_cast<std::size_t>(start);
  if (end > pair.text.size() || pair.text.empty() || pair.sought.size() > end) {
    call.PutInteger(0);
    return;
  }
  PutPosition(
      call, pair.sought.empty() ? end - 1 : pair.text.rfind(pair.sought, end - pair.sought.size()));
}

void Trim(FunctionCall& call) {
  call.PutText(tmw::Trim(call.Text(0)));
}

void TrimLeft(FunctionCall& call) {
  const std::string_view text = call.Text(0);
  call.PutText(text.substr(std::min(text.find_first_not_of(' '), text.size())));
}

void TrimRight(FunctionCall& call) {
  const std::string_view text = call.Text(0);
  call.PutText(text.substr(0, text.find_last_not_of(' ') + 1));
}

void Upper(FunctionCall& call) {
  call.PutText(UpperCase(call.Text(0)));
}

void Lower(FunctionCall& call) {
  call.PutText(tmw::LowerCase(call.Text(0)));
}

// The first letter of each word in upper case, the others in lower case.
std::string ProperCase(std::string_view text) {
  std::u16string units = tmw::Utf8ToUtf16(tmw::LowerCase(text));
  const std::u16string upper = tmw::Utf8ToUtf16(UpperCase(text));
  constexpr std::u16string_view kBreaks = u" \t\r\n\f\v";
  for (std::size_t i = 0; i < units.size() && units.size() == upper.size(); ++i) {
    if (i == 0 || kBreaks.find(units[i - 1]) != std::u16string_view::npos) units[i] = upper[i];
  }
  return tmw::Utf16ToUtf8(units);
}

// Only the conversions of letter case: 1 upper, 2 lower, 3 words begin with a capital.
void StrConv(FunctionCall& call) {
  switch (call.Whole(1)) {
    case 1:
      call.PutText(UpperCase(call.Text(0)));
      break;
    case 2:
      call.PutText(tmw::LowerCase(call.Text(0)));
      break;
    case 3:
      call.PutText(ProperCase(call.Text(0)));
      break;
    default:
      Fail(kInvalidCall);
  }
}

void Space(FunctionCall& call) {
  call.PutText(std::string(LengthAt(call, 0), ' '));
}

char16_t CharacterOf(std::int32_t code) {
  const std::string byte(1, static_cast<char>(static_cast<unsigned>(code) & 0xFFU));
  return tmw::Utf8ToUtf16(tmw::CodePageToUtf8(tmw::CodePage::k1251, byte)).front();
}

void Repeated(FunctionCall& call) {
  const std::size_t count = LengthAt(call, 0);
  char16_t unit = 0;
  if (call.IsText(1)) {
    const std::u16string units = Units(call, 1);
    if (units.empty()) Fail(kInvalidCall);
    unit = units.front();
  } else {
    unit = CharacterOf(call.Whole(1));
  }
  PutUnits(call, std::u16string(count, unit));
}

// The result begins at the start position.
void Replace(FunctionCall& call) {
  const std::int32_t start = call.WholeOr(3, 1);
  std::int32_t left = call.WholeOr(4, -1);
  if (start < 1 || left < -1) Fail(kInvalidCall);
  const Pair pair = ComparedPair(call, 0, call.WholeOr(5, kTextComparison));
  const std::u16string text = Units(call, 0);
  const std::u16string replacement = Units(call, 2);
  std::u16string result;
  std::size_t at = std::min(text.size(), static_cast<std::size_t>(start) - 1);
  while (left != 0 && !pair.sought.empty()) {
    const std::size_t found = pair.text.find(pair.sought, at);
    if (found == std::u16string::npos) break;
    result.append(text, at, found - at).append(replacement);
    if (result.size() > kMostUnits) Fail(kTextTooLong);
    at = found + pair.sought.size();
    if (left > 0) --left;
  }
  PutUnits(call, result.append(text, at));
}

void CompareBoth(FunctionCall& call) {
  const std::int32_t comparison = call.WholeOr(2, kTextComparison);
  if (comparison < 0 || comparison > 2) Fail(kInvalidCall);
  const int order = comparison == kBinaryComparison ? Units(call, 0).compare(Units(call, 1))
                                                    : CompareTexts(call.Text(0), call.Text(1));
  call.PutInteger(order < 0 ? -1 : order > 0 ? 1 : 0);
}

void Reverse(FunctionCall& call) {
  std::u16string units = Units(call, 0);
  std::reverse(units.begin(), units.end());
  PutUnits(call, units);
}

std::u16string FirstCharacter(const FunctionCall& call) {
  const std::u16string units = Units(call, 0);
  if (units.empty()) Fail(kInvalidCall);
  return units.substr(0, 1);
}

void CharacterCode(FunctionCall& call) {
  const std::string byte =
      tmw::Utf8ToCodePage(tmw::CodePage::k1251, tmw::Utf16ToUtf8(FirstCharacter(call)));
  call.PutInteger(static_cast<unsigned char>(byte.front()));
}

void UnitCode(FunctionCall& call) {
  call.PutInteger(static_cast<std::int16_t>(FirstCharacter(call).front()));
}

std::int32_t CodeAt(const FunctionCall& call, std::int32_t least, std::int32_t most) {
  if (call.IsNull(0)) Fail(kInvalidUseOfNull);
  const std::int32_t code = call.Whole(0);
  if (code < least || code > most) Fail(kInvalidCall);
  return code;
}

void Character(FunctionCall& call) {
  PutUnits(call, std::u16string(1, CharacterOf(CodeAt(call, 0, 255))));
}

void UnitCharacter(FunctionCall& call) {
  PutUnits(call, std::u16string(1, static_cast<char16_t>(CodeAt(call, -32768, 65535))));
}

constexpr FunctionEntry kFunctions[] = {
    {fn::kAsc, Strict<CharacterCode>},
    {fn::kAscW, Strict<UnitCode>},
    {fn::kChr, Guarded<Character>},
    {fn::kChrW, Guarded<UnitCharacter>},
    {fn::kCompareTexts, Strict<CompareBoth>},
    {fn::kInText, Strict<InText>},
    {fn::kInTextReversed, Strict<InTextReversed>},
    {fn::kLeft, Strict<Left>},
    {fn::kLength, Strict<Length>},
    {fn::kLower, Strict<Lower>},
    {fn::kMid, Strict<Mid>},
    {fn::kReplace, Strict<Replace>},
    {fn::kReverse, Strict<Reverse>},
    {fn::kRight, Strict<Right>},
    {fn::kSpace, Strict<Space>},
    {fn::kStrConv, Strict<StrConv>},
    {fn::kString, Strict<Repeated>},
    {fn::kTrim, Strict<Trim>},
    {fn::kTrimLeft, Strict<TrimLeft>},
    {fn::kTrimRight, Strict<TrimRight>},
    {fn::kUpper, Strict<Upper>},
};

}  // namespace

std::span<const FunctionEntry> TextFunctions() {
  return kFunctions;
}

}  // namespace jet
