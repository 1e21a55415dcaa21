#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace jetsql {

// A text in both languages; %1 stands for the first value that Say puts in.
struct Text {
  const char* russian;
  const char* english;
};

// Words for a number of things: "1 строка, 2 строки, 5 строк", "1 row, 2 rows".
struct CountedText {
  Text one;
  Text few;
  Text many;
};

// In the language of the user's locale: Russian, else English.
std::string Say(const Text& text, const std::vector<std::string>& values = {});
std::string Count(const CountedText& text, std::uint64_t number);

// Whether a locale of that name ("ru_RU.UTF-8", "Russian_Russia.1251") is Russian.
bool IsRussianLocale(std::string_view name);

}  // namespace jetsql
