#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/file_utils.h"
#include "publish/signer.h"
#include "tests/engine/run_fixture.h"
#include "tests/publish/sample.h"

// A release from the publisher through a server to an installation and its database.
namespace tests {
namespace {

using Log = std::vector<std::string>;

TEST_F(RunTest, APublishedAndSignedReleaseIsInstalled) {
  Sample sample(sandbox_);
  std::filesystem::create_directories(ToPath(Path("Продукт")));
  const publish::KeyPair keys = publish::MakeKeys(sandbox_.Path("key"), std::nullopt);
  const publish::Signer signer({sandbox_.Path("key"), "", publish::Today(), {}});
  sample.options.signer = &signer;
  settings_.Set(ports::SettingsRoot::kMachine,
                "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\UpdateKeys", keys.public_key);
  sample.Describe("http://one.example/\"/><Server Url=\"two.example", server_.Url(""));
  sandbox_.Write("product/tm/Reg.dll", tmw::ReadFileBytes(TMW_REGISTERING_LIBRARY));
  ASSERT_EQ(sample.Publish(), Log{});
  EXPECT_EQ(Sample::Check(sample.options.output), Log{});
  ASSERT_EQ(Run().size(), 1U) << front_end_.log.back();
  EXPECT_TRUE(updated_);
  EXPECT_EQ(sandbox_.Read("Продукт/TmWebUpdate.serial"), "1\r\n");
  const std::pair<const char*, const char*> installed[] = {
      {"tm/Updater.exe", "Продукт/tm/Updater.exe"},
      {"tm/Reg.dll", "Продукт/tm/Reg.dll"},
      {"tm/Тексты/Бланк.uni", "Продукт/tm/Тексты/Бланк.uni"},
      {"Справка/Счёт №1.htm", "Продукт/Help/Счёт №1.htm"},
      {"Справка/empty", "Продукт/Help/empty"}};
  for (const auto& [made_of, place] : installed)
    EXPECT_TRUE(sandbox_.Read(place) == sandbox_.Read("product/" + std::string(made_of))) << place;
  EXPECT_EQ(sandbox_.Read("Продукт/tm/Core.dll").size(), 100'064U) << "with its integrity data";
  EXPECT_FALSE(sandbox_.Has("Продукт/tm/Core.pdb"));
  Run();
  EXPECT_FALSE(updated_) << "nothing differs any more";
}

TEST_F(RunTest, APublishedReleaseIsCheckedOnItsServer) {
  const Sample sample(sandbox_);
  ASSERT_EQ(sample.Publish(), Log{});
  EXPECT_EQ(Sample::Check(server_.Url("/")), Log{});
  std::filesystem::remove(ToPath(sandbox_.Path("server/TMW_3.6.0.2/_DBStruct.tmz")));
  sandbox_.Write("server/TMW_3.6.0.2/files/tm/Calc.ocx.tmz", std::string(2 << 20, 'x'));
  const Log faults = Sample::Check(server_.Url(""), "3.4.0");
  EXPECT_EQ(faults.size(), 3U) << testing::PrintToString(faults);
  for (const char* const fault :
       {"Calc.ocx: Cannot be had as files/tm/Calc.ocx.tmz: ",
        "_DBStruct.tmz: Cannot be had as _DBStruct.tmz: ", "leads on from version 3.4.0 to 3.6.0"})
    EXPECT_TRUE(HasFault(faults, fault)) << fault << testing::PrintToString(faults);
}

}  // namespace
}  // namespace tests
