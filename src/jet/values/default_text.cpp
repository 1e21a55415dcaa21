#include "jet/values/default_text.h"

#include "foundation/number_text.h"
#include "jet/values/date_literal.h"
#include "jet/values/value_text.h"

namespace jet {
namespace {

struct LiteralOf {
  std::string operator()(bool value) const { return value ? "True" : "False"; }
  std::string operator()(float value) const { return tmw::SingleToText(value); }
  std::string operator()(double value) const { return tmw::DoubleToText(value); }
  std::string operator()(ports::CurrencyValue value) const {
    return tmw::CurrencyToText(value.ten_thousandths);
  }
  std::string operator()(ports::DateValue value) const { return DateLiteral(value.days); }
  std::string operator()(const std::string& value) const { return value; }
  template <typename Other>
  std::string operator()(const Other& value) const {
    return ValueText(value).value_or("");
  }
};

}  // namespace

std::string DefaultText(const ports::DatabaseValue& value) {
  return std::visit(LiteralOf{}, value);
}

}  // namespace jet
