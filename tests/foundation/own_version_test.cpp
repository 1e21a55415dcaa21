#include <gtest/gtest.h>

#include "foundation/version.h"

// Built with the numbers of another version.
TEST(OwnVersion, HasATwoDigitMinorNumber) {
  EXPECT_EQ(tmw::GetAppVersionString(), "3.05.117");
}
