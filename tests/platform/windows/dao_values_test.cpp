#include "platform/windows/dao/dao_values.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/windows/dao/dao_engine.h"
#include "platform/windows/dao/dao_errors.h"
#include "ports/database.h"
#include "ports/ports.h"

namespace platform {
namespace {

TEST(DaoValues, EveryKindGoesOverAndBack) {
  const struct {
    ports::DatabaseValue value;
    VARTYPE type;
  } cases[] = {
      {ports::EmptyValue{}, VT_EMPTY},
      {ports::NullValue{}, VT_NULL},
      {true, VT_BOOL},
      {false, VT_BOOL},
      {std::uint8_t{200}, VT_UI1},
      {std::int16_t{-32768}, VT_I2},
      {std::int32_t{-2147483647}, VT_I4},
      {ports::CurrencyValue{9223372036854775807}, VT_CY},
      {1.5F, VT_R4},
      {-0.1, VT_R8},
      {ports::DateValue{-1.25}, VT_DATE},
      {ports::DecimalValue{"-7922816251426433759354395.0335"}, VT_DECIMAL},
      {std::string(), VT_BSTR},
      {std::string("Ёлка\0№", 12), VT_BSTR},
      {ports::BinaryValue{std::string("\0\1\xFF", 3)}, VT_ARRAY | VT_UI1},
      {ports::BinaryValue{}, VT_ARRAY | VT_UI1},
  };
  for (const auto& c : cases) {
    ComValue variant;
    ToVariant(c.value, variant.Get());
    EXPECT_EQ(variant.Get().vt, c.type);
    EXPECT_EQ(FromVariant(variant.Get()), c.value) << c.type;
  }
  ComValue unknown;
  unknown.Get().vt = VT_I8;
  EXPECT_EQ(FromVariant(unknown.Get()), ports::DatabaseValue(ports::OtherValue{VT_I8}));
  unknown.Get().vt = VT_EMPTY;
}

TEST(DaoErrors, NumbersAndWordsComeFromTheComponent) {
  const struct {
    HRESULT result;
    HRESULT scode;
    WORD code;
    std::int32_t number;
  } cases[] = {
      {DISP_E_EXCEPTION, static_cast<HRESULT>(0x800A0BE5), 0, ports::kFileAlreadyInUse},
      {DISP_E_EXCEPTION, static_cast<HRESULT>(0x800A0D1C), 0, ports::kOpenedExclusively},
      {DISP_E_EXCEPTION, E_OUTOFMEMORY, 0, static_cast<std::int32_t>(E_OUTOFMEMORY)},
      {DISP_E_EXCEPTION, 0, 3021, ports::kNoCurrentRecord},
      {DISP_E_UNKNOWNNAME, 0, 0, static_cast<std::int32_t>(DISP_E_UNKNOWNNAME)},
  };
  for (const auto& c : cases) {
    EXCEPINFO details = {};
    details.scode = c.scode;
    details.wCode = c.code;
    if (c.result == DISP_E_EXCEPTION) {
      details.bstrDescription = SysAllocString(ToWide("Файл занят").c_str());
      details.bstrSource = SysAllocString(L"DAO.DbEngine");
    }
    const ports::DatabaseError error = ErrorOfCall(c.result, details);
    EXPECT_EQ(error.Number, c.number);
    if (c.result == DISP_E_EXCEPTION) {
      EXPECT_EQ(error.Description, "Файл занят");
      EXPECT_EQ(error.Source, "DAO.DbEngine");
    } else {
      EXPECT_FALSE(error.Description.empty());
    }
  }
}

TEST(DaoEngine, WithoutDaoTheErrorSaysWhatIsMissing) {
  DaoEngine engine;
  try {
    engine.OpenDatabase("C:\\нет.mdb", true, false);
    FAIL() << "nothing was raised";
  } catch (const ports::DatabaseError& error) {
    EXPECT_NE(error.Description.find("\"DAO.DBEngine.36\""), std::string::npos);
  }
}

}  // namespace
}  // namespace platform
