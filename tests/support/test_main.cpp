#include <gtest/gtest.h>

#include "platform/host.h"

// Every test program runs on the real ports; a test that wants a fake puts it in with ScopedPorts.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const auto host = platform::MakeHost(argc, argv);
  platform::CurrentPorts() = host->MakePorts();
  return RUN_ALL_TESTS();
}
