#include "database/default_text.h"

#include <gtest/gtest.h>

#include "tests/support/database_values.h"

namespace tests {
namespace {

TEST(DefaultText, IsTheExpressionThatGivesTheValue) {
  const struct {
    DatabaseValue value;
    const char* text;
  } cases[] = {
      {EmptyValue{}, ""},
      {NullValue{}, ""},
      {std::string(), ""},
      {std::string("\"нет\""), "\"нет\""},
      {2.5, "2.5"},
      {true, "True"},
      {false, "False"},
      {DateValue{37000}, "#04/19/2001#"},
      {DateValue{37000.5}, "#04/19/2001 12:00:00#"},
      {DateValue{0}, "#12/30/1899#"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(tmw::DefaultText(c.value), c.text);
}

}  // namespace
}  // namespace tests
