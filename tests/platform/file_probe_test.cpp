#include "ports/file_probe.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

#include "ports/file_system.h"
#include "ports/ports.h"
#include "services/processes.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"
#include "tests/support/sandbox.h"

namespace {

using ports::Hindrance;
using ports::Replacement;

Hindrance Examine(const std::string& path, Replacement replacement = Replacement::kRemoval) {
  return ports::CurrentPorts().file_probe->Examine(path, replacement).hindrance;
}

// What a program that has just been killed held may stay held for a moment.
bool IsFreeSoon(const std::string& path) {
  for (int i = 0; i < 500 && Examine(path) != Hindrance::kNone; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  return Examine(path) == Hindrance::kNone;
}

TEST(FileProbe, WhatCanBeReplacedHasNoHindranceAndStaysAsItIs) {
  const tests::Sandbox sandbox;
  const std::string read_only = sandbox.Write("только чтение", "x");
  ASSERT_TRUE(ports::CurrentPorts().files->SetReadOnly(read_only, true));
  EXPECT_EQ(Examine(read_only), Hindrance::kNone);
  EXPECT_TRUE(ports::CurrentPorts().files->Examine(read_only).value.read_only);
  EXPECT_EQ(sandbox.Read("только чтение"), "x");
  EXPECT_EQ(Examine(sandbox.Path("нет/такого")), Hindrance::kNone);
  EXPECT_EQ(Examine(sandbox.Path()), Hindrance::kFolder);
}

TEST(FileProbe, ARunningProgramAndALockedFileAreHeldUntilTheirHolderIsGone) {
  const tests::Sandbox sandbox;
  const std::string program = sandbox.Path("Программа.exe");
  std::filesystem::copy_file(tests::ToPath(tests::ChildProgram()), tests::ToPath(program));
  const std::string locked = sandbox.Write("Книга.mdb", "x");
  const std::string script =
      "\" lock \"" + locked + "\" shared \"" + sandbox.Path("report") + "\" sleep 20000";
  const std::int32_t holder = tmw::RunProcess(program, "\"" + program + script, "", false, 0);
  ASSERT_EQ(tests::AwaitLine(sandbox, "report"), "locked");
  EXPECT_EQ(Examine(program), Hindrance::kHeld);
  EXPECT_EQ(Examine(program, Replacement::kRenameOver),
            tests::kOnWindows ? Hindrance::kHeld : Hindrance::kNone);
  EXPECT_EQ(Examine(locked), Hindrance::kHeld);
  EXPECT_EQ(sandbox.Read("Книга.mdb"), "x");
  if (!tests::kOnWindows) {
    for (const std::string& file : {program, locked}) {
      EXPECT_EQ(ports::CurrentPorts().file_probe->Holders(file),
                std::vector<std::string>{"Программа.exe"});
    }
  }
  tests::KillProcess(holder);
  EXPECT_TRUE(IsFreeSoon(program) && IsFreeSoon(locked));
}

TEST(FileProbe, FoldersOfOneFileSystemShareTheirSpace) {
  const tests::Sandbox sandbox;
  std::filesystem::create_directories(tests::ToPath(sandbox.Path("папка")));
  ports::FileProbe& probe = *ports::CurrentPorts().file_probe;
  const auto outer = probe.SpaceOf(sandbox.Path());
  const auto inner = probe.SpaceOf(sandbox.Path("папка"));
  ASSERT_TRUE(outer && inner);
  EXPECT_EQ(outer.value.disk, inner.value.disk);
  const auto space = std::filesystem::space(tests::ToPath(sandbox.Path()));
  constexpr double kOthersWrite = 1e9;
  EXPECT_NEAR(static_cast<double>(inner.value.free), static_cast<double>(space.available),
              kOthersWrite);
  EXPECT_FALSE(probe.SpaceOf(sandbox.Path("нет")));
}

}  // namespace
