#include "product/registration.h"

#include "ports/system_info.h"
#include "tests/engine/run_fixture.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

// A system with the registration tool in its folder for 32-bit programs.
class SystemWithTool final : public ports::SystemInfo {
 public:
  explicit SystemWithTool(const Sandbox& sandbox) : sandbox_(sandbox) {
    sandbox.Write("windows/SysWOW64/regsvr32.exe", "the tool");
    sandbox.Write("windows/System32/regsvr32.exe", "for other programs");
  }
  std::optional<ports::OsFacts> Os() override { return std::nullopt; }
  ports::HardwareFacts Hardware() override { return {}; }
  ports::SystemFolders Folders() override {
    return {sandbox_.Path("windows"), sandbox_.Path("windows/System32")};
  }
  std::string DecimalSeparator() override { return ","; }

 private:
  const Sandbox& sandbox_;
};

// The tool's place and the setting are found once in a process: the tests stand in one program of
// their own, and the setting is tried in a child of it.
class RegistrationTest : public RunTest {
 protected:
  RegistrationTest() { ports_->system_info = &system_; }

  std::string Line(const std::string& options, const std::string& file) const {
    return "|\"" + sandbox_.Path("windows/SysWOW64/regsvr32.exe") + "\"" + options + "\"" + file +
           "\"|";
  }

  SystemWithTool system_{sandbox_};
};

TEST_F(RegistrationTest, ADevelopersSettingKeepsComponentsFromBeingRegistered) {
  const std::string file = sandbox_.Write("a.dll", "");
  settings_.Set(ports::SettingsRoot::kMachine,
                "SOFTWARE\\Kestrel Soft Development\\Tamrin\\NoRegistering", std::string("yes"));
  const auto register_both = [&] {
    const bool is_done = tmw::DoRegisterDll(file, false) && tmw::UnregisterDll(file, false) &&
                         processes_.starts.empty();
    const bool is_missing_named =
        !tmw::DoRegisterDll(file + "x", false) && front_end_.log.size() == 1;
    _exit(is_done && is_missing_named ? 0 : 1);
  };
  EXPECT_EXIT(register_both(), testing::ExitedWithCode(0), "");
}

TEST_F(RegistrationTest, TheSystemsToolRegistersAndAnUnchangedComponentEveryTime) {
  release_.files[0].is_com = "yes";
  Publish();
  const std::string library = Path("Продукт/Bin/Программа.dll");
  ASSERT_EQ(Run().size(), 1U);
  EXPECT_EQ(processes_.starts, Log{Line(" -s ", library)});
  processes_.starts.clear();
  sandbox_.Write("Продукт/help.txt", "spoiled");
  front_end_.answers = {true};
  ASSERT_EQ(Run().size(), 1U);
  EXPECT_EQ(processes_.starts, Log{Line(" -s ", library)});
  processes_.starts.clear();
  EXPECT_TRUE(tmw::UnregisterDll(library, false));
  EXPECT_EQ(processes_.starts, Log{Line(" -u -s ", library)});
  EXPECT_FALSE(tmw::UnregisterDll(library + "x", false));
  EXPECT_EQ(front_end_.log.back(),
            "warning|Ошибка загрузки|Разрегистрируемый файл \"" + library + "x\" не найден.");
}

}  // namespace
}  // namespace tests
