#include "database/default_text.h"

#include <array>
#include <cstdio>

#include "database/db_string.h"
#include "foundation/date_parts.h"

namespace tmw {
namespace {

std::string DateLiteral(double days) {
  const DateParts parts = PartsOfDate(days);
  std::array<char, 48> buffer{};
  static_cast<void>(std::snprintf(buffer.data(), buffer.size(), "#%02d/%02d/%04d %02d:%02d:%02d#",
                                  parts.month, parts.day, parts.year, parts.hour, parts.minute,
                                  parts.second));
  std::string text = buffer.data();
  if (parts.hour == 0 && parts.minute == 0 && parts.second == 0) text.replace(11, 10, "#");
  return text;
}

struct LiteralOf {
  std::string operator()(ports::EmptyValue) const { return {}; }
  std::string operator()(bool value) const { return value ? "True" : "False"; }
  std::string operator()(ports::DateValue value) const { return DateLiteral(value.days); }
  std::string operator()(const std::string& value) const { return value; }
  // Numbers look alike in both languages.
  template <typename Other>
  std::string operator()(const Other& value) const {
    return VariantToDBString(value);
  }
};

}  // namespace

std::string DefaultText(const ports::DatabaseValue& value) {
  return std::visit(LiteralOf{}, value);
}

}  // namespace tmw
