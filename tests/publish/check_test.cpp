#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "packages/rar_archive.h"
#include "publish/file_tree.h"
#include "publish/scripts.h"
#include "sha256/sha256.h"
#include "tests/publish/sample.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

const std::string kRelease = "server/TMW_3.6.0.2/";

// Replaces a piece of a file, which must contain it.
void Change(const Sandbox& sandbox, const std::string& file, const std::string& piece,
            const std::string& instead) {
  std::string bytes = sandbox.Read(file);
  const std::size_t at = bytes.find(piece);
  ASSERT_NE(at, std::string::npos) << piece << " in " << bytes;
  sandbox.Write(file, bytes.replace(at, piece.size(), instead));
}

// Announces the manifest that the release has now, if one is announced.
void Rebind(const Sandbox& sandbox) {
  const std::string package = sandbox.Read(kRelease + "_PackageManifest.tmz");
  std::string digest = sandbox.Read("server/TMW_version.dat");
  const std::size_t at = digest.find("manifest:");
  if (at == std::string::npos) return;
  digest.resize(at);
  sandbox.Write("server/TMW_version.dat", digest + "manifest:" + std::to_string(package.size()) +
                                              "|" + sha256::CSHA256().SHA256(package) + "\r\n");
}

void ChangeManifest(const Sandbox& sandbox, const std::string& piece, const std::string& instead) {
  std::string error;
  ASSERT_TRUE(tmw::UnrarAllFiles(sandbox.Path(kRelease + "_PackageManifest.tmz"),
                                 sandbox.Path("unpacked"), "", error));
  Change(sandbox, "unpacked/TMW_manifest.xml", piece, instead);
  Pack(sandbox, kRelease + "_PackageManifest.tmz",
       {{"TMW_manifest.xml", sandbox.Read("unpacked/TMW_manifest.xml")}});
  Rebind(sandbox);
}

struct Damage {
  std::function<void(const Sandbox&)> spoil;
  Log faults;  // a piece of each fault; there are no others
};

const std::string kTable = "Table:Ставки\r\nField:Ид|Long|4\r\nRows\r\n";

std::function<void(const Sandbox&)> Digest(const std::string& piece, const std::string& instead) {
  return [=](const Sandbox& box) { Change(box, "server/TMW_version.dat", piece, instead); };
}

std::function<void(const Sandbox&)> InManifest(const std::string& piece,
                                               const std::string& instead) {
  return [=](const Sandbox& box) { ChangeManifest(box, piece, instead); };
}

std::function<void(const Sandbox&)> Repacked(const std::string& package, const Contents& contents,
                                             bool with_trailer = false) {
  return [=](const Sandbox& box) {
    Pack(box, kRelease + package, contents, with_trailer);
    Rebind(box);
  };
}

std::function<void(const Sandbox&)> Written(const std::string& file, const std::string& bytes) {
  return [=](const Sandbox& box) {
    box.Write(file, bytes);
    Rebind(box);
  };
}

// Each is tried alone.
const std::vector<Damage>& Damages() {
  static const std::vector<Damage> damages = {
      {Written("server/TMW_version.dat", "3.6.0.2\n1.0\n"), {"do not all end", "than two lines"}},
      {Digest("3.6.0.2", "3.6.0"), {"The first line is no version of four"}},
      {Digest("1.0\r\nupdater", "1.1\r\n"), {"Updaters older than 1.1 would stop"}},
      {Digest("Updater.exe|", "Updater.DLL|"), {"no program: Updater.DLL", "Cannot be had as"}},
      {Digest("1.0", "x"), {"The second line is no version"}},
      {Digest("|7|", "|8|"), {"Updater.exe has 7 bytes instead of 8"}},
      {Digest("|7|", "|7 b|"), {"The size is no number"}},
      {Digest("|7|", ";7|"), {"a name, a size and a hash"}},
      {Digest("Updater", "..\\Updater"), {"The updater refuses it: "}},
      {Digest("Updater", "Up%64ater"), {"Nobody could download it", "Cannot be had as Up%64ater"}},
      {Digest("updater:", "updater:Updater.exe|7|x\r\nUPDATER:"),
       {"no SHA-256", "The name comes twice", "Its hash differs from the digest's"}},
      {Digest("manifest:", "manifest:1"), {"It is not the one that the digest announces"}},
      {Digest("manifest:", "Manifest:x"), {"manifest:x"}},
      {Digest("manifest:", "manifest:1|2\r\nmanifest:"),
       {"manifest:1|2: It is no size", "The line manifest: comes twice"}},
      {Digest("manifest:", "serial:-1\r\nexpires:2027-02-29\r\nmanifest:"),
       {"serial:-1: It is no number", "expires:2027-02-29: It is no day"}},
      {Written(kRelease + "Updater.exe", "upd4ter"), {"Its hash differs from the digest's"}},
      {Written("server/TMW_links.dat", " \r\n"), {"It names no server"}},
      {Written("server/TMW_links.dat",
               "gopher://a\r\nhttp://\r\nb c\r\nhttp://a/?b\r\nhttps://[::1]:80/a%20b"),
       {"TMW_links.dat:1: This is no address of a server: gopher://a.", "server: http://.",
        "server: b c.", "server: http://a/?b."}},
      {Written("server/TMW_links.dat", std::string(2 << 20, 'x')), {"longer than 1048576 bytes"}},
      {Written(kRelease + "_PackageManifest.tmz", "damaged"), {"_PackageManifest.tmz: Ошибка"}},
      {Repacked("_PackageManifest.tmz", {{"ABC_manifest.xml", "<a/>"}}), {"не найден в архиве"}},
      {Repacked("_PackageManifest.tmz", {{"TMW_manifest.xml", "<a>"}}), {"manifest: Cannot be"}},
      {InManifest("ProductID=\"TMW", "ProductID=\"ABC"), {"It is of another product: ABC"}},
      {InManifest("Version=\"3.6.0.2", "Version=\"3.6.0.3"), {"the digest announces 3.6.0.2"}},
      {InManifest("VersionID=\"R", "VersionID=\"a/b"), {"refuses VersionID"}},
      {InManifest(" VersionID=\"R 3.6.0.2\"", ""), {"Missing attribute", "refuses VersionID"}},
      {InManifest("OrigName=\"Calc.ocx\"", "OrigName=\"CALC.ocx\""), {}},
      {InManifest("OrigName=\"Calc.ocx\"", "OrigName=\"aux.ocx\""), {"refuses it: Недопустимое"}},
      {InManifest("\"files/tm/Calc.ocx.tmz\"", "\"../Calc.ocx\""), {"refuses it: Недопустимое"}},
      {InManifest("\"files/tm/Calc.ocx.tmz\"", "\"files/tm/Core.dll.tmz\""),
       {"has the name of", "bytes instead of", "не найден в архиве"}},
      {InManifest("\"files/tm/Calc.ocx.tmz\"", "\"files/tm/Calc%2Eocx.tmz\""),
       {"Calc.ocx: Nobody could download it", "Cannot be had as files/tm/Calc%2E"}},
      {InManifest("name=\"{p}tm\"", "name=\"{q}tm\""),
       {"unknown constant", "unknown constant", "unknown constant", "unknown constant"}},
      {InManifest("OrigSize=\"7\"", "OrigSize=\"8\""), {"It has 7 bytes instead of 8"}},
      {InManifest("OrigSize=\"7\"", "OrigSize=\"seven\""), {"seven", "7 bytes instead of 0"}},
      {InManifest("IsCom=\"yes\"", "IsCom=\"да\""), {"IsCom is neither"}},
      {InManifest("PackType=\"3\"", "PackType=\"4\""), {"Unknown pack method 4"}},
      {InManifest("PackType=\"1\"", "PackType=\"2\""),
       {"package lacks good integrity", "file lacks good integrity"}},
      {InManifest("<User TableName=\"Документы\"/>", "<User TableName=\"ставки\"/>"),
       {"The table comes twice", "no ставки.tablestruct"}},
      {InManifest("\"Документы\"", "\"dbversion\""), {"is never carried", "no dbversion.table"}},
      {InManifest(" <DBStruct", " <Structures"), {"0 elements DBStruct", "refuses it: "}},
      {InManifest("SrvName=\"_DBUpdates.tmz\"", "SrvName=\"a/b\""), {"refuses it: Недопустимое"}},
      {InManifest("PackHash=\"", "PackHash=\"0"), {"_DBUpdates.tmz: Its hash differs"}},
      {InManifest("PackSize=\"", "PackSize=\"1"), {"_DBUpdates.tmz has "}},
      {Written(kRelease + "files/tm/Calc.ocx.tmz", "damaged"), {"bytes instead of", "Ошибка при"}},
      {[](const Sandbox& box) {
         Change(box, kRelease + "files/tm/Calc.ocx.tmz", "control", "c0ntrol");
       },
       {"Архив поврежден"}},
      {Repacked("files/tm/Calc.ocx.tmz", {{"Calc.ocx", "CONTROL"}}), {"Its hash differs"}},
      {Repacked("files/tm/Core.dll.tmz", {{"Core.dll", "short"}}, true),
       {"bytes instead of", "file lacks good", "It has 5 bytes instead of 100064", "hash differs"}},
      {Repacked("Ставки.table.tmz",
                {{"Ставки.table", "\xFF\xFE" + Utf16(kTable + "EndRows\r\nEndTable\r\n")}}),
       {"bytes instead of", "hash of its text", "a byte-order mark?"}},
      {Repacked("Ставки.table.tmz",
                {{"Ставки.table", Utf16(kTable + "? (0x2011)\r\nEndRows\r\nEndTable\r\n")}}),
       {"bytes instead of", "hash of its text", "could not import it: line 4"}},
      {Repacked("_DBStruct.tmz",
                {{"Документы.tablestruct", "Table:Т\r\nField:a|U13|4\r\nEndTable\r\n"}}),
       {"_DBStruct.tmz has", "_DBStruct.tmz: Its hash", "could not import it: line 2"}},
      {Repacked("_DBUpdates.tmz", {}), {"_DBUpdates.tmz has", "_DBUpdates.tmz: Its hash"}},
  };
  return damages;
}

TEST(Check, EveryKindOfDamageIsReportedAndNothingElse) {
  const Sandbox sandbox;
  const Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  ASSERT_EQ(Sample::Check(sample.options.output), Log{});
  for (std::size_t i = 0; i < Damages().size(); ++i) {
    const Damage& damage = Damages()[i];
    const Sandbox box;
    std::filesystem::copy(ToPath(sandbox.Path("server")), ToPath(box.Path("server")),
                          std::filesystem::copy_options::recursive);
    damage.spoil(box);
    const Log faults = Sample::Check(box.Path("server"));
    EXPECT_EQ(faults.size(), damage.faults.size()) << i << testing::PrintToString(faults);
    for (const std::string& fault : damage.faults)
      EXPECT_TRUE(HasFault(faults, fault)) << i << fault << testing::PrintToString(faults);
  }
}

TEST(Check, AllFaultsAreReportedAtOnce) {
  const Sandbox sandbox;
  const Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  Log expected;
  for (const std::size_t i : {5U, 17U, 34U, 36U, 41U, 45U}) {
    Damages()[i].spoil(sandbox);
    expected.insert(expected.end(), Damages()[i].faults.begin(), Damages()[i].faults.end());
  }
  const Log faults = Sample::Check(sample.options.output);
  EXPECT_EQ(faults.size(), expected.size()) << testing::PrintToString(faults);
  for (const std::string& fault : expected)
    EXPECT_TRUE(HasFault(faults, fault)) << fault << testing::PrintToString(faults);
}

TEST(Scripts, WhatTheUpdaterWouldRefuseIsReported) {
  const std::string head = "<?xml version=\"1.0\"?>";
  const auto script = [&](const std::string& from, const std::string& to,
                          const std::string& actions = "") {
    return head + "<TMW_Database_Update db_version_from=\"" + from + "\" db_version_to=\"" + to +
           "\">" + actions + "</TMW_Database_Update>";
  };
  const struct {
    Contents scripts;
    std::string oldest;
    Log faults;
  } cases[] = {
      {{{"a", script("3.5.0", "3.6")}}, "", {"a.xml:1: db_version_to is not"}},
      {{{"a", script("3.5.0", "3.5.9")}}, "", {"a.xml:1: No script leads on from version 3.5.9"}},
      {{{"a", script("3.5.0", "3.6.1")}}, "", {"a.xml:1: It leads from 3.5.0 to 3.6.1, beyond"}},
      {{{"a", script("3.6.0", "3.6.1")}}, "3.7.0", {"From: 3.7.0 is newer than the release"}},
      {{{"a", script("3.5.0", "3.6.0")}}, "3.6.0", {}},
      {{{"a", script("3.5.0", "3.6.0")}}, "3.4.0", {"From: No script leads on from version 3.4"}},
      {{{"a", script("3.5.0", "3.6.0")},
        {"b", script("3.5.0", "3.5.9")},
        {"c", script("3.5.9", "3.6.0")}},
       "",
       {"b.xml:1: Starts from 3.5.0, as a.xml:1 does."}},
      {{{"a", script("3.6.0", "3.6.0")}}, "", {"a.xml:1: It ends at no later"}},
      {{{"a", script("3.05.0", "3.6.0")}},
       "3.5.0",
       {"a.xml:1: The updater looks for the script of version 3.5.0", "From: No script leads"}},
      {{{"a",
         script("3.5.0", "3.6.0",
                "\n<Action type=\"sql\">delete from [A;B]; delete form T;\n drop tabel T</Action>\n"
                "<!-- <x> -->\n<Action type=\"addfield\" Table=\"t\" FieldName=\"f\" "
                "Type=\"text\" Size=\"2O\"/><Acton/><Action type=\"sql\" Suppress=\"no\"/>")}},
       "",
       {"a.xml:2: Statement 2 cannot be read: ", "a.xml:2: Statement 3 cannot be read: ",
        "a.xml:5: The updater refuses it: ", "knows no Acton here", "knows no Suppress here"}},
      {{{"a", head + "<ABC_Database_Update/>"}}, "", {}},
      {{{"a", head + "<Update/>"}}, "", {"a.xml:1: The root element has a wrong name"}},
      {{{"a", "<TMW_Database_Update/>"}, {"b", head + "<!-- --><TMW_Database_Update/>"}},
       "",
       {"a.xml: It does not begin", "b.xml: It does not begin"}},
      {{{"a", script("3.5.0", "3.6.0",
                     "<Action type=\"SQL\"/><Action/><Action type=\"customscript\" Name=\"x\"/>"
                     "<Action type=\"addfield\" Table=\"t\" FieldName=\"f\" Type=\"Text\"/>")}},
       "",
       {"Unknown type of an action: SQL", "Action[2] has no type", "Unknown migration: x",
        "Unknown type of a field: Text"}},
  };
  for (const auto& c : cases) {
    const Sandbox sandbox;
    for (const auto& [name, text] : c.scripts)
      sandbox.Write(name + ".xml", text);
    publish::Faults faults;
    publish::CheckChain(publish::ReadScripts(sandbox.Path(), faults), {c.oldest, "From"}, "3.6.0.2",
                        faults);
    Log lines;
    for (const publish::Fault& fault : faults.All())
      lines.push_back(fault.place + ": " + fault.text);
    EXPECT_EQ(lines.size(), c.faults.size()) << testing::PrintToString(lines);
    for (const std::string& fault : c.faults)
      EXPECT_TRUE(HasFault(lines, fault)) << fault << testing::PrintToString(lines);
  }
}

}  // namespace
}  // namespace tests
