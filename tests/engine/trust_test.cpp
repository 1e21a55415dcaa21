#include "tests/engine/run_fixture.h"

// What the digest binds and who may announce it.
namespace tests {
namespace {

using Log = std::vector<std::string>;

const std::string kError = "warning|Ошибка загрузки|";
const std::string kFormat = kError + "Ошибка формата файла версии: ";
const std::string kManifest = "server/TMW_3.6.0.2/_PackageManifest.tmz";

class TrustTest : public RunTest {
 protected:
  // The one box of a run that ends before anything is changed.
  std::string Refusal() {
    Run();
    EXPECT_EQ(front_end_.log.size(), 1U) << testing::PrintToString(front_end_.log);
    EXPECT_FALSE(updated_);
    EXPECT_FALSE(sandbox_.Has("Продукт/help.txt"));
    return front_end_.log.empty() ? "" : front_end_.log[0];
  }

  // Puts another release of the same version in the place of this one, all but the digest.
  void SwapRelease() {
    const std::string digest = sandbox_.Read("server/TMW_version.dat");
    Release other = release_;
    other.files[0].content = "a program of somebody else";
    WriteRelease(other, sandbox_.Path("server"), server_.Url(""));
    sandbox_.Write("server/TMW_version.dat", digest);
  }

  std::string NotAnnounced() const {
    return kError + "Список файлов, загруженный по адресу \"" +
           server_.Url("/TMW_3.6.0.2/_PackageManifest.tmz") +
           "\", не совпадает с объявленным в файле с информацией о версии: этот сервер отдает "
           "устаревший, поврежденный или чужой список. На данном компьютере ничего не "
           "изменено.\r\n\r\nПовторите обновление через некоторое время.";
  }
};

TEST_F(TrustTest, AnotherManifestThanTheAnnouncedOneIsRefused) {
  release_.is_bound = true;
  Publish();
  SwapRelease();
  const std::string swapped = sandbox_.Read(kManifest);
  EXPECT_EQ(Refusal(), NotAnnounced());
  const Log twice = {"/TMW_version.dat", "/TMW_links.dat", "/TMW_3.6.0.2/_PackageManifest.tmz",
                     "/TMW_version.dat", "/TMW_3.6.0.2/_PackageManifest.tmz"};
  EXPECT_EQ(Requests(), twice);
  sandbox_.Write(kManifest, swapped + "more");
  EXPECT_EQ(Refusal(), NotAnnounced());

  // The release is replaced while the run is about to read its manifest.
  Publish();
  bool is_replaced = false;
  on_request_ = [&](const std::string& path) {
    if (path != kManifest || is_replaced) return;
    is_replaced = true;
    release_.files[1].content = "newer help";
    Publish();
  };
  const std::string digest = sandbox_.Read("server/TMW_version.dat");
  Run();
  EXPECT_NE(sandbox_.Read("server/TMW_version.dat"), digest);
  EXPECT_TRUE(updated_) << testing::PrintToString(front_end_.log);
  EXPECT_EQ(Requests().size(), 7U);
  EXPECT_EQ(sandbox_.Read("Продукт/help.txt"), "newer help");
}

TEST_F(TrustTest, ARunEndsWhenAnotherVersionIsAnnouncedMeanwhile) {
  release_.is_bound = true;
  Publish();
  SwapRelease();
  on_request_ = [&](const std::string& path) {
    if (path == kManifest) sandbox_.Write("server/TMW_version.dat", "3.6.0.3\r\n1.0\r\n");
  };
  EXPECT_EQ(Refusal(),
            kError +
                "Пока загружалась версия 3.6.0.2, на сервере было объявлено другое обновление "
                "(3.6.0.3). На данном компьютере ничего не изменено.\r\n\r\nЗапустите "
                "обновление еще раз.");
}

TEST_F(TrustTest, AFaultyManifestLineEndsTheRun) {
  const std::string hash(64, 'a');
  for (const std::string& line :
       {std::string("manifest:"), "MANIFEST:12|" + hash + "0", "manifest:012|" + hash,
        "manifest:-1|" + hash, "manifest: 1|" + hash, "manifest:1|" + hash + "|",
        std::string("manifest:1|A"), "manifest:1|" + std::string(64, 'A'),
        "manifest:9999999999999999999|" + hash}) {
    release_.more_lines = line + "\r\n";
    Publish();
    EXPECT_EQ(Refusal(), kFormat + "неверно записана строка manifest.") << line;
    EXPECT_EQ(Requests().size(), 1U);
  }
  release_.is_bound = true;
  Publish();
  EXPECT_EQ(Refusal(), kFormat + "дважды встречается строка manifest.");
  release_.is_bound = false;
  release_.more_lines = "manifests:1\r\n";
  Publish();
  SwapRelease();
  Run();
  EXPECT_TRUE(updated_) << "nothing is bound";
}

}  // namespace
}  // namespace tests
