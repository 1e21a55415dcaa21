#include "tests/support/processes.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "ports/ports.h"
#include "ports/processes.h"
#include "services/processes.h"
#include "tests/support/environment.h"

namespace tests {

std::string ChildProgram() {
  const auto own = ToPath(ports::CurrentPorts().processes->OwnProgram());
  return FromPath(own.parent_path() / (kOnWindows ? "child_program.exe" : "child_program"));
}

std::int32_t StartChild(const std::string& arguments) {
  return tmw::RunProcess("", "\"" + ChildProgram() + "\" " + arguments, "", false, 0);
}

void KillProcess(std::int32_t id) {
  const std::string killer = kOnWindows ? "taskkill /F /PID " : "kill -9 ";
  EXPECT_EQ(tmw::RunProcess("", killer + std::to_string(id), "", true, 0), 0);
}

std::string AwaitLine(const Sandbox& sandbox, const std::string& name) {
  for (int attempt = 0; attempt < 400; ++attempt) {
    if (sandbox.Has(name)) {
      const std::string text = sandbox.Read(name);
      if (text.find('\n') != std::string::npos) return text.substr(0, text.find('\n'));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  ADD_FAILURE() << name << " did not come";
  return {};
}

}  // namespace tests
