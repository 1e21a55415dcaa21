#include "jet/values/like.h"

#include <cstddef>
#include <string>

#include "foundation/encodings.h"
#include "jet/errors.h"
#include "jet/values/sort_key.h"

namespace jet {
namespace {

std::u16string Folded(std::string_view text) {
  return tmw::Utf8ToUtf16(tmw::LowerCase(text));
}

// Ranges follow the sort order, in which ё is between е and ж.
bool IsWithin(char16_t c, char16_t low, char16_t high) {
  const std::string text = tmw::Utf16ToUtf8({&c, 1});
  return CompareTexts(tmw::Utf16ToUtf8({&low, 1}), text) <= 0 &&
         CompareTexts(text, tmw::Utf16ToUtf8({&high, 1})) <= 0;
}

// Matches the "[...]" at the position, which moves past the closing bracket.
bool MatchesSet(char16_t c, std::u16string_view pattern, std::size_t& position) {
  const std::size_t end = pattern.find(u']', position + 1);
  if (end == std::u16string_view::npos)
    Fail(kSyntaxInExpression, "скобка не закрыта", tmw::Utf16ToUtf8(pattern));
  std::u16string_view set = pattern.substr(position + 1, end - position - 1);
  position = end + 1;
  const bool is_negated = set.size() > 1 && set.front() == u'!';
  if (is_negated) set.remove_prefix(1);
  bool is_in = false;
  for (std::size_t i = 0; i < set.size(); ++i) {
    if (i + 2 < set.size() && set[i + 1] == u'-') {
      is_in = is_in || IsWithin(c, set[i], set[i + 2]);
      i += 2;
    } else {
      is_in = is_in || c == set[i];
    }
  }
  return is_in != is_negated;
}

// The wildcards for any text, one character and one digit.
struct Marks {
  char16_t any;
  char16_t one;
  char16_t digit;
};

// Matches the element of the pattern at the position, which moves past the element.
bool MatchesOne(char16_t c, std::u16string_view pattern, std::size_t& position, Marks marks) {
  const char16_t element = pattern[position];
  if (element == u'[') return MatchesSet(c, pattern, position);
  ++position;
  if (element == marks.one) return true;
  if (element == marks.digit && element != u'\0') return c >= u'0' && c <= u'9';
  return element == c;
}

}  // namespace

bool MatchesLike(std::string_view text, std::string_view pattern, Wildcards wildcards) {
  // There is no ANSI wildcard for a digit.
  const Marks marks =
      wildcards == Wildcards::kJet ? Marks{u'*', u'?', u'#'} : Marks{u'%', u'_', u'\0'};
  const std::u16string subject = Folded(text);
  const std::u16string wanted = Folded(pattern);
  constexpr std::size_t kNone = std::u16string::npos;
  std::size_t at = 0;
  std::size_t element = 0;
  std::size_t star = kNone;  // the last "*", and the position in the text when it was reached
  std::size_t star_at = 0;
  while (at < subject.size()) {
    if (element < wanted.size() && wanted[element] == marks.any) {
      star = element++;
      star_at = at;
      continue;
    }
    std::size_t next = element;
    if (element < wanted.size() && MatchesOne(subject[at], wanted, next, marks)) {
      ++at;
      element = next;
      continue;
    }
    if (star == kNone) return false;
    element = star + 1;
    at = ++star_at;
  }
  while (element < wanted.size() && wanted[element] == marks.any)
    ++element;
  return element == wanted.size();
}

}  // namespace jet
