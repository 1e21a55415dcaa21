#include "database/db_version.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <variant>

#include "database/database_texts.h"
#include "foundation/error_handling.h"
#include "foundation/version.h"
#include "services/run_module.h"

namespace tmw {
namespace {

constexpr const char* kColumns[] = {"MajorVersion", "MinorVersion", "BuildNumber"};

// The columns are numeric, of whatever size.
std::int32_t ToLong(const ports::DatabaseValue& value) {
  const double number = std::visit(
      [](const auto& content) {
        using Content = std::decay_t<decltype(content)>;
        if constexpr (std::is_arithmetic_v<Content>) {
          return static_cast<double>(content);
        } else if constexpr (std::is_same_v<Content, ports::CurrencyValue>) {
          return static_cast<double>(content.ten_thousandths) / 10000;
        } else {
          return std::numeric_limits<double>::quiet_NaN();
        }
      },
      value);
  constexpr double kMost = std::numeric_limits<std::int32_t>::max();
  if (!(number >= 0 && number <= kMost && number == std::trunc(number)))
    RaiseProgramError(database_texts::kNoVersionNumber);
  return static_cast<std::int32_t>(number);
}

}  // namespace

std::string DbVersionText(const DbVersion& version) {
  return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
         std::to_string(version[2]);
}

std::optional<DbVersion> ParseDbVersion(std::string_view text) {
  DbVersion version{};
  std::int32_t fourth = 0;
  std::int32_t part_count = 0;
  if (!ParseVersionString(text, version[0], version[1], version[2], fourth, part_count) ||
      part_count != 3)
    return std::nullopt;
  return version;
}

DbVersion GetDataBaseVersion(ports::Database& database) try {
  const auto rows = database.OpenRecordset("DBVersion", ports::RecordsetType::kDynaset);
  rows->MoveFirst();
  DbVersion version{};
  for (std::size_t i = 0; i < version.size(); ++i)
    version[i] = ToLong(rows->Value(rows->FieldPosition(kColumns[i])));
  return version;
} catch (...) {
  ReRaiseError(kRunModule, "GetDataBaseVersion");
}

std::string SetDataBaseVersionSql(const DbVersion& version) {
  return "update DBVersion set MajorVersion = " + std::to_string(version[0]) +
         ", MinorVersion = " + std::to_string(version[1]) +
         ", BuildNumber = " + std::to_string(version[2]);
}

}  // namespace tmw
