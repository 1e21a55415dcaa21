#include "tests/jet/file/canonical_rows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <variant>

#include "sha256/sha256.h"

namespace tests {
namespace {

using nlohmann::json;

std::string Hex(const std::string& bytes) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    text += kDigits[static_cast<unsigned char>(c) >> 4U];
    text += kDigits[static_cast<unsigned char>(c) & 0x0FU];
  }
  return text;
}

// Civil date of days since 1970-01-01.
std::string DateText(double days) {
  const double whole = std::floor(days);
  // Before 1899-12-30 the fraction counts forward from the day all the same.
  const double fraction = days < 0 ? std::ceil(days) - days : days - whole;
  const auto day = static_cast<std::int64_t>(days < 0 ? std::ceil(days) : whole);
  auto seconds = static_cast<std::int64_t>(std::llround(fraction * 86400));
  constexpr std::int64_t kFromBaseToEra = 693899 + 60;  // 1899-12-30 counted from 0000-03-01, +1
  const std::int64_t z = day + seconds / 86400 + kFromBaseToEra - 60;
  seconds %= 86400;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const std::int64_t day_of_era = z - era * 146097;
  const std::int64_t year_of_era =
      (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const std::int64_t day_of_year =
      day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const std::int64_t shifted = (5 * day_of_year + 2) / 153;
  const std::int64_t month = shifted < 10 ? shifted + 3 : shifted - 9;
  const std::int64_t year = year_of_era + era * 400 + (month <= 2 ? 1 : 0);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d", static_cast<int>(year),
                static_cast<int>(month),
                static_cast<int>(day_of_year - (153 * shifted + 2) / 5 + 1),
                static_cast<int>(seconds / 3600), static_cast<int>(seconds / 60 % 60),
                static_cast<int>(seconds % 60));
  return text.data();
}

std::string WithPoint(std::string text) {
  if (text.find('.') == std::string::npos) text += '.';
  while (text.back() == '0')
    text.pop_back();
  return text;
}

json Number(double value) {
  constexpr double kExact = 9007199254740992.0;
  if (std::floor(value) == value && std::abs(value) < kExact)
    return static_cast<std::int64_t>(value);
  return value;
}

struct ToJson {
  json operator()(ports::EmptyValue) const { return nullptr; }
  json operator()(ports::NullValue) const { return nullptr; }
  json operator()(bool value) const { return value; }
  json operator()(std::uint8_t value) const { return value; }
  json operator()(std::int16_t value) const { return value; }
  json operator()(std::int32_t value) const { return value; }
  json operator()(ports::CurrencyValue value) const {
    const std::int64_t number = value.ten_thousandths;
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%s%lld.%04lld", number < 0 ? "-" : "",
                  std::llabs(number / 10000), std::llabs(number % 10000));
    return WithPoint(text.data());
  }
  json operator()(float value) const { return Number(double{value}); }
  json operator()(double value) const { return Number(value); }
  json operator()(ports::DateValue value) const { return DateText(value.days); }
  json operator()(const ports::DecimalValue& value) const { return WithPoint(value.text); }
  json operator()(const std::string& value) const {
    constexpr std::string_view kGuid = "{guid {";
    if (value.starts_with(kGuid)) return value.substr(kGuid.size(), 36);
    return value;
  }
  json operator()(const ports::BinaryValue& value) const { return "x" + Hex(value.bytes); }
  json operator()(ports::OtherValue) const { return "other"; }
};

}  // namespace

std::vector<std::string> CanonicalRows(jet::file::DatabaseReader& reader,
                                       const jet::file::TableLayout& table) {
  std::vector<std::string> lines;
  const auto order = jet::file::FieldOrder(table);
  jet::file::TableRows rows = reader.Rows(table);
  while (rows.Next()) {
    json line = json::array();
    for (const std::size_t position : order)
      line.push_back(std::visit(ToJson{}, rows.Value(table.columns[position])));
    lines.push_back(line.dump());
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

std::string DigestOf(const std::vector<std::string>& rows) {
  sha256::Stream stream;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (i != 0) stream.Update("\n", 1);
    stream.Update(rows[i].data(), rows[i].size());
  }
  const auto digest = stream.Finish();
  return Hex({digest.begin(), digest.end()});
}

}  // namespace tests
