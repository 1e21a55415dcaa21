#include "packing/rar_writer.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "packages/rar_archive.h"
#include "ports/ports.h"
#include "tests/packages/judge.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

using packing::RarEntryFacts;
using packing::RarFormat;
using packing::StoredRarWriter;
using namespace tmw;

TEST(StoredRarWriter, OtherReadersReadWhatItWrites) {
  for (const RarFormat format : {RarFormat::kRar4, RarFormat::kRar5}) {
    for (const bool with_trailer : {false, true}) {
      Sandbox sandbox;
      const std::string content(1 << 20, 'z');
      sandbox.Write("p/package.rar", "");
      StoredRarWriter writer(sandbox.Path("p/package.rar"), format, with_trailer);
      RarEntryFacts facts{"Папка", 1700000000, 0755};
      writer.AddFolder(facts);
      facts = {"Папка/Файл € 1.bin", 1700000000, 0750};
      writer.AddFile(facts, sandbox.Write("source", content));
      facts = {"empty", 1700000000, std::nullopt};
      writer.AddFile(facts, sandbox.Write("source", ""));
      writer.Finish();
      std::string error;
      ASSERT_TRUE(UnrarAllFiles(sandbox.Path("p/package.rar"), sandbox.Path("own"), "", error));
      for (const std::string folder : {"bsdtar", "unar"}) {
        std::filesystem::create_directories(ToPath(sandbox.Path(folder)));
        const std::string package = InQuotes(sandbox.Path("p/package.rar"));
        const std::string target = InQuotes(sandbox.Path(folder));
        const auto [status, output] =
            Judge(folder == "unar" ? "unar -q -D -o " + target + " " + package
                                   : "bsdtar -xf " + package + " -C " + target);
        ASSERT_EQ(status, 0) << folder << ": " << output;
        // Names, contents, times, and modes (which unar applies for the older format only).
        const std::string facts_shown = folder == "unar" ? "%Y %n" : "%a %Y %n";
        const auto [same, difference] =
            Judge("cd " + InQuotes(sandbox.Path()) + " && diff -r own " + folder +
                  " && for d in own " + folder + "; do (cd $d && stat -c '" + facts_shown +
                  "' Папка/*); done | uniq -c | grep -q '^ *2 '");
        EXPECT_EQ(same, 0) << folder << ": " << difference;
      }
      ports::CompanionLibrary& companion = *ports::CurrentPorts().companion;
      const std::string narrow = companion.NarrowPath(sandbox.Path("p/package.rar"));
      EXPECT_EQ(companion.Load().value->Sha256_GetFileCrcEx(narrow.c_str()), with_trailer ? 1 : 0);
    }
  }
}
}  // namespace
}  // namespace tests
