#include "services/product_settings.h"

#include <gtest/gtest.h>

#include <map>

#include "services/advice.h"
#include "tests/fakes/memory_settings.h"
#include "tests/support/caught.h"
#include "tests/support/environment.h"
#include "tests/support/scoped_ports.h"

namespace tmw {
namespace {

using enum ports::SettingsRoot;

const std::string kGeneral = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\";
const std::string kAutoUpdate = "SOFTWARE\\Kestrel Soft\\Tamrin\\AutoUpdate\\";

class ProductSettings : public testing::Test {
 protected:
  ProductSettings() {
    ForgetProductPaths();
    ports_->settings = &store_;
  }
  ~ProductSettings() override { ForgetProductPaths(); }

  tests::ScopedPorts ports_;
  tests::MemorySettings store_;
};

TEST_F(ProductSettings, NumbersOutOfRangeGiveTheDefault) {
  for (const auto& [stored, read] :
       std::map<std::int32_t, std::int32_t>{{-1, 2}, {0, 0}, {4, 4}, {5, 2}, {7, 2}}) {
    store_.Set(kUser, kAutoUpdate + "ProxyType", stored);
    EXPECT_EQ(GetProductSetting_LongRanged(false, "AutoUpdate", "ProxyType", 0, 4, 2), read);
  }
  EXPECT_EQ(GetProductSetting_Long(true, "AutoUpdate", "ProxyType", 3), 3);
}

TEST_F(ProductSettings, BooleansAreWords) {
  const auto read = [&](const std::string& word, bool fallback) {
    store_.Set(kUser, kAutoUpdate + "NoFtp", word);
    return GetProductSetting_Boolean(false, "AutoUpdate", "NoFtp", fallback);
  };
  for (const char* yes : {"true", "1", "-1", "yes", "y", "Yes"})
    EXPECT_TRUE(read(yes, false)) << yes;
  for (const char* no : {"false", "0", "no", "n", "NO"})
    EXPECT_FALSE(read(no, true)) << no;
  for (const char* other : {"maybe", "*", "", "2"})
    EXPECT_TRUE(read(other, true) && !read(other, false)) << other;
  EXPECT_TRUE(GetProductSetting_Boolean(false, "AutoUpdate", "IsCustomUrl", true));
}

TEST_F(ProductSettings, FoldersEndWithASeparatorAndAreReadOnce) {
  const std::string separator(1, tests::kOnWindows ? '\\' : '/');
  store_.Set(kMachine, kGeneral + "RootPath", "root");
  store_.Set(kMachine, kGeneral + "DataBasePath", "base" + separator);
  EXPECT_EQ(GetProductRootPath(), "root" + separator);
  EXPECT_EQ(GetDataBasePath(), "base" + separator);
  store_ = {};
  EXPECT_EQ(GetProductRootPath(), "root" + separator);
  EXPECT_EQ(GetDataBasePath(), "base" + separator);
}

TEST_F(ProductSettings, AMissingFolderHasItsDefaultOrIsAnErrorThatNamesIt) {
  const auto root = tests::Caught([] { GetProductRootPath(); });
  EXPECT_EQ(root.Number, 1001);
  EXPECT_EQ(root.Description,
            "В настройках программы \"Tamrin\" не задан параметр "
            "\"SOFTWARE\\Kestrel Soft\\Tamrin\\General\\RootPath\".\r\nЕго место: файл \"m.reg\".");
  EXPECT_EQ(TakeNotedFailure(), FailureKind::kSetting);
  store_.has_folder_defaults = true;  // of which the database's folder has none
  EXPECT_NE(tests::Caught([] { GetDataBasePath(); }).Description.find("General\\DataBasePath\""),
            std::string::npos);
  EXPECT_TRUE(GetProductRootPath().starts_with("c:\\Program Files\\Kestrel Soft\\TMW\\"));
}

TEST_F(ProductSettings, AFailingStoreIsNotTakenForAMissingValue) {
  store_.failure = 5;
  auto error = tests::Caught([] { GetProductSetting_String(true, "General", "RootPath", "x"); });
  EXPECT_EQ(error.Number, 5);
  EXPECT_TRUE(error.Description.starts_with(
      "Ошибка чтения параметра \"SOFTWARE\\Kestrel Soft\\Tamrin\\General\\RootPath\":\r\n"));
  EXPECT_NE(error.Source.find("::mTmRegistryParams.GetProductSetting_String]"), std::string::npos);
  store_.failure = 0;
  store_.failure_text = "Сломан.";
  error = tests::Caught([] { GetProductSetting_Boolean(false, "AutoUpdate", "NoFtp", false); });
  EXPECT_EQ(error.Number, 1001);
  EXPECT_EQ(error.Description, "Сломан.");
}

}  // namespace
}  // namespace tmw
