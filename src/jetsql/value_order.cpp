#include "jetsql/value_order.h"

#include <string>
#include <type_traits>
#include <variant>

#include "jet/values/decimal.h"
#include "jet/values/sort_key.h"

namespace jetsql {
namespace {

template <typename T>
int Order(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

struct SameKind {
  const ports::DatabaseValue& other;

  template <typename T>
  int operator()(const T& a) const {
    const T& b = std::get<T>(other);
    if constexpr (std::is_same_v<T, std::string>) {
      const int order = jet::CompareTexts(a, b);
      return order;
    } else if constexpr (std::is_same_v<T, bool>) {
      return Order(b, a);  // True sorts first
    } else if constexpr (std::is_arithmetic_v<T>) {
      return Order(a, b);
    } else if constexpr (std::is_same_v<T, ports::CurrencyValue>) {
      return Order(a.ten_thousandths, b.ten_thousandths);
    } else if constexpr (std::is_same_v<T, ports::DateValue>) {
      return Order(a.days, b.days);
    } else if constexpr (std::is_same_v<T, ports::DecimalValue>) {
      return jet::CompareDecimals(a.text, b.text);
    } else if constexpr (std::is_same_v<T, ports::BinaryValue>) {
      return Order(a.bytes, b.bytes);
    } else {
      return 0;
    }
  }
};

}  // namespace

int CompareValues(const ports::DatabaseValue& a, const ports::DatabaseValue& b) {
  if (a.index() != b.index()) return Order(a.index(), b.index());
  return std::visit(SameKind{b}, a);
}

}  // namespace jetsql
