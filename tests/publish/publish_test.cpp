#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "foundation/command_line.h"
#include "ports/database.h"
#include "ports/file_lock.h"
#include "ports/processes.h"
#include "publish/checker.h"
#include "publish/difference.h"
#include "publish/file_tree.h"
#include "publish/product_files.h"
#include "sha256/sha256.h"
#include "tests/fakes/faulty_file_system.h"
#include "tests/publish/sample.h"
#include "tests/support/caught.h"
#include "tests/support/processes.h"
#include "tests/support/scoped_ports.h"

namespace tests {
namespace {

using Log = std::vector<std::string>;

TEST(Publish, TheRootHasItsTwoTextsAndTheReleaseItsListing) {
  const Sandbox sandbox;
  Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  EXPECT_EQ(sandbox.Read("server/TMW_links.dat"), "http://one.example/\r\ntwo.example\r\n");
  const std::string package = sandbox.Read("server/TMW_3.6.0.2/_PackageManifest.tmz");
  EXPECT_EQ(sandbox.Read("server/TMW_version.dat"),
            "3.6.0.2\r\n1.0\r\nupdater:Updater.exe|7|"
            "196c23750e800642e7c008dc0416536449f295069c8161c23283c86334f8d251\r\nmanifest:" +
                std::to_string(package.size()) + "|" + sha256::CSHA256().SHA256(package) + "\r\n");
  const std::string listing = sandbox.Read("server/TMW_3.6.0.2/_Listing.txt");
  for (const char* const name :
       {"\tfiles/tm/Core.dll.tmz\t{p}tm Core.dll\n", "{p}tm Reg.dll, COM\n", "{p}Help Счёт №1.htm",
        "\tСтавки.table.tmz\tdictionary Ставки\n", "{p}tm\\Тексты Бланк.uni"})
    EXPECT_NE(listing.find(name), std::string::npos) << name << listing;
  for (const char* const name : {"DBVersion", "TempLog", "pdb"})
    EXPECT_EQ(listing.find(name), std::string::npos) << name << listing;
}

TEST(Publish, TheSameInputGivesTheSameBytesWhateverTheTimesOfFiles) {
  const Sandbox sandbox;
  Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  const std::string first = Everything(sandbox, "server");
  const std::filesystem::path file = ToPath(sandbox.Path("product/tm/Core.dll"));
  std::filesystem::last_write_time(
      file, std::filesystem::file_time_type::min() + std::chrono::hours(24 * 365 * 20));
  EXPECT_EQ(sample.Publish().size(), 1U) << "it is there already";
  sample.options.may_replace = true;
  ASSERT_EQ(sample.Publish(), Log{});
  EXPECT_TRUE(Everything(sandbox, "server") == first);
}

// All faults are reported, and nothing is published.
TEST(Publish, FaultyInputIsRefusedByName) {
  const struct {
    std::function<void(Sample&, const Sandbox&)> spoil;
    Log faults;  // the beginning of each
  } cases[] = {
      {[](Sample& s, const Sandbox&) {
         s.Describe("Product=\"TMW\"", "Product=\"ABC\" Colour=\"red\"");
         s.Describe("3.6.0.2\" V", "3.6.0\" V");
         s.Describe("R 3.6.0.2", "..");
         s.Describe("2026-11-20", "2026-02-30");
         s.Describe("MinVersion=\"1.0\"", "MinVersion=\"1.0.0\"");
         s.Describe("Updater.exe", "Core.dll");
         s.Describe("IsCom=\"yes\"", "IsCom=\"perhaps\"");
         s.Describe("PackType=\"3\"", "PackType=\"4\"");
         s.Describe("<Skip ", "<Skp ");
       },
       {"/Release/@Colour: is no attribute", "/Release/@Product: must be \"TMW\"",
        "/Release/@Version: must be four", "/Release/@VersionID: ", "/Release/@Date: is a day",
        "/Release/Updater/@MinVersion: ", "@MinVersion: The updater starts the first of its files",
        "/Release/Files/File[1]/@IsCom: is", "/Release/Files/File[3]/@PackType: is 1, 2 or 3",
        "/Release/Database/Skp: is not known"}},
      {[](Sample& s, const Sandbox&) { s.description = "<Release>"; },
       {"release.xml: Cannot be read:\n   Reason: "}},
      {[](Sample& s, const Sandbox&) {
         s.Describe("<Folder Source=\"tm\" Target=\"{p}tm\"/>", "");
         s.Describe("tm/Core.dll", "tm/Kore.dll");
         s.Describe("Документы", "Документ");
         s.Describe("<Dict Mask=\"*\"/>", "");
         s.Describe("3.5.0", "3.4.0");
       },
       {"tm/Calc.ocx: No Folder", "tm/Core.dll: No Folder", "tm/Reg.dll: No Folder",
        "tm/Updater.exe: No Folder", "tm/Тексты/Бланк.uni: No Folder",
        "release.xml:9: /Release/Files/File[2]/@Mask: \"tm/Kore.dll\" matches no file",
        "/@From: No script leads on from version 3.4.0 to 3.6.0.",
        "Документы: The description does not say", "Ставки: The description does not say",
        "release.xml:16: /Release/Database/User/@Mask: \"Документ\" matches no table"}},
      {[](Sample& s, const Sandbox&) {
         s.Execute("create table Blob (a long primary key, b binary)");
         const auto db =
             ports::CurrentPorts().database->OpenDatabase(s.options.database, true, false);
         const auto rows = db->OpenRecordset("Blob", ports::RecordsetType::kTable);
         rows->AddNew();
         rows->SetValue(0, 1);
         rows->SetValue(1, ports::BinaryValue{"x"});
         rows->Update();
         db->Close();
       },
       {"Blob: The updater could not import it: line 6: Unrecognizing value"}},
      {[](Sample& s, const Sandbox&) {
         s.Execute("create table Holes (a long, b long)");
         s.Execute("insert into Holes values (null, 5)");
         s.Execute("create table Con (a long)");
       },
       {"Holes: The updater could not import it: line 5: ", "Con: The updater refuses it: "}},
      {[](Sample& s, const Sandbox& box) {
         s.Execute("create table [Счет#1] (a long)");
         box.Write("product/tm/50%.exe", "%");
         s.Describe("tm/Updater.exe", "tm/50%.exe");
       },
       {"Счет#1: Nobody could download it", "tm/50%.exe: Nobody could download it"}},
      {[](Sample& s, const Sandbox& box) {
         box.Write("product/Справка/Ставки.table", "file");
         s.Describe("\"{p}Help\"", "\"{p}Help\\..\"");
         s.Describe("tm/Updater.exe", "tm/Gone.exe");
         s.options.output = box.Path("product/server");
       },
       {"server: It lies in the product's folder",
        "tm/Gone.exe: This file of the updater is missing.",
        "{p}Help\\.. empty: The updater refuses it: Недопустимая папка",
        "{p}Help\\.. Ставки.table: The updater", "{p}Help\\.. Счёт №1.htm: The updater",
        "Ставки: A program file has the name of the table's file."}},
      {[](Sample& s, const Sandbox& box) {
         s.Describe("MinVersion=\"1.0\"", "MinVersion=\"3.13\"");
         box.Write("product/tm/Updater.exe", PeImage(32, "", 4 << 16 | 12));
         s.Describe("Source=\"tm\"", "Source=\"\"");
         s.Describe("Source=\"Справка\"", "Source=\"Спавка\"");
         s.Describe("Mask=\"Reg.dll\"", "Mask=\"Reg*\"");
         s.Describe("two.example", "htp://two.example");
         s.Describe("one.example", "one,example");
         box.Write("product/tm/Reg.txt", "text");
         box.Write("product/tm/Reg64.dll", PeImage(64, "DllRegisterServer", 0));
         box.Write("product/tm/Reg0.dll", PeImage(32, "DllRegisterServer2", 0));
         s.WriteScript("3.xml", "3.5.8", "3.6.1");
         s.Execute("create table MSysOwn (a long)");
       },
       {"release.xml:3: /Release/Updater/@MinVersion: It demands updaters of version 3.13, but "
        "tm/Updater.exe, by which older ones replace themselves, has version 4.12",
        "release.xml:7: /Release/Files/Folder[2]/@Source: \"Спавка\" matches no file",
        "release.xml:4: /Release/Servers/Server[1]/@Url: This is no address of a server",
        "/Server[2]/@Url: This is no address of a server: htp://two.example",
        "release.xml:8: /Release/Files/File[1]/@Mask marks it as IsCom, but it is no program",
        "tm/Reg64.dll: ", "tm/Reg0.dll: ",
        "3.xml:2: It leads from 3.5.8 to 3.6.1, beyond the release's version 3.6.0",
        "MSysOwn: The table holds a database's version or belongs"}},
      {[](Sample& s, const Sandbox& box) {
         box.Write("product/Справка/core.DLL", "other");
         box.Write("product/tm/bad.uni", "\xFF\xFEx");
         box.Write("ready.rar", "no package");
         s.Describe("<File Mask=\"*.pdb",
                    "<File Mask=\"empty\" Package=\"ready.rar\"/><File Mask=\"Calc*\" "
                    "Package=\"gone.rar\"/><File Mask=\"*.pdb");
       },
       {"Справка/empty: Its package ", "tm/Calc.ocx: Cannot read ",
        "tm/bad.uni: It is no UTF-16 text", "{p}tm Core.dll: The updater keeps one content"}},
  };
  for (const auto& c : cases) {
    const Sandbox sandbox;
    Sample sample(sandbox);
    c.spoil(sample, sandbox);
    const Log faults = sample.Publish();
    EXPECT_EQ(faults.size(), c.faults.size());
    for (const std::string& expected : c.faults)
      EXPECT_TRUE(HasFault(faults, expected)) << expected << testing::PrintToString(faults);
    EXPECT_FALSE(sandbox.Has("server/TMW_version.dat"));
    EXPECT_FALSE(sandbox.Has("server/TMW_3.6.0.2"));
    EXPECT_FALSE(sandbox.Has("server/TMW_3.6.0.2.new"));
  }
}

TEST(Publish, WhatTheAnnouncedReleaseHasOtherwiseIsNoticed) {
  const Sandbox sandbox;
  Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  sample.Describe("Version=\"3.6.0.2", "Version=\"3.6.0.3");
  sample.Describe("<User Mask=\"Документы\"/>", "");
  sample.Describe("{p}Help", "{p}Hepl");
  const std::string refused = "Документы: In the announced release 3.6.0.2 it is a user's table";
  const Log faults = sample.Publish();
  EXPECT_TRUE(faults.size() == 1 && HasFault(faults, refused)) << testing::PrintToString(faults);
  sample.Describe("<Dict Mask=\"*\"", "<Dict Mask=\"*\" TakesOver=\"yes\"");
  sandbox.Write("release.xml", sample.description);
  tools::Progress progress(false);
  publish::Faults found;
  publish::Publish(sample.options, progress, found);
  ASSERT_EQ(found.All().size(), 0U);
  ASSERT_EQ(found.Warnings().size(), 3U);
  EXPECT_EQ(found.Warnings()[1].place, "{p}Hepl empty");
  EXPECT_EQ(found.Warnings()[1].text,
            "In the announced release 3.6.0.2 it lies in {p}Help, where the old file will stay.");
}

TEST(Publish, AReadyMadePackageIsTakenAsItIs) {
  const Sandbox sandbox;
  Sample sample(sandbox);
  sample.Describe("<File Mask=\"*.pdb",
                  "<File Mask=\"Счёт*\" Package=\"ready.rar\"/><File Mask=\"*.pdb");
  Pack(sandbox, "ready.rar", {{"readme", "of the packer"}, {"Счёт №1.htm", "help"}});
  ASSERT_EQ(sample.Publish(), Log{});
  EXPECT_NE(Everything(sandbox, "server/TMW_3.6.0.2/files").find(sandbox.Read("ready.rar")),
            std::string::npos);
  EXPECT_EQ(Sample::Check(sample.options.output), Log{});
}

// A newer release in a root where an older one is announced.
class Interrupted : public testing::Test {
 protected:
  Interrupted() {
    sample_.Publish();
    old_ = sandbox_.Read("server/TMW_version.dat");
    sample_.Describe("Version=\"3.6.0.2", "Version=\"3.6.0.3");
    sandbox_.Write("release.xml", sample_.description);
  }

  // Whatever has happened, a complete release is announced, and the next run succeeds.
  void ExpectWhole(const std::string& when) {
    EXPECT_EQ(Sample::Check(sample_.options.output), Log{}) << when;
    // Only a release that the run has managed to announce needs permission to be replaced.
    sample_.options.may_replace = sandbox_.Read("server/TMW_version.dat") != old_;
    EXPECT_EQ(sample_.Publish(), Log{}) << when;
    EXPECT_EQ(Sample::Check(sample_.options.output), Log{}) << when;
    EXPECT_NE(sandbox_.Read("server/TMW_version.dat"), old_);
    EXPECT_FALSE(sandbox_.Has("server/TMW_3.6.0.3.new")) << when;
  }

  const Sandbox sandbox_;
  Sample sample_{sandbox_};
  std::string old_;
};

TEST_F(Interrupted, AFaultAtAnyStepLeavesTheOldReleaseAnnounced) {
  const ScopedPorts ports;
  FaultyFileSystem files(*ports->files);
  ports->files = &files;
  files.log.clear();
  ASSERT_EQ(sample_.Publish(), Log{});
  const auto renames = std::count(files.log.begin(), files.log.end(), "rename");
  ASSERT_GE(renames, 3) << "the release, the server list, the digest";
  for (std::int64_t step = 0; step < renames + 3; ++step) {
    sandbox_.Write("server/TMW_version.dat", old_);
    std::filesystem::remove_all(ToPath(sandbox_.Path("server/TMW_3.6.0.3")));
    files.rename_codes.assign(static_cast<std::size_t>(step), 0);
    files.rename_codes.push_back(FaultyFileSystem::kBroken);
    if (step >= renames) {
      files.rename_codes.clear();
      files.write_budget = 1 + 60'000 * static_cast<std::size_t>(step - renames);
    }
    EXPECT_NE(Caught([&] { sample_.Publish(); }).Number, 0) << step;
    EXPECT_EQ(sandbox_.Read("server/TMW_version.dat"), old_) << step;
    files.rename_codes.clear();
    files.write_budget.reset();
    ExpectWhole("step " + std::to_string(step));
  }
  sample_.options.may_replace = true;
  for (std::int64_t step = 0; step <= renames; ++step) {
    files.rename_codes.assign(static_cast<std::size_t>(step), 0);
    files.rename_codes.push_back(FaultyFileSystem::kBroken);
    EXPECT_NE(Caught([&] { sample_.Publish(); }).Number, 0) << step;
    ExpectWhole("exchange, step " + std::to_string(step));
  }
}

TEST_F(Interrupted, AKilledRunLeavesTheOldReleaseAnnounced) {
  for (int i = 0; i < 4; ++i)
    sandbox_.Write("product/tm/big" + std::to_string(i), std::string(4 << 20, 'b'));
  for (const std::string until : {"work", "release/files/tm", "release/_DBUpdates.tmz"}) {
    sandbox_.Write("server/TMW_version.dat", old_);
    std::filesystem::remove_all(ToPath(sandbox_.Path("server/TMW_3.6.0.3")));
    ports::StartRequest request;
    request.program = TMW_TMPUBLISH;
    request.command_line = tmw::JoinCommandLine(
        {TMW_TMPUBLISH, "publish", sample_.options.description, "--product",
         sample_.options.product, "--database", sample_.options.database, "--scripts",
         sample_.options.scripts, "--output", sample_.options.output});
    const auto started = ports::CurrentPorts().processes->Start(request);
    ASSERT_TRUE(started);
    const std::string mark = "server/TMW_3.6.0.3.new/" + until;
    while (!sandbox_.Has(mark) && !started.value->Wait(1).value) {
    }
    KillProcess(started.value->Id());
    ASSERT_TRUE(started.value->Wait(20'000).value);
    ExpectWhole(until);
  }
}

TEST_F(Interrupted, TwoRunsDoNotBuildOneRelease) {
  const std::string lock = sandbox_.Write("server/TMW_3.6.0.3.new/lock", "");
  sandbox_.Write("server/TMW_3.6.0.3.new/release/file", "the other run's");
  const auto held =
      ports::CurrentPorts().file_locks->TryLock(lock, ports::FileLockMode::kExclusive);
  EXPECT_TRUE(Caught([&] { sample_.Publish(); }).Description.starts_with("Another run"));
  EXPECT_TRUE(sandbox_.Has("server/TMW_3.6.0.3.new/release/file"));
}

TEST(Diff, ListsWhatAUserOfTheOldReleaseDownloads) {
  const Sandbox sandbox;
  Sample sample(sandbox);
  ASSERT_EQ(sample.Publish(), Log{});
  sample.Describe("Version=\"3.6.0.2", "Version=\"3.6.0.3");
  sample.Describe("Target=\"{p}tm\"", "Target=\"{p}\\TM/\"");
  sandbox.Write("product/tm/Calc.ocx", "Control");
  sandbox.Write("product/tm/new.dll", "new");
  std::filesystem::remove(ToPath(sandbox.Path("product/Справка/empty")));
  sample.Execute("update Ставки set Имя = 'Сбор' where Ид = 1");
  sample.Execute("insert into Документы values (2, 2)");
  ASSERT_EQ(sample.Publish(), Log{});

  publish::Faults faults;
  publish::Manifest old_release;
  publish::Manifest new_release;
  ASSERT_TRUE(publish::LoadManifest(sandbox.Path("server/TMW_3.6.0.2"), old_release, faults));
  ASSERT_TRUE(publish::LoadManifest(sandbox.Path("server"), new_release, faults));
  const publish::Difference difference = publish::Compare(old_release, new_release);
  Log lines;
  std::int64_t sum = 0;
  for (const publish::Download& download : difference.downloads) {
    lines.push_back(download.name + (download.is_new ? " (new)" : ""));
    sum += download.bytes;
  }
  EXPECT_EQ(lines, (Log{"{p}\\TM/ Calc.ocx", "{p}\\TM/ new.dll (new)", "Ставки", "_DBUpdates.tmz",
                        "_DBStruct.tmz"}));
  EXPECT_EQ(difference.left_over, Log{"{p}Help empty"});
  EXPECT_EQ(difference.volume, sum);
  EXPECT_LT(difference.client_volume, sum);
  EXPECT_EQ(publish::Compare(old_release, old_release).volume, 0);
  EXPECT_FALSE(publish::LoadManifest(sandbox.Path("product"), old_release, faults));
}

TEST(ServerNames, NeedNoEscapingAndStayDifferent) {
  EXPECT_EQ(publish::MakeServerName("tm/Core-1.dll"), "files/tm/Core-1.dll.tmz");
  const std::string cyrillic = publish::MakeServerName("Справка/Счёт.htm");
  EXPECT_TRUE(cyrillic.starts_with("files/_/_.htm-")) << cyrillic;
  EXPECT_NE(cyrillic, publish::MakeServerName("Справка/Счёт2.htm"));
  EXPECT_NE(publish::MakeServerName("a b"), publish::MakeServerName("a_b"));
  EXPECT_LT(publish::MakeServerName(std::string(300, 'x')).size(), 140U);
}

}  // namespace
}  // namespace tests
