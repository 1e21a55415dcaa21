#include "engine/signed_digest.h"
#include "engine/update_keys.h"
#include "foundation/contract_names.h"
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

const std::string kUnchanged = "На данном компьютере ничего не изменено.";
const std::string kNotTrusted = kError +
                                "Подлинность файла с информацией о версии не подтверждена, поэтому "
                                "обновление не проводится. " +
                                kUnchanged + "\r\n\r\n";
const std::string kDigest = "server/TMW_version.dat";
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
    settings_.Set(ports::SettingsRoot::kMachine,
                  "SOFTWARE\\Kestrel Soft\\Tamrin\\General\\UpdateKeys", keys);
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
  const std::string differs = kNotTrusted + "Подпись не соответствует файлу " + url + ".";
  const std::string malformed = kNotTrusted + "Подпись файла " + url + " повреждена.";
  const std::string unknown = kNotTrusted + "Файл " + url + " подписан ключом ";
  const auto expired = [&](const std::string& day) {
    return kError + "Срок действия файла с информацией о версии истек: последний день — " + day +
           ", сегодня — 2026-11-22. " + kUnchanged;
  };
  // Signed anew after the change.
  const auto resigned = [&](const std::string& piece, const std::string& instead) {
    return [=, this] {
      Change(piece, instead);
      Sign(key_);
    };
  };
  // Put in the place of the signature.
  const auto instead_of_signature = [&](std::string (*made_of)(const std::string&)) {
    return [=, this] { sandbox_.Write(SignatureFile(), made_of(sandbox_.Read(SignatureFile()))); };
  };
  const struct {
    const char* what;
    std::function<void()> attack;
    std::string box;  // its beginning
    std::size_t requests;
  } cases[] = {
      {"digest changed, old signature elsewhere", [&] { Change("3.6.0.2", "3.6.0.3"); },
       kNotTrusted + "Подпись не загружена: ", 2},
      {"digest swapped, signature kept",
       [&] {
         const std::string signature = sandbox_.Read(SignatureFile());
         Change("3.6.0.2", "3.6.0.3");
         sandbox_.Write(SignatureFile(), signature);
       },
       differs, 2},
      {"signed by another key", [&] { Sign(other_key_); }, unknown, 2},
      {"signature of the server list",
       [&] {
         const std::string list = sandbox_.Read("server/TMW_links.dat");
         sandbox_.Write(SignatureFile(), key_.Sign(list, ""));
       },
       differs, 2},
      {"trusted comment changed",
       instead_of_signature(+[](const std::string& s) { return Replaced(s, "a test", "a Test"); }),
       differs, 2},
      {"older kind",
       instead_of_signature(+[](const std::string& s) { return Replaced(s, "\nRU", "\nRW"); }),
       kNotTrusted + "Подпись файла " + url + " сделана способом, который больше не принимается.",
       2},
      {"cut", instead_of_signature(+[](const std::string& s) { return s.substr(0, 150); }),
       malformed, 2},
      {"empty", instead_of_signature(+[](const std::string&) { return std::string(); }), malformed,
       2},
      {"garbage",
       instead_of_signature(+[](const std::string&) { return std::string(999, '\xFF'); }),
       malformed, 2},
      {"endless",
       instead_of_signature(+[](const std::string& s) { return s + std::string(5000, '\n'); }),
       kNotTrusted + "Подпись не загружена: ", 2},
      {"a network that wants a login",
       [&] { sandbox_.Write(kDigest, "\r\n <html>sign in</html>"); },
       kError + "По адресу " + url +
           " вместо файла с информацией о версии получена веб-страница: похоже, сеть требует входа "
           "через браузер. " +
           kUnchanged,
       1},
      {"another product", resigned("product:TMW", "product:TMX"),
       kError + "Файл с информацией о версии подписан для другого программного продукта (TMX). ",
       2},
      {"product in other letters", resigned("product:TMW", "product:tmw"),
       kError + "Файл с информацией о версии подписан для другого программного продукта (tmw). ",
       2},
      {"no product", resigned("product:TMW\r\n", ""), kFormat + "нет строки product.", 2},
      {"no manifest", resigned("manifest:", "manifests:"), kFormat + "нет строки manifest.", 2},
      {"no serial", resigned("serial:5\r\n", ""), kFormat + "нет строки serial.", 2},
      {"no last day", resigned("expires:2026-11-22\r\n", ""), kFormat + "нет строки expires.", 2},
      {"two products", resigned("serial:", "Product:TMW\r\nserial:"),
       kFormat + "дважды встречается строка product.", 2},
      {"two manifests", resigned("serial:", "manifest:1\r\nserial:"),
       kFormat + "дважды встречается строка manifest.", 2},
      {"two serials", resigned("serial:5", "serial:9\r\nserial:5"),
       kFormat + "дважды встречается строка serial.", 2},
      {"two last days", resigned("expires:", "expires:2030-01-01\r\nexpires:"),
       kFormat + "дважды встречается строка expires.", 2},
      {"no size", resigned("manifest:", "manifest:x"),
       kFormat + "неверно записана строка manifest.", 2},
      {"no number", resigned("serial:5", "serial:-5"), kFormat + "неверно записана строка serial.",
       2},
      {"no day", resigned("2026-11-22", "2026-11-31"), kFormat + "неверно записана строка expires.",
       2},
      {"a day in other digits", resigned("2026-11-22", "22.11.2026"),
       kFormat + "неверно записана строка expires.", 2},
      {"yesterday", resigned("2026-11-22", "2026-11-21"), expired("2026-11-21"), 2},
      {"replayed", resigned("serial:5", "serial:3"),
       kError +
           "Сервер отдает устаревший файл с информацией о версии: его номер 3, а раньше уже "
           "был получен номер 4. " +
           kUnchanged,
       2},
      {"replayed and expired", resigned("serial:5\r\nexpires:2026", "serial:3\r\nexpires:2025"),
       kError + "Сервер отдает устаревший файл с информацией о версии: его номер 3", 2},
      {"a malformed key", [&] { SetKeys("RW, x"); },
       kError + "Открытый ключ обновлений записан неверно: \"RW\". Проверьте параметр "
                "General\\UpdateKeys в настройках программы.",
       0},
  };
  for (const auto& c : cases) {
    SetKeys(signature::PublicKeyText(key_.Public()));
    PublishSigned();
    sandbox_.Write("Продукт/TmWebUpdate.serial", "4\r\n");
    c.attack();
    const std::string box = Refusal();
    EXPECT_TRUE(box.starts_with(c.box)) << c.what << ": " << box;
    EXPECT_EQ(Requests().size(), c.requests) << c.what;
    EXPECT_EQ(sandbox_.Read("Продукт/TmWebUpdate.serial"), "4\r\n") << c.what;
    std::filesystem::remove_all(ToPath(Path("server")));
  }
}

TEST_F(SignedTest, WhatTheSignedManifestBindsCannotBeSwapped) {
  SetMode(false);
  release_.dict = "Справочник1";
  release_.dict_text = "Table:Справочник1\r\n";
  PublishSigned();
  const std::string folder = "server/TMW_3.6.0.2/";
  const std::string hash = "Контрольная сумма файла не совпадает с ожидаемой.";
  const struct {
    const char* file;
    std::string piece, instead;  // of the same length
    std::string box;             // its end
  } cases[] = {
      {"_PackageManifest.tmz", "help.txt", "HELP.txt", NotAnnounced()},
      {"f1.tmz", "new program", "bad program", "Программа.dll:\r\n" + hash},
      {"Справочник1.table.tmz", "S", "s", ".table:\r\n" + hash},
      {"updates.tmz", "script", "SCRIPT", "updates.tmz:\r\n" + hash},
      {"structures.tmz", "script", "SCRIPT", "structures.tmz:\r\n" + hash},
  };
  for (const auto& c : cases) {
    const std::string good = sandbox_.Read(folder + c.file);
    Release other = release_;
    // Packages with other contents and good sums of their own.
    if (c.piece == "new program") other.files[0].content = c.instead;
    if (c.piece == "help.txt") other.files[1].name = c.instead;
    if (c.piece == "S") other.dict_text = "TABLE:Справочник1\r\n";
    if (c.piece == "script") {
      sandbox_.Write(folder + c.file, Replaced(good, c.piece, c.instead));
    } else {
      const std::string digest = sandbox_.Read(kDigest);
      WriteRelease(other, sandbox_.Path("other"), server_.Url(""));
      sandbox_.Write(folder + c.file, sandbox_.Read("other/TMW_3.6.0.2/" + std::string(c.file)));
    }
    front_end_.answers = {true};
    Run();
    EXPECT_TRUE(front_end_.log.back().ends_with(c.box)) << c.file << front_end_.log.back();
    EXPECT_FALSE(updated_);
    EXPECT_FALSE(sandbox_.Has("Продукт/help.txt"));
    sandbox_.Write(folder + c.file, good);
    std::filesystem::remove_all(ToPath(Path("tmp/TMW_WebUpdate")));
  }
}

TEST_F(SignedTest, OnlyAnUpdaterThatTheSignatureBindsIsStarted) {
  release_.needed_updater = "1.9999";
  release_.updater_components = {{"next", sandbox_.Write("next", "new updater")}};
  PublishSigned();
  sandbox_.Write("server/TMW_3.6.0.2/next", "bad updater");
  EXPECT_EQ(Refusal(), kError + "Контрольная сумма загруженного файла \"" +
                           server_.Url("/TMW_3.6.0.2/next") + "\" не совпадает с ожидаемой.");
  EXPECT_TRUE(processes_.starts.empty());
  // Their lines are part of what is signed.
  Change("next|11", "next|12");
  EXPECT_TRUE(Refusal().starts_with(kNotTrusted));
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
  SetKeys(one + " faulty");
  settings_.is_chosen_by_environment = false;
  EXPECT_FALSE(tmw::TryReadUpdateKeys("", keys, reason));
  EXPECT_TRUE(keys.empty());
}

}  // namespace
}  // namespace tests
