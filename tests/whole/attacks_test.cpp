#include <algorithm>

#include "tests/companion/rar_entries.h"
#include "tests/foundation/bad_names.h"
#include "tests/whole/attacks.h"

// Attacks by name and what becomes of each.
namespace tests {
namespace {

const std::string kFolder = "server/TMW_3.6.2.0/";
const std::string kWork = "tmp/TMW_WebUpdate/R 3.6.0.2/";
const std::string kSum = "Контрольная сумма файла не совпадает с ожидаемой.";

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += text;
  return all;
}

// Entities that grow tenfold at each of nine levels.
std::string EntityBomb() {
  std::string entities = "<!ENTITY a0 'ha'>";
  for (char level = '1'; level <= '9'; ++level) {
    const std::string lower = std::string("&a") + static_cast<char>(level - 1) + ";";
    entities += std::string("<!ENTITY a") + level + " '" + Repeated(lower, 10) + "'>";
  }
  return "<!DOCTYPE a [" + entities + "]>";
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool is_special = std::string_view("&<\"\t\r\n").find(c) != std::string_view::npos;
    escaped += is_special ? "&#" + std::to_string(c) + ";" : std::string(1, c);
  }
  return escaped;
}

std::string ManyAttributes() {
  std::string all;
  for (int i = 0; i < 100'000; ++i)
    all += " a" + std::to_string(i) + "=\"\"";
  return all;
}

std::string Replaced(std::string text, const std::string& piece, const std::string& instead) {
  return text.replace(text.find(piece), piece.size(), instead);
}

class Attacks : public AttackTest {
 protected:
  using Action = std::function<void()>;

  // The digest is changed and signed anew.
  Action Signed(const std::string& piece, const std::string& instead) {
    return [=, this] {
      release_.more_lines = Replaced(release_.more_lines, piece, instead);
      PublishSigned();
    };
  }

  Action WithManifest(const std::string& text, const std::string& instead) {
    return [=, this] {
      release_.manifest_edits = {{text, instead}};
      PublishSigned();
    };
  }

  Action Written(const std::string& file, const std::string& bytes) {
    return [=, this] { sandbox_.Write(file, bytes); };
  }

  Action Edited(const std::string& file, const std::string& piece, const std::string& instead) {
    return [=, this] {
      sandbox_.Write("server/" + file, Replaced(sandbox_.Read("server/" + file), piece, instead));
    };
  }

  // The first program's package.
  Action Packed(const EntryHeader& header, const std::string& content) {
    return Written(kFolder + "f1.tmz", Archive(RarFormat::kRar5, header, content));
  }

  Action Redirected(const std::string& place) {
    return [=, this] {
      AnswerWith([=](Peer& peer, const std::string& path) {
        return path.ends_with("/f1.tmz") &&
               peer.Send(
                   "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " +
                   place + "\r\n\r\n");
      });
    };
  }

  // Another release of the same version lies on the server; that file of it is served.
  Action Mixed(const std::string& file) {
    return [=, this] {
      Release other = good_;
      other.files[0].content = "bad program";
      other.dict_text.replace(0, 5, "TABLE");
      other.scripts[1].second.replace(other.scripts[1].second.find("2000"), 4, "1000");
      other.structures[0].second.replace(0, 5, "TABLE");
      WriteRelease(other, sandbox_.Path("other"), server_.Url(""));
      sandbox_.Write(kFolder + file, sandbox_.Read("other/TMW_3.6.2.0/" + file));
      std::filesystem::remove_all(ToPath(Path("other")));
    };
  }

  Action Linked(const std::string& place) {
    return [=, this] {
      std::filesystem::create_directories(ToPath(Path(place)).parent_path());
      std::filesystem::remove(ToPath(Path(place)));
      std::filesystem::create_symlink(ToPath(Path("own/books")), ToPath(Path(place)));
    };
  }

  Action WhenInstalling(const Action& action) {
    return [=, this] {
      on_line_ = [=](const std::string& line) {
        if (line == "icon install") action();
      };
    };
  }
};

TEST_F(Attacks, OnTheReleaseAndItsFiles) {
  const std::string bytes = "new program";
  const std::string name = "Программа.dll";
  EntryHeader link = FileHeader(name, "../../../../own/books");
  link.unix_mode = 0120777;
  EntryHeader bomb = FileHeader(name, bytes);
  bomb.size = 1U << 30U;
  signature::SecretKey stranger;
  stranger.Generate();
  const std::string built = kWork + "DBUpdates/Tamrin.mdb";
  const std::string unpacking = "Ошибка распаковки файла " + name;
  const std::string changed = "изменилась после того, как была построена";
  const std::string entities = "Описания сущностей (ENTITY) не допускаются.";
  // clang-format off
  const Attack attacks[] = {
      {"rollback: an older signed digest", Signed("serial:5", "serial:3"), "refused",
       "номер 3, а раньше уже был получен номер 4"},
      {"freeze: a digest that has expired", Signed("11-22", "11-21"), "refused",
       "Срок действия файла с информацией о версии истек"},
      {"fast-forward: a high serial, signed by a stranger", [&] {
         Signed("serial:5", "serial:99999")();
         Sign(stranger);
       }, "refused", "которого нет среди ключей этой программы"},
      {"fast-forward: a newer version, unsigned", Edited("TMW_version.dat", "3.6.2.0", "9.9.9.9"),
       "refused", "Подпись не загружена"},
      {"wrong product: the digest", Signed("product:TMW", "product:tmw"), "refused",
       "подписан для другого программного продукта (tmw)"},
      {"wrong product: the manifest", WithManifest("\"TMW\"", "\"ABC\""), "refused",
       "предназначен для другого программного продукта (TMW)"},
      {"mix of releases: the manifest", Mixed("_PackageManifest.tmz"), "refused",
       "не совпадает с объявленным в файле с информацией о версии"},
      {"mix of releases: a program", Mixed("f1.tmz"), "refused", name + ":\r\n" + kSum},
      {"mix of releases: a dictionary", Mixed("Banks.table.tmz"), "refused", kSum},
      {"mix of releases: the scripts", Mixed("updates.tmz"), "refused", kSum},
      {"mix of releases: the structures", Mixed("structures.tmz"), "refused", kSum},
      {"mix of releases: replaced while it is read", [&] {
         on_request_ = [&](const std::string& path) {
           if (!path.ends_with("Manifest.tmz") || release_.files[0].content != bytes) return;
           release_.files[0].content = "newer program";
           PublishSigned();
         };
       }, "retried"},
      {"path escape: look-alikes of dots and separators", [&] {
         release_.files[0].name = "\u2024\u2024\uFF0F\u2215evil";
         PublishSigned();
       }, "ignored"},
      {"package: an entry that climbs out", Packed(FileHeader("../../evil", bytes), bytes),
       "refused", unpacking},
      {"package: an absolute entry", Packed(FileHeader(Path("evil"), bytes), bytes), "refused",
       unpacking},
      {"package: a link", Packed(link, "../../../../own/books"), "refused", unpacking},
      {"package: an entry of another name", Packed(FileHeader("b", bytes), bytes), "refused",
       unpacking},
      {"package: announces a gibibyte", Packed(bomb, bytes), "refused", unpacking},
      {"package: more than the manifest announces",
       Packed(FileHeader(name, bytes + bytes), bytes + bytes), "refused",
       "Распакованные данные больше допустимого"},
      {"package: nothing in it", Packed(FileHeader(name, ""), ""), "refused",
       "Длина файла не совпадает с ожидаемой."},
      {"package: no package", Written(kFolder + "f1.tmz", "<html>"), "refused", unpacking},
      {"redirect: to a file of this computer", Redirected("file://" + Path("own/books")), "refused",
       "Протокол, указанный в адресе (URL), не поддерживается."},
      {"redirect: endless", Redirected("/TMW_3.6.2.0/f1.tmz"), "refused",
       "слишком много переходов"},
      {"server list: lines that are no servers", Edited("TMW_links.dat", "\r\n", "<html>\r\n\x01\r\n"
       "http:\r\n" + std::string(3000, 'x') + "\r\n"), "ignored"},
      {"server list: a folder of this computer", Written("server/TMW_links.dat", "file:///etc"),
       "refused", "Не удается определить адрес сервера по его имени."},
      {"XML: entities that grow", WithManifest("<KSUp", EntityBomb() + "<KSUp"), "refused", entities},
      {"XML: entities that grow, in a script", [&] {
         release_.scripts[0].second.insert(release_.scripts[0].second.find("<TMW"), EntityBomb());
         PublishSigned();
       }, "refused", entities},
      {"XML: an entity of this computer",
       WithManifest("<KSUp", "<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><KSUp"), "ignored"},
      {"XML: an attribute of 8 MiB",
       WithManifest(" Prod", " x=\"" + std::string(8 << 20, 'x') + "\" Prod"), "ignored"},
      {"XML: 100,000 attributes", WithManifest(" Prod", ManyAttributes() + " Prod"), "refused",
       "Слишком много атрибутов в одном элементе."},
      {"XML: 100,000 levels", WithManifest("<DataBase>", Repeated("<a>", 100'000) + "<DataBase>"),
       "refused", "Элементы вложены слишком глубоко."},
      {"planted: another program, as if loaded", Written(kWork + "Loaded/" + name, "bad program"),
       "ignored"},
      {"planted: a side file", Written(kWork + "Parts/" + name + ".tmz.part", "Rar!"), "retried"},
      {"planted: a longer side file",
       Written(kWork + "Parts/" + name + ".tmz.part", std::string(5000, 'x')), "ignored"},
      {"planted: a script",
       Written(kWork + "DBUpdates/0.xml", UpdateScript("3.6.0", "3.6.2", "delete from Книга")),
       "ignored"},
      {"planted: a structure", Written(kWork + "DBStruct/Заметки.tablestruct", "x"), "ignored"},
      {"planted: a database, as if built", Written(built, "evil"), "ignored"},
      {"planted: a new database beside the user's", Written("db/Tamrin.mdb.new", "evil"), "ignored"},
      {"planted: a folder where a file belongs", [&] {
         std::filesystem::remove(ToPath(Path("Продукт/help.txt")));
         sandbox_.Write("Продукт/help.txt/x", "");
       }, "refused", "На месте файла"},
      {"swap after verification: a program",
       WhenInstalling(Written(kWork + "Loaded/" + name, "bad program")), "refused",
       "изменился после проверки"},
      {"swap after verification: the database",
       WhenInstalling([&] { Execute(Path(built), {"delete from Книга"}); }), "refused", changed},
      {"swap after verification: the reference database",
       WhenInstalling(Written(kWork + "DBStruct/Tamrin_LastVer.mdb", "evil")), "refused", changed},
  };
  const Attack links[] = {
      {"planted: a link for an installed file", Linked("Продукт/help.txt"), "ignored"},
      {"planted: a link for a loaded file", Linked(kWork + "Loaded/help.txt"), "ignored"},
      {"planted: a link for an unpacked file", Linked(kWork + "Parts/help.txt"), "ignored"},
      {"planted: a link for the built database", Linked(built), "ignored"},
      {"planted: a link for a side file", Linked(kWork + "Parts/help.txt.tmz.part"), "refused",
       "Слишком много символьных ссылок."},
      {"planted: a link for the digest", Linked("tmp/TMW_WebUpdate/TMW_version.dat"), "refused",
       "Слишком много символьных ссылок."},
  };
  // clang-format on
  for (const Attack& attack : attacks)
    Try(attack);
  for (const Attack& attack : links)
    Try(attack);
}

// In each place where a run reads what a server sends. A minute lasts half a second here.
TEST_F(Attacks, ThatNeverEndOrTakeForever) {
  const auto clock = platform::MakeClock();
  ports_->clock = clock.get();
  FastClock fast_clock;
  const auto internet = platform::MakeInternet(ports::kInternetStallLimit / FastClock::kHaste);
  ports_->clock = &fast_clock;
  ports::Internet* const usual_internet = std::exchange(ports_->internet, internet.get());
  OpenSession(1);
  good_.more_lines.replace(good_.more_lines.find("2026"), 4, "9999");
  const std::string more = "Сервер передает больше данных, чем объявлено в списке файлов: \"" +
                           server_.Url("/TMW_3.6.2.0");
  const struct {
    const char* name;
    const char* ending;  // of the path
    std::string endless;
  } places[] = {{"digest", "TMW_version.dat", "информацией о версии"},
                {"signature", ".minisig", "Подпись не загружена"},
                {"server list", "TMW_links.dat", "Файла со списком серверов"},
                {"manifest", "_PackageManifest.tmz", "_PackageManifest.tmz"},
                {"program", "/f1.tmz", more + "/f1.tmz"},
                {"dictionary", "/Banks.table.tmz", more + "/Banks.table.tmz"},
                {"scripts", "/updates.tmz", more + "/updates.tmz"}};
  for (const auto& place : places) {
    for (const bool is_slow : {false, true}) {
      const auto prepare = [&] {
        AnswerWith([this, is_slow, ending = std::string(place.ending)](Peer& peer,
                                                                       const std::string& path) {
          if (!path.ends_with(ending)) return false;
          SendUntilCut(peer, std::string(is_slow ? 1 : 65536, 'x'), is_slow ? 100 : 0);
          return true;
        });
      };
      Try({std::string(is_slow ? "slow: " : "endless: ") + place.name, prepare, "cut",
           is_slow ? "Время ожидания" : place.endless});
    }
  }
  ports_->internet = usual_internet;
  OpenSession(1);
}

TEST_F(Attacks, NoNameOfAServerLeadsOutOfItsFolder) {
  struct Place {
    const char* name;
    std::string attribute;  // of the manifest, with its value; empty: see put
    std::function<void(const std::string& bad)> put{};
    bool may_have_folders = false;
  };
  const auto entry = [&](std::vector<std::pair<std::string, std::string>> Release::*package) {
    return [&, package](const std::string& bad) { (release_.*package).emplace_back(bad, "evil"); };
  };
  const Place places[] = {{"the version's identifier", "VersionID=\"R 3.6.0.2\""},
                          {"a folder", "name=\"{p}\"", {}, true},
                          {"a file", "OrigName=\"help.txt\""},
                          {"a package", "SrvName=\"f2.tmz\"", {}, true},
                          {"a dictionary", "TableName=\"Banks\""},
                          {"a user's table", "TableName=\"Книга\""},
                          {"the package of scripts", "SrvName=\"updates.tmz\""},
                          {"the package of structures", "SrvName=\"structures.tmz\""},
                          {"a script", "", entry(&Release::scripts), true},
                          {"a structure", "", entry(&Release::structures), true},
                          {"a part of the updater", "", [&](const std::string& bad) {
                             release_.needed_updater = "1.9999";
                             release_.more_lines +=
                                 "updater:" + bad + "|4|" + std::string(64, 'a') + "\r\n";
                           }}};
  is_silent_ = true;
  for (const Place& place : places) {
    std::size_t count = 0;
    std::string box;  // that the first name led to
    for (const Refused& refused : kBadNames) {
      for (const std::string& name : refused.names) {
        if (place.may_have_folders && (name.empty() || refused.reason == kSeparator)) continue;
        const auto prepare = [&] {
          if (place.put) {
            place.put(name);
          } else {
            const bool is_folder = place.attribute.starts_with("name");
            const std::size_t value = place.attribute.find('"') + 1;
            release_.manifest_edits = {{place.attribute, place.attribute.substr(0, value) +
                                                             (is_folder ? "{p}\\" : "") +
                                                             Escaped(name) + "\""}};
          }
          PublishSigned();
        };
        Try({std::string(place.name) + " " + name, prepare, "refused"});
        if (count++ == 0) box = front_end_.log.back();
      }
    }
    Print("path escape: " + std::to_string(count) + " names for " + place.name, box);
  }
}

}  // namespace
}  // namespace tests
