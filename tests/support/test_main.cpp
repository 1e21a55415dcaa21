#include <gtest/gtest.h>

#include "ports/host.h"

// Every test program runs on the real ports; a test that wants a fake sets it with ScopedPorts.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const auto host = ports::MakeHost(argc, argv);
  ports::CurrentPorts() = host->MakePorts();
  ports::CurrentPorts().log_files = nullptr;  // nothing is written to the log of who runs the tests
  return RUN_ALL_TESTS();
}
