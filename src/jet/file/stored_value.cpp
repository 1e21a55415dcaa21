#include "jet/file/stored_value.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "jet/errors.h"
#include "jet/file/bytes.h"
#include "jet/file/damage.h"
#include "jet/file/decimal_bytes.h"
#include "jet/file/packed_text.h"
#include "jet/file/texts.h"
#include "jet/values/value_text.h"

namespace jet::file {
namespace {

using ports::DatabaseValue;

// The first three parts of a GUID are stored as little-endian numbers; its text has them the other
// way round. The exchange is its own reverse.
std::string SwapGuid(std::string_view bytes) {
  std::string result(bytes);
  std::reverse(result.begin(), result.begin() + 4);
  std::reverse(result.begin() + 4, result.begin() + 6);
  std::reverse(result.begin() + 6, result.begin() + 8);
  return result;
}

template <typename T>
std::string Little(T value) {
  std::string bytes;
  AppendLittle(bytes, value);
  return bytes;
}

template <typename T, typename V>
std::string LittleOf(const DatabaseValue& value) {
  const V* const held = std::get_if<V>(&value);
  if (held == nullptr) Fail(kConversion);
  return Little<T>(static_cast<T>(*held));
}

template <typename T>
const T& Held(const DatabaseValue& value) {
  const T* const held = std::get_if<T>(&value);
  if (held == nullptr) Fail(kConversion);
  return *held;
}

std::string StoredGuid(const DatabaseValue& value) {
  const auto bytes = ParseGuidText(Held<std::string>(value));
  if (!bytes) Fail(kConversion);
  return SwapGuid(*bytes);
}

std::string StoredDecimal(const ColumnLayout& column, const DatabaseValue& value) {
  auto bytes = DecimalBytes(Held<ports::DecimalValue>(value).text, column.Scale());
  if (!bytes) Fail(kConversion);
  return std::move(*bytes);
}

// Fixed columns are filled up, texts with blanks.
std::string Padded(const ColumnLayout& column, std::string stored) {
  if (!column.IsFixed() || stored.size() >= column.size) return stored;
  if (column.type == ColumnType::kText) {
    while (stored.size() < column.size)
      AppendLittle(stored, std::uint16_t{' '});
  } else {
    stored.resize(column.size, '\0');
  }
  return stored;
}

}  // namespace

DatabaseValue ToValue(const ColumnLayout& column, std::optional<std::string_view> stored) {
  if (!stored) return ports::NullValue{};
  const std::size_t width = ValueWidth(column.type);
  if (width != 0 && stored->size() != width) throw Damage(0, texts::kBadRecord);
  const char* const bytes = stored->data();
  switch (column.type) {
    case ColumnType::kBoolean:
      return !stored->empty() && bytes[0] != 0;
    case ColumnType::kByte:
      return LoadLittle<std::uint8_t>(bytes);
    case ColumnType::kInteger:
      return LoadLittle<std::int16_t>(bytes);
    case ColumnType::kLong:
      return LoadLittle<std::int32_t>(bytes);
    case ColumnType::kCurrency:
      return ports::CurrencyValue{LoadLittle<std::int64_t>(bytes)};
    case ColumnType::kSingle:
      return LoadLittle<float>(bytes);
    case ColumnType::kDouble:
      return LoadLittle<double>(bytes);
    case ColumnType::kDate:
      return ports::DateValue{LoadLittle<double>(bytes)};
    case ColumnType::kText:
    case ColumnType::kMemo:
      return UnpackText(*stored);
    case ColumnType::kGuid:
      return GuidText(SwapGuid(*stored));
    case ColumnType::kNumeric:
      return ports::DecimalValue{DecimalText(*stored, column.Scale())};
    case ColumnType::kBinary:
    case ColumnType::kOle:
    case ColumnType::kWideBinary:
      break;
  }
  return ports::BinaryValue{std::string(*stored)};
}

std::optional<std::string> ToStored(const ColumnLayout& column, const DatabaseValue& value) {
  if (std::holds_alternative<ports::NullValue>(value) ||
      std::holds_alternative<ports::EmptyValue>(value)) {
    if (column.type == ColumnType::kBoolean) return std::string(1, '\0');
    return std::nullopt;
  }
  const bool may_compress =
      (column.extra_flags & definition::column::kCompressed) != 0 && !column.IsFixed();
  switch (column.type) {
    case ColumnType::kBoolean:
      return std::string(1, Held<bool>(value) ? '\1' : '\0');
    case ColumnType::kByte:
      return LittleOf<std::uint8_t, std::uint8_t>(value);
    case ColumnType::kInteger:
      return LittleOf<std::int16_t, std::int16_t>(value);
    case ColumnType::kLong:
      return LittleOf<std::int32_t, std::int32_t>(value);
    case ColumnType::kCurrency:
      return Little(Held<ports::CurrencyValue>(value).ten_thousandths);
    case ColumnType::kSingle:
      return LittleOf<float, float>(value);
    case ColumnType::kDouble:
      return LittleOf<double, double>(value);
    case ColumnType::kDate:
      return Little(Held<ports::DateValue>(value).days);
    case ColumnType::kText:
    case ColumnType::kMemo:
      return Padded(column, PackText(Held<std::string>(value), may_compress));
    case ColumnType::kGuid:
      return StoredGuid(value);
    case ColumnType::kNumeric:
      return StoredDecimal(column, value);
    case ColumnType::kBinary:
    case ColumnType::kOle:
    case ColumnType::kWideBinary:
      break;
  }
  return Padded(column, Held<ports::BinaryValue>(value).bytes);
}

}  // namespace jet::file
