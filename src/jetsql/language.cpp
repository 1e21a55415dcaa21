#include "jetsql/language.h"

#include <clocale>
#include <cstdlib>

#include "foundation/encodings.h"
#include "tools/fill.h"

namespace jetsql {
namespace {

// As programs of the system choose it; where no variable says anything, the system's own setting.
std::string LocaleName() {
  for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return value;
  }
  const char* const system = std::setlocale(LC_ALL, "");
  const std::string name = system == nullptr ? "" : system;
  // Numbers are read and written in the plain way.
  std::setlocale(LC_ALL, "C");
  return name;
}

const char* Chosen(const Text& text) {
  static const bool kIsRussian = IsRussianLocale(LocaleName());
  return kIsRussian ? text.russian : text.english;
}

}  // namespace

bool IsRussianLocale(std::string_view name) {
  const std::string lower = tmw::LowerCase(name.substr(0, 7));
  return lower == "russian" || lower == "ru" || lower.starts_with("ru_") ||
         lower.starts_with("ru-") || lower.starts_with("ru.");
}

std::string Say(const Text& text, const std::vector<std::string>& values) {
  return tools::Fill(Chosen(text), values);
}

std::string Count(const CountedText& text, std::uint64_t number) {
  constexpr std::uint64_t kTen = 10;
  const std::uint64_t last = number % kTen;
  const bool is_teen = number / kTen % kTen == 1;
  // English has one plural: its "few" and "many" are the same, and its "one" is 1 alone.
  const bool is_one = last == 1 && !is_teen;
  const bool is_few = last >= 2 && last <= 4 && !is_teen;
  Text chosen = is_one ? text.one : is_few ? text.few : text.many;
  if (number != 1) chosen.english = text.many.english;
  return Say(chosen, {std::to_string(number)});
}

}  // namespace jetsql
