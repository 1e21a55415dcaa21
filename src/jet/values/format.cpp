#include "jet/values/format.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <vector>

#include "foundation/date_parts.h"
#include "foundation/encodings.h"
#include "foundation/number_text.h"
#include "foundation/text.h"
#include "jet/errors.h"
#include "jet/values/coercion.h"
#include "jet/values/format_moment.h"
#include "jet/values/format_number.h"
#include "jet/values/text_case.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

using ports::DatabaseValue;
using ports::DataType;

struct NamedPattern {
  std::string_view name;
  std::string_view pattern;
};

constexpr std::array<NamedPattern, 14> kNamed = {{
    {"currency", "#,##0.00\"р.\""},
    {"fixed", "0.00"},
    {"standard", "#,##0.00"},
    {"percent", "0.00%"},
    {"scientific", "0.00E+00"},
    {"yes/no", "\"Да\";\"Да\";\"Нет\""},
    {"true/false", "\"Истина\";\"Истина\";\"Ложь\""},
    {"on/off", "\"Вкл\";\"Вкл\";\"Выкл\""},
    {"long date", "dddddd"},
    {"medium date", "dd-mmm-yy"},
    {"short date", "ddddd"},
    {"long time", "ttttt"},
    {"medium time", "hh:nn"},
    {"short time", "hh:nn"},
}};

// Calls action(position) for each byte of the pattern that is neither quoted nor escaped.
template <typename Action>
void ForEachBare(std::string_view pattern, Action action) {
  bool is_quoted = false;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '\\') {
      ++i;
    } else if (pattern[i] == '"') {
      is_quoted = !is_quoted;
    } else if (!is_quoted) {
      action(i);
    }
  }
}

// Splits at each ";" that is neither quoted nor escaped.
std::vector<std::string_view> Sections(std::string_view pattern) {
  std::vector<std::string_view> sections;
  std::size_t begin = 0;
  ForEachBare(pattern, [&](std::size_t i) {
    if (pattern[i] != ';') return;
    sections.push_back(pattern.substr(begin, i - begin));
    begin = i + 1;
  });
  sections.push_back(pattern.substr(begin));
  return sections;
}

// The pattern in lower case without its quoted and escaped parts.
std::string BareMarks(std::string_view pattern) {
  std::string marks;
  ForEachBare(pattern, [&](std::size_t i) { marks += pattern[i]; });
  return tmw::LowerCase(marks);
}

enum class PatternKind { kNumber, kMoment, kText };

PatternKind KindOf(std::string_view pattern) {
  const std::string marks = BareMarks(pattern);
  if (marks.find_first_of("@&<>!") != std::string::npos) return PatternKind::kText;
  if (marks.find_first_of("0#%") != std::string::npos) return PatternKind::kNumber;
  return marks.find_first_of("dmyhnswqct/:") != std::string::npos ? PatternKind::kMoment
                                                                  : PatternKind::kNumber;
}

std::optional<double> AsNumber(const DatabaseValue& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return ParseNumberText(*text);
  if (std::holds_alternative<ports::BinaryValue>(value)) Fail(kTypeMismatch);
  const DatabaseValue number = ConvertTo(value, DataType::kDouble, 0, kTypeMismatch);
  return std::get<double>(number);
}

// The number without its sign as "12345.678", with as many digits as its type is exact to.
std::string Digits(const DatabaseValue& value, double number) {
  std::array<char, 400> buffer{};
  const int exact = std::holds_alternative<float>(value) ? 7 : 15;
  auto* const end = buffer.data() + buffer.size();
  auto result = std::to_chars(buffer.data(), end, std::fabs(number), std::chars_format::scientific,
                              exact - 1);
  double rounded = 0;
  std::from_chars(buffer.data(), result.ptr, rounded);
  result = std::to_chars(buffer.data(), end, rounded, std::chars_format::fixed);
  return {buffer.data(), result.ptr};
}

std::string FormatNumber(const DatabaseValue& value, double number, std::string_view pattern) {
  const std::vector<std::string_view> sections = Sections(pattern);
  const std::string digits = Digits(value, number);
  if (number < 0 && sections.size() > 1 && !sections[1].empty())
    return FormatDigits(digits, sections[1]);
  if (number == 0 && sections.size() > 2 && !sections[2].empty())
    return FormatDigits(digits, sections[2]);
  const std::string text = FormatDigits(digits, sections[0]);
  const bool is_zero = text.find_first_of("123456789") == std::string::npos;
  return number < 0 && !is_zero ? "-" + text : text;
}

// Characters fill the placeholders from the right, or from the left after "!"; surplus characters
// go to the first placeholder.
std::string FormatText(std::string_view value, std::string_view pattern) {
  const std::vector<std::string_view> sections = Sections(pattern);
  const std::string_view section = value.empty() && sections.size() > 1 ? sections[1] : sections[0];
  const std::string marks = BareMarks(section);
  std::string cased(value);
  if (marks.find('<') != std::string::npos) cased = tmw::LowerCase(value);
  if (marks.find('>') != std::string::npos) cased = UpperCase(value);
  const std::u16string units = tmw::Utf8ToUtf16(cased);
  const auto places = static_cast<std::size_t>(std::count(marks.begin(), marks.end(), '@') +
                                               std::count(marks.begin(), marks.end(), '&'));
  if (places == 0) return cased;
  const bool from_left = marks.find('!') != std::string::npos;
  const std::size_t missing = places - std::min(places, units.size());
  std::u16string result;
  std::size_t place = 0;
  std::size_t next = 0;
  for (std::size_t i = 0; i < section.size(); ++i) {
    const char c = section[i];
    if (c == '@' || c == '&') {
      const bool is_empty = from_left ? next >= units.size() : place < missing;
      if (is_empty) {
        if (c == '@') result += u' ';
      } else {
        const std::size_t taken =
            place == 0 && units.size() > places ? units.size() - places + 1 : 1;
        result += units.substr(next, taken);
        next += taken;
      }
      ++place;
    } else if (c == '"' || c == '\\') {
      const std::size_t end = c == '"' ? std::min(section.find('"', i + 1), section.size())
                                       : std::min(i + 2, section.size());
      result += tmw::Utf8ToUtf16(section.substr(i + 1, end - i - 1));
      i = c == '"' ? end : end - 1;
    } else if (c != '<' && c != '>' && c != '!') {
      std::size_t end = i + 1;
      while (end < section.size() && tmw::ContinuesCharacter(section[end]))
        ++end;
      result += tmw::Utf8ToUtf16(section.substr(i, end - i));
      i = end - 1;
    }
  }
  return tmw::Utf16ToUtf8(result);
}

std::string OwnText(const DatabaseValue& value) {
  const std::optional<std::string> text = ValueText(value);
  if (!text && std::holds_alternative<ports::BinaryValue>(value)) Fail(kTypeMismatch);
  return text.value_or("");
}

std::string ByPattern(const DatabaseValue& value, std::string_view pattern, WeekRules rules) {
  const PatternKind kind = KindOf(pattern);
  const auto* const text = std::get_if<std::string>(&value);
  if (kind == PatternKind::kText) return FormatText(OwnText(value), pattern);
  if (std::holds_alternative<ports::NullValue>(value)) {
    const std::vector<std::string_view> sections = Sections(pattern);
    return sections.size() > 3 ? FormatDigits("0", sections[3]) : std::string();
  }
  std::optional<double> number;
  if (kind == PatternKind::kMoment && text != nullptr) number = ParseDateText(*text);
  if (!number) number = AsNumber(value);
  if (!number) return *text;
  if (kind == PatternKind::kNumber) return FormatNumber(value, *number, pattern);
  if (!tmw::IsDateInRange(*number)) Fail(kOverflow);
  return FormatMoment(*number, pattern, rules);
}

}  // namespace

std::string FormatValue(const DatabaseValue& value, std::string_view pattern, WeekRules rules) {
  const std::string lower = tmw::LowerCase(pattern);
  if (pattern.empty() || lower == "general number" || lower == "general date") {
    const auto* const text = std::get_if<std::string>(&value);
    const bool is_moment = lower == "general date" && text == nullptr &&
                           !std::holds_alternative<ports::NullValue>(value);
    return is_moment ? ByPattern(value, "c", rules) : OwnText(value);
  }
  for (const NamedPattern& named : kNamed) {
    if (named.name == lower) return ByPattern(value, named.pattern, rules);
  }
  return ByPattern(value, pattern, rules);
}

}  // namespace jet
