#include "platform/windows/dao/dao_values.h"

#include <cstring>

namespace platform {
namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;
// Numbers as texts in this language have "." as their separator.
constexpr LCID kEnglish = 0x0409;

void PutText(const std::string& text, VARIANT& variant) {
  const std::wstring wide = ToWide(text);
  variant.bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  variant.vt = VT_BSTR;
}

void PutBytes(const std::string& bytes, VARIANT& variant) {
  SAFEARRAY* const array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  void* data = nullptr;
  if (array == nullptr || FAILED(SafeArrayAccessData(array, &data))) return;
  std::memcpy(data, bytes.data(), bytes.size());
  SafeArrayUnaccessData(array);
  variant.parray = array;
  variant.vt = kByteArray;
}

struct Putter {
  VARIANT& variant;

  void operator()(ports::EmptyValue) const { variant.vt = VT_EMPTY; }
  void operator()(ports::NullValue) const { variant.vt = VT_NULL; }
  void operator()(bool value) const {
    variant.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    variant.vt = VT_BOOL;
  }
  void operator()(std::uint8_t value) const {
    variant.bVal = value;
    variant.vt = VT_UI1;
  }
  void operator()(std::int16_t value) const {
    variant.iVal = value;
    variant.vt = VT_I2;
  }
  void operator()(std::int32_t value) const {
    variant.lVal = value;
    variant.vt = VT_I4;
  }
  void operator()(ports::CurrencyValue value) const {
    variant.cyVal.int64 = value.ten_thousandths;
    variant.vt = VT_CY;
  }
  void operator()(float value) const {
    variant.fltVal = value;
    variant.vt = VT_R4;
  }
  void operator()(double value) const {
    variant.dblVal = value;
    variant.vt = VT_R8;
  }
  void operator()(ports::DateValue value) const {
    variant.date = value.days;
    variant.vt = VT_DATE;
  }
  void operator()(const ports::DecimalValue& value) const {
    DECIMAL decimal = {};
    if (FAILED(VarDecFromStr(ToWide(value.text).data(), kEnglish, LOCALE_NOUSEROVERRIDE, &decimal)))
      return;
    variant.decVal = decimal;
    variant.vt = VT_DECIMAL;  // after the value: it overlies the type
  }
  void operator()(const std::string& value) const { PutText(value, variant); }
  void operator()(const ports::BinaryValue& value) const { PutBytes(value.bytes, variant); }
  void operator()(ports::OtherValue) const { variant.vt = VT_EMPTY; }
};

std::string BytesOf(const VARIANT& variant) {
  LONG low = 0;
  LONG high = -1;
  SafeArrayGetLBound(variant.parray, 1, &low);
  SafeArrayGetUBound(variant.parray, 1, &high);
  void* data = nullptr;
  if (high < low || FAILED(SafeArrayAccessData(variant.parray, &data))) return {};
  std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(high - low + 1));
  SafeArrayUnaccessData(variant.parray);
  return bytes;
}

ports::DatabaseValue DecimalOf(const VARIANT& variant) {
  DECIMAL decimal = variant.decVal;
  ComText text;
  if (FAILED(VarBstrFromDec(&decimal, kEnglish, LOCALE_NOUSEROVERRIDE, text.Out())))
    return ports::OtherValue{VT_DECIMAL};
  return ports::DecimalValue{text.ToString()};
}

}  // namespace

void ToVariant(const ports::DatabaseValue& value, VARIANT& variant) {
  std::visit(Putter{variant}, value);
}

ports::DatabaseValue FromVariant(const VARIANT& variant) {
  switch (variant.vt) {
    case VT_EMPTY:
      return ports::EmptyValue{};
    case VT_NULL:
      return ports::NullValue{};
    case VT_BOOL:
      return variant.boolVal != VARIANT_FALSE;
    case VT_UI1:
      return variant.bVal;
    case VT_I2:
      return variant.iVal;
    case VT_I4:
      return static_cast<std::int32_t>(variant.lVal);
    case VT_CY:
      return ports::CurrencyValue{variant.cyVal.int64};
    case VT_R4:
      return variant.fltVal;
    case VT_R8:
      return variant.dblVal;
    case VT_DATE:
      return ports::DateValue{variant.date};
    case VT_DECIMAL:
      return DecimalOf(variant);
    case VT_BSTR:
      return FromWide({variant.bstrVal, SysStringLen(variant.bstrVal)});
    case kByteArray:
      return ports::BinaryValue{BytesOf(variant)};
    default:
      return ports::OtherValue{variant.vt};
  }
}

std::int32_t LongOf(const ports::DatabaseValue& value) {
  if (const auto* const number = std::get_if<std::int32_t>(&value)) return *number;
  if (const auto* const number = std::get_if<std::int16_t>(&value)) return *number;
  if (const auto* const number = std::get_if<std::uint8_t>(&value)) return *number;
  return 0;
}

bool BooleanOf(const ports::DatabaseValue& value) {
  const auto* const truth = std::get_if<bool>(&value);
  return truth != nullptr && *truth;
}

std::string TextOf(const ports::DatabaseValue& value) {
  const auto* const text = std::get_if<std::string>(&value);
  return text == nullptr ? std::string() : *text;
}

}  // namespace platform
