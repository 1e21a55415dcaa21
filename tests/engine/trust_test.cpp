#include "engine/signed_digest.h"
#include "engine/update_keys.h"
#include "foundation/contract_names.h"
#include "packages/signature_name.h"
#include "signature/secret_key.h"
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
};

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
                "(3.6.0.3). На данном компьютере ничего не изменено.");
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
}

const std::string kUnchanged = "На данном компьютере ничего не изменено.";
const std::string kNotTrusted = kError +
                                "Подлинность файла с информацией о версии не подтверждена, поэтому "
                                "обновление не проводится. " +
                                kUnchanged + "\r\n\r\n";
const std::string kDigest = "server/TMW_version.dat";
const std::string kUpdateKeys = "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\UpdateKeys";
const std::string kSigned = "product:TMW\r\nserial:5\r\nexpires:2026-11-22\r\n";

std::string Replaced(std::string text, const std::string& piece, const std::string& instead) {
  return text.replace(text.find(piece), piece.size(), instead);
}

// An updater with a key, and a server whose digest is signed.
class SignedTest : public TrustTest {
 protected:
  SignedTest() {
    key_.Generate();
    other_key_.Generate();
    SetKeys(signature::PublicKeyText(key_.Public()));
    release_.is_bound = true;
    release_.more_lines = kSigned;
  }

  void SetKeys(const std::string& keys) {
    settings_.Set(ports::SettingsRoot::kMachine, kUpdateKeys, keys);
  }

  // Where the signature of the digest belongs that lies in that folder of the server.
  std::string SignatureFile(const std::string& folder = "") const {
    return "server/" + folder + tmw::SignatureName(sandbox_.Read("server/" + folder + kName));
  }

  void Sign(const signature::SecretKey& key, const std::string& folder = "") {
    const std::string digest = sandbox_.Read("server/" + folder + kName);
    sandbox_.Write(SignatureFile(folder), key.Sign(digest, "made by a test"));
  }

  void PublishSigned() {
    Publish();
    Sign(key_);
  }

  // Replaces a piece of the digest.
  void Change(const std::string& piece, const std::string& instead) {
    sandbox_.Write(kDigest, Replaced(sandbox_.Read(kDigest), piece, instead));
  }

  const std::string kName = std::string(tmw::names::kDigestFile);
  signature::SecretKey key_;
  signature::SecretKey other_key_;
};

TEST_F(SignedTest, ASignedReleaseIsInstalledAndItsSerialRemembered) {
  std::filesystem::create_directories(ToPath(Path("Продукт")));
  PublishSigned();
  sandbox_.Write("Продукт/TmWebUpdate.serial", "damaged");
  Run();
  EXPECT_TRUE(updated_) << testing::PrintToString(front_end_.log);
  EXPECT_EQ(Requests().at(1), "/" + SignatureFile().substr(7));
  EXPECT_EQ(Requests().size(), 6U);
  EXPECT_EQ(sandbox_.Read("Продукт/TmWebUpdate.serial"), "5\r\n");
  EXPECT_FALSE(sandbox_.Has("Продукт/TmWebUpdate.serial.new"));

  // Signed with the second of two keys.
  SetKeys(signature::PublicKeyText(key_.Public()) + "; " +
          signature::PublicKeyText(other_key_.Public()));
  release_.files[1].content = "newer help";
  release_.more_lines = Replaced(kSigned, "serial:5", "serial:12");
  Publish();
  Sign(other_key_);
  front_end_.answers = {true};
  Run();
  EXPECT_TRUE(updated_) << testing::PrintToString(front_end_.log);
  EXPECT_EQ(sandbox_.Read("Продукт/TmWebUpdate.serial"), "12\r\n");
}

TEST_F(SignedTest, EveryAttackOnTheDigestIsNamedBeforeAnythingElseIsAskedFor) {
  const std::string url = "\"" + server_.Url("/TMW_version.dat") + "\"";
  const std::string missing = kNotTrusted + "Подпись не загружена: ";
  const std::string differs = kNotTrusted + "Подпись не соответствует файлу " + url + ".";
  const std::string malformed = kNotTrusted + "Подпись файла " + url + " повреждена.";
  std::string good;  // the signature
  const auto put = [&](const std::string& text) { sandbox_.Write(SignatureFile(), text); };
  // Changes the digest and signs it anew.
  const auto resign = [&](const std::string& piece, const std::string& instead) {
    Change(piece, instead);
    Sign(key_);
  };
  const struct {
    std::function<void()> attack;
    std::string box;  // its beginning
    std::size_t requests = 2;
  } cases[] = {
      {[&] { Change("3.6.0.2", "3.6.0.3"); }, missing},
      {[&] { Change("3.6.0.2", "3.6.0.3"), put(good); }, differs},
      {[&] { Sign(other_key_); }, kNotTrusted + "Файл " + url + " подписан ключом " +
                                      signature::KeyIdText(other_key_.Public().id) +
                                      ", которого нет среди ключей этой программы."},
      {[&] { put(key_.Sign(sandbox_.Read("server/TMW_links.dat"), "")); }, differs},
      {[&] { put(Replaced(good, "a test", "a Test")); }, differs},
      {[&] { put(Replaced(good, "\nRU", "\nRW")); },
       kNotTrusted + "Подпись файла " + url + " сделана способом, который больше не принимается."},
      {[&] { put(good.substr(0, 150)); }, malformed},
      {[&] { put(""); }, malformed},
      {[&] { put(std::string(999, '\xFF')); }, malformed},
      {[&] { put(good + std::string(5000, '\n')); }, missing},
      {[&] { sandbox_.Write(kDigest, "\r\n <html>sign in</html>"); },
       kError + "По адресу " + url +
           " вместо файла с информацией о версии получена веб-страница. " + kUnchanged,
       1},
      {[&] { resign("product:TMW\r\n", ""); }, kFormat + "нет строки product."},
      {[&] { resign("manifest:", "manifests:"); }, kFormat + "нет строки manifest."},
      {[&] { resign("serial:5\r\n", ""); }, kFormat + "нет строки serial."},
      {[&] { resign("expires:", "expire:"); }, kFormat + "нет строки expires."},
      {[&] { resign("ser", "Product:TMW\r\nser"); },
       kFormat + "дважды встречается строка product."},
      {[&] { resign("ser", "manifest:\r\nser"); }, kFormat + "дважды встречается строка manifest."},
      {[&] { resign("ser", "serial:5\r\nser"); }, kFormat + "дважды встречается строка serial."},
      {[&] { resign("ser", "expires:\r\nser"); }, kFormat + "дважды встречается строка expires."},
      {[&] { resign("manifest:", "manifest:x"); }, kFormat + "неверно записана строка manifest."},
      {[&] { resign("serial:5", "serial:-5"); }, kFormat + "неверно записана строка serial."},
      {[&] { resign("11-22", "11-31"); }, kFormat + "неверно записана строка expires."},
      {[&] { resign("2026-11-22", "22.11.2026"); }, kFormat + "неверно записана строка expires."},
      {[&] { SetKeys("RW, x"); },
       kError + "Открытый ключ обновлений в параметре General\\UpdateKeys записан неверно: \"RW\".",
       0},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SetKeys(signature::PublicKeyText(key_.Public()));
    PublishSigned();
    good = sandbox_.Read(SignatureFile());
    sandbox_.Write("Продукт/TmWebUpdate.serial", "4\r\n");
    cases[i].attack();
    const std::string box = Refusal();
    EXPECT_TRUE(box.starts_with(cases[i].box)) << i << ": " << box;
    EXPECT_EQ(Requests().size(), cases[i].requests) << i;
    EXPECT_EQ(sandbox_.Read("Продукт/TmWebUpdate.serial"), "4\r\n") << i;
    std::filesystem::remove_all(ToPath(Path("server")));
  }
}

TEST_F(SignedTest, OnlyAnUpdaterThatTheSignatureBindsIsStarted) {
  release_.needed_updater = "1.9999";
  release_.updater_components = {{"next", sandbox_.Write("next", "new updater")}};
  PublishSigned();
  // Their lines are part of what is signed.
  Change("next|11", "next|12");
  EXPECT_TRUE(Refusal().starts_with(kNotTrusted));
  EXPECT_TRUE(processes_.starts.empty());
  PublishSigned();
  Run();
  EXPECT_TRUE(has_exited_);
  EXPECT_EQ(processes_.starts.size(), 1U);
}

TEST_F(SignedTest, ABadPairOfTheFirstServerSendsTheRunToTheSecond) {
  PublishSigned();
  url_ = server_.Url("/first/");
  fallback_url_ = server_.Url("/");
  const std::string good = sandbox_.Read(kDigest);
  const Log bad = {"<html>", Replaced(good, "3.6.0.2", "3.6.0.9"), good};
  for (std::size_t i = 0; i < bad.size(); ++i) {
    sandbox_.Write("server/first/TMW_version.dat", bad[i]);
    if (i == 1) Sign(other_key_, "first/");
    cancel_at_ = "main Выбор сервера для загрузки...";
    EXPECT_EQ(Run(), Log{}) << i;
    EXPECT_EQ(Requests().at(i == 0 ? 1 : 2), "/TMW_version.dat");
    EXPECT_EQ(Requests().size(), i == 0 ? 4U : 5U);
  }
  // Neither is good: both reasons, that of the first server first.
  cancel_at_.clear();
  sandbox_.Write(kDigest, good + "x");
  const std::string box = Refusal();
  EXPECT_TRUE(box.starts_with(kNotTrusted + "Подпись не загружена: "));
  EXPECT_LT(box.find("/first/TMW_version.dat."), box.rfind("\r\nПодпись не загружена: ")) << box;
  std::filesystem::remove_all(ToPath(Path("server")));
  EXPECT_TRUE(Refusal().starts_with(kError + "Ошибка загрузки файла с информацией о версии:\r\n"));
}

TEST_F(SignedTest, ASettingReplacesBuiltInKeysUnlessTheEnvironmentChoseItsFile) {
  const std::string one = signature::PublicKeyText(key_.Public());
  const std::string two = signature::PublicKeyText(other_key_.Public());
  const struct {
    std::string built_in, set;
    bool is_chosen;
    Log keys;  // none: the reason names the word "faulty"
  } cases[] = {{"", "", false, {}},
               {one, "", false, {one}},
               {one, " ,", false, {one}},
               {one, two, false, {two}},
               {one, two, true, {one}},
               {"", two, true, {two}},
               {" ", two, true, {two}},
               {one + " " + two, "", true, {one, two}},
               {"", "\t" + one + ";;" + two + "\r\n", false, {one, two}}};
  for (const auto& c : cases) {
    SetKeys(c.set);
    settings_.is_chosen_by_environment = c.is_chosen;
    std::vector<signature::PublicKey> keys;
    std::string reason;
    ASSERT_TRUE(tmw::TryReadUpdateKeys(c.built_in, keys, reason)) << reason;
    Log texts;
    for (const signature::PublicKey& key : keys)
      texts.push_back(signature::PublicKeyText(key));
    EXPECT_EQ(texts, c.keys) << c.built_in << "|" << c.set;
  }
  std::vector<signature::PublicKey> keys;
  std::string reason;
  settings_.is_chosen_by_environment = false;
  SetKeys(one + " faulty");
  EXPECT_FALSE(tmw::TryReadUpdateKeys("", keys, reason));
  EXPECT_TRUE(keys.empty());
  settings_ = {};
  settings_.Set(ports::SettingsRoot::kMachine, kUpdateKeys, 1);
  EXPECT_FALSE(tmw::TryReadUpdateKeys(one, keys, reason)) << "of another type";
  EXPECT_TRUE(reason.ends_with("должен быть строкой (REG_SZ).")) << reason;
}

}  // namespace
}  // namespace tests
