#include <gtest/gtest.h>

#include <filesystem>

#include "ports/file_system.h"
#include "ports/ports.h"
#include "ports/processes.h"
#include "publish/file_tree.h"
#include "publish/packer.h"
#include "tests/publish/sample.h"
#include "tests/support/environment.h"
#include "tests/support/processes.h"

namespace tests {
namespace {

using Lines = std::vector<std::string>;

class PackerTest : public testing::Test {
 protected:
  PackerTest() { Use("good"); }

  void Use(const std::string& mode) {
    const std::string program =
        FromPath(ToPath(ChildProgram()).parent_path() /
                 (kOnWindows ? "publish_test_packer.exe" : "publish_test_packer"));
    publish::PackerOptions packer;
    packer.command =
        "\"" + program + "\" " + mode + " \"" + sandbox.Path("log") + "\" {archive} {file}";
    packer.most_silence = mode == "hangs" ? 2 : 60;
    sample.options.packer = packer;
    sample.options.may_replace = true;
  }

  // How many files were packed since the last time.
  std::ptrdiff_t Calls() const {
    const std::string log = sandbox.Has("log") ? sandbox.Read("log") : "";
    sandbox.Write("log", "");
    return std::count(log.begin(), log.end(), '\n');
  }

  Sandbox sandbox;
  Sample sample{sandbox};
};

TEST_F(PackerTest, TakesWhatIsShorterAndPacksAgainOnlyWhatHasChanged) {
  ASSERT_EQ(sample.Publish(), Lines{});
  const std::ptrdiff_t all = Calls();
  EXPECT_GT(all, 6) << "files, the dictionary and the manifest";
  EXPECT_LT(sandbox.Read("server/TMW_3.6.0.2/files/tm/Core.dll.tmz").size(), 1000U);
  EXPECT_EQ(Sample::Check(sandbox.Path("server")), Lines{});
  const std::string without_cache = Everything(sandbox, "server");
  sample.options.packer->cache = sandbox.Path("cache");
  for (int i = 0; i < 3; ++i) {
    // Of the third run: one entry is cut, one is that of another file.
    if (i == 2) {
      const auto entries = publish::ListTree(sandbox.Path("cache"));
      ASSERT_EQ(entries.size(), static_cast<std::size_t>(all));
      sandbox.Write("cache/" + entries[0].path, "short");
      sandbox.Write("cache/" + entries[1].path, sandbox.Read("cache/" + entries[2].path));
    }
    ASSERT_EQ(sample.Publish(), Lines{});
    EXPECT_TRUE(Everything(sandbox, "server") == without_cache) << i;
    EXPECT_EQ(Calls(), i == 0 ? all : i == 1 ? 0 : 2) << i;
  }
  sandbox.Write("product/tm/Calc.ocx", std::string(5000, 'x'));
  ASSERT_EQ(sample.Publish(), Lines{});
  EXPECT_EQ(Calls(), 2) << "the file and the manifest";
}

TEST_F(PackerTest, EveryFailureOfTheArchiverIsNamedAndNothingIsPublished) {
  const struct {
    const char* mode;
    const char* fault;
  } cases[] = {
      {"fails", "The packer has failed with exit code 3: no room for the archive"},
      {"hangs", "The packer was ended: it has written nothing for 2 seconds"},
      {"nothing", "The packer has made no archive: packing"},
      {"name", "under its name Ставки.table, and holds: xСтавки.table."},
      {"two", "and holds: Ставки.table, second."},
      {"other", "The updater could not read what the packer has made: "},
      {"garbage", "The updater could not read what the packer has made: "},
  };
  for (const auto& c : cases) {
    Use(c.mode);
    EXPECT_TRUE(HasFault(sample.Publish(), c.fault)) << c.mode;
    EXPECT_FALSE(sandbox.Has("server/TMW_version.dat")) << c.mode;
  }
  sample.options.packer->command = "/nowhere/packer {archive} {file}";
  EXPECT_TRUE(HasFault(sample.Publish(), "The packer cannot be started: "));
  Use("good");
  sample.Describe("Date=\"", "Archive=\"RAR4\" Date=\"");
  EXPECT_TRUE(HasFault(sample.Publish(), "and the description asks for RAR4"));
}

}  // namespace
}  // namespace tests
