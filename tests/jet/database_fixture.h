#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "foundation/number_text.h"
#include "platform/factories.h"
#include "ports/database.h"
#include "tests/support/sandbox.h"

namespace tests {

// A value with its type: "Long 5", "Text абв", "Null".
struct ValueWords {
  std::string operator()(ports::EmptyValue) const { return "Empty"; }
  std::string operator()(ports::NullValue) const { return "Null"; }
  std::string operator()(bool value) const { return value ? "True" : "False"; }
  std::string operator()(std::uint8_t value) const { return "Byte " + std::to_string(value); }
  std::string operator()(std::int16_t value) const { return "Integer " + std::to_string(value); }
  std::string operator()(std::int32_t value) const { return "Long " + std::to_string(value); }
  std::string operator()(ports::CurrencyValue value) const {
    return "Currency " + tmw::CurrencyToText(value.ten_thousandths);
  }
  std::string operator()(float value) const { return "Single " + tmw::SingleToText(value); }
  std::string operator()(double value) const { return "Double " + tmw::DoubleToText(value); }
  std::string operator()(ports::DateValue value) const {
    return "Date " + tmw::DoubleToText(value.days);
  }
  std::string operator()(const ports::DecimalValue& value) const { return "Decimal " + value.text; }
  std::string operator()(const std::string& value) const { return "Text " + value; }
  std::string operator()(const ports::BinaryValue& value) const {
    return "Binary " + std::to_string(value.bytes.size());
  }
  std::string operator()(ports::OtherValue value) const {
    return "Other " + std::to_string(value.type_code);
  }
};

inline std::string Words(const ports::DatabaseValue& value) {
  return std::visit(ValueWords{}, value);
}

// The number of the error that a call fails with; 0 if it succeeds.
template <typename Call>
std::int32_t ErrorOf(Call call) {
  try {
    call();
    return 0;
  } catch (const ports::DatabaseError& error) {
    EXPECT_FALSE(error.Description.empty()) << error.Number;
    EXPECT_EQ(error.Description.find("SQL logic"), std::string::npos) << error.Description;
    return error.Number;
  }
}

// The system's engine (on Windows the one that the environment names) with a new database in a
// sandbox.
class DatabaseTest : public testing::Test {
 protected:
  // All rows as "value, value; value, value", or "error N".
  std::string Query(const std::string& sql) const {
    std::string text;
    const std::int32_t error = ErrorOf([&] {
      const auto rows = db->OpenRecordset(sql, ports::RecordsetType::kDynaset);
      for (; !rows->AtEnd(); rows->MoveNext()) {
        if (!text.empty()) text += "; ";
        for (std::size_t i = 0; i < rows->FieldNames().size(); ++i)
          text += (i == 0 ? "" : ", ") + Words(rows->Value(i));
      }
    });
    return error == 0 ? text : "error " + std::to_string(error);
  }

  std::int32_t Run(const std::string& sql) const {
    return ErrorOf([&] { db->Execute(sql, true); });
  }

  Sandbox sandbox;
  std::unique_ptr<ports::DatabaseEngine> engine = platform::MakeDatabaseEngine();
  std::string path = sandbox.Path("база.mdb");
  std::unique_ptr<ports::Database> db = engine->CreateDatabase(path);
};

}  // namespace tests
