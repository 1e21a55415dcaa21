#include <gtest/gtest.h>

#include <filesystem>

#include "companion/rar/blake2sp.h"
#include "tests/companion/archive_run.h"
#include "tests/companion/rar_entries.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using packing::UpdateCrc32;

constexpr RarFormat kBoth[] = {RarFormat::kRar4, RarFormat::kRar5};

std::string Archive(RarFormat format, const std::string& name, const std::string& content) {
  return Archive(format, FileHeader(name, content), content);
}

// Everything below a folder, as relative names.
std::vector<std::string> Everything(const Sandbox& sandbox) {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(ToPath(sandbox.Path()))) {
    names.push_back(FromPath(fs::relative(entry.path(), ToPath(sandbox.Path()))));
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(RarReading, HostileNamesAreRefusedAndNothingIsMade) {
  std::string long_name = "n";
  while (long_name.size() < 1024)
    long_name += "/n";
  const std::vector<std::string> names = {"../x",
                                          "..\\..\\x",
                                          "a/../../x",
                                          "/abs",
                                          "\\abs",
                                          "C:\\x",
                                          "C:x",
                                          "//s/h/x",
                                          "\\\\?\\C:\\x",
                                          "",
                                          ".",
                                          "..",
                                          "a//b",
                                          "a/./b",
                                          "a/",
                                          "CON",
                                          "aux.txt",
                                          "a/nul.tmz",
                                          "COM1",
                                          "conin$",
                                          "lpt9.log",
                                          "con .txt",
                                          "a.txt:s",
                                          "trail. ",
                                          "trail.",
                                          "tab\tx",
                                          "line\nx",
                                          "del\x7Fx",
                                          "a/../b",
                                          long_name,
                                          std::string("nul\0x", 5)};
  for (const RarFormat format : kBoth) {
    for (const std::string& name : names) {
      Sandbox sandbox;
      EntryHeader header = FileHeader(name, "bad");
      header.name_is_raw = true;
      const std::string path = sandbox.Write("in/a.rar", Archive(format, header, "bad"));
      EXPECT_EQ(RunArchive(path, 2, sandbox.Path("in/out")).Codes(), "16 | 10") << name;
      EXPECT_EQ(Everything(sandbox).size(), 2U) << name;
      EXPECT_EQ(RunArchive(path, 0, "").Codes(), "0 | 10") << name;
    }
  }
  Sandbox sandbox;
  for (const RarFormat format : kBoth) {
    for (const std::string name : {"com0", "com10", "comx", "console", "aux1.txt", ".con", "a b",
                                   "Отчёты/Баланс №1 €.txt"}) {
      const std::string path = sandbox.Write("a.rar", Archive(format, name, "good"));
      EXPECT_EQ(RunArchive(path, 2, sandbox.Path("good")).Codes(), "0 | 10") << name;
      EXPECT_EQ(sandbox.Read("good/" + name), "good");
    }
  }
  // In the format that uses UTF-8: malformed, and digits that Windows takes for such.
  for (const std::string name : {"a\xFF", "com²", "LPT³.x", "prn¹"}) {
    const bool is_sound = name == "prn¹";
    const std::string path = sandbox.Write("a.rar", Archive(RarFormat::kRar5, name, "bad"));
    EXPECT_EQ(RunArchive(path, 2, sandbox.Path("out")).Codes(), is_sound ? "0 | 10" : "16 | 10");
  }
}

std::string LinkRecord(unsigned kind, const std::string& target) {
  const std::string body =
      MakeVint(5) + MakeVint(kind) + MakeVint(0) + MakeVint(target.size()) + target;
  return MakeVint(body.size()) + body;
}

TEST(RarReading, LinksAndSpecialFilesAreNeverMade) {
  std::vector<std::pair<RarFormat, EntryHeader>> cases;
  for (const RarFormat format : kBoth) {
    for (const std::uint32_t type : {0120777U, 0010644U, 0020644U, 0060644U, 0140644U}) {
      EntryHeader header = FileHeader("special", "/etc");
      header.unix_mode = type;
      cases.emplace_back(format, header);
    }
  }
  for (unsigned kind = 1; kind <= 5; ++kind) {
    EntryHeader header = FileHeader("link", "");
    header.extra = LinkRecord(kind, "../../etc/passwd");
    cases.emplace_back(RarFormat::kRar5, header);
  }
  for (const auto& [format, header] : cases) {
    Sandbox sandbox;
    const std::string content = header.size > 0 ? "/etc" : "";
    const std::string path = sandbox.Write("a.rar", Archive(format, header, content));
    EXPECT_EQ(RunArchive(path, 2, sandbox.Path("out")).Codes(), "16 | 10");
    EXPECT_EQ(RunArchive(path, 0, "").Codes(), "0 | 10");
    EXPECT_EQ(Everything(sandbox), std::vector<std::string>{"a.rar"});
  }
}

#ifndef _WIN32
TEST(RarReading, NothingIsWrittenThroughALinkThatLiesInTheWay) {
  Sandbox sandbox;
  sandbox.Write("outside/kept.txt", "kept");
  fs::create_directories(ToPath(sandbox.Path("out")));
  fs::create_directory_symlink(ToPath(sandbox.Path("outside")), ToPath(sandbox.Path("out/dir")));
  fs::create_symlink(ToPath(sandbox.Path("outside/kept.txt")), ToPath(sandbox.Path("out/file")));
  fs::create_hard_link(ToPath(sandbox.Path("outside/kept.txt")), ToPath(sandbox.Path("out/hard")));
  const auto extract = [&](const std::string& name) {
    const std::string path = sandbox.Write("a.rar", Archive(RarFormat::kRar5, name, "new"));
    return RunArchive(path, 2, sandbox.Path("out")).Codes();
  };
  EXPECT_EQ(extract("dir/kept.txt"), "16 | 10");
  EXPECT_EQ(extract("file"), "0 | 10");
  EXPECT_EQ(extract("hard"), "0 | 10");
  EXPECT_EQ(sandbox.Read("outside/kept.txt"), "kept");
  EXPECT_EQ(sandbox.Read("out/file"), "new");
  EXPECT_FALSE(fs::is_symlink(ToPath(sandbox.Path("out/file"))));
}

TEST(RarReading, OnlyThePermissionBitsOfAModeAreApplied) {
  for (const RarFormat format : kBoth) {
    Sandbox sandbox;
    EntryHeader header = FileHeader("tool", "#!");
    header.unix_mode = 0106751;
    const std::string path = sandbox.Write("a.rar", Archive(format, header, "#!"));
    ASSERT_EQ(RunArchive(path, 2, sandbox.Path("out")).Codes(), "0 | 10");
    const auto mode = fs::status(ToPath(sandbox.Path("out/tool"))).permissions();
    EXPECT_EQ(static_cast<unsigned>(mode), 0751U);
  }
}
#endif

constexpr const char* kContent = "0123456789";

TEST(RarReading, DamageEndsWithTheCodeOfItsCause) {
  for (const RarFormat format : kBoth) {
    const bool is_rar5 = format == RarFormat::kRar5;
    const auto with = [&](const std::function<void(EntryHeader&)>& change) {
      EntryHeader changed = FileHeader("a.txt", kContent);
      change(changed);
      return Archive(format, changed, kContent);
    };
    companion::rar::Blake2sp sum;
    sum.Update(reinterpret_cast<const std::uint8_t*>(kContent), 10);
    const auto digest = sum.Finish();
    std::string blake2 = "\x22\x02" + MakeVint(0) + std::string(digest.begin(), digest.end());
    const std::string main = MakeBeginning(format);
    const std::string signature = main.substr(0, is_rar5 ? 8 : 7);
    const std::string header = MakeEntryHeader(format, FileHeader("a.txt", kContent));
    const std::string entry = header + kContent;
    std::string damaged = header;
    damaged.back() ^= 1;
    const std::string service = is_rar5 ? packing::MakeRar5Block(3, 0, "", "", 10)
                                        : packing::MakeRar4Block(0x7A, 0x8000, header.substr(7));
    const std::string other = is_rar5 ? packing::MakeRar5Block(9, 0, "", "", 10)
                                      : packing::MakeRar4Block(0x77, 0x8000, Number(10, 4));
    const std::string end = MakeEnd(format);
    const struct {
      const char* what;
      std::string bytes;
      const char* codes;
      bool leaves_file;
    } cases[] = {
        {"nothing", main + entry + end, "0 | 10", true},
        {"no bytes", "", "open 13", false},
        {"a page", "<html>not found</html>", "open 13", false},
        {"a zip", "PK\3\4aaaaaaaaaaaaaaaa", "open 13", false},
        {"signature only", signature, "| 10", false},
        {"cut in the main header", main.substr(0, 13), is_rar5 ? "| 10" : "| 18", false},
        {"an entry before the main header", signature + entry + main.substr(signature.size()),
         "| 10", false},
        {"other blocks", main + service + kContent + other + kContent + entry + end, "0 | 10",
         true},
        {"another block that is cut off", main + other + "0123", "| 18", false},
        {"no end block", main + entry, "0 | 10", true},
        {"an entry behind the end", main + end + entry, "| 10", false},
        {"data cut off", main + header + "0123", "18 | 18", true},
        {"a damaged header behind a good entry", main + entry + damaged, "0 | 12", true},
        {"wrong data", with([](EntryHeader& h) { h.crc ^= 1; }), "12 | 10", true},
        {"more data than declared", with([](EntryHeader& h) { h.size = 3; }), "12 | 10", true},
        {"less data than declared", with([](EntryHeader& h) { h.size = 11; }), "12 | 10", true},
        {"a size that is not known in RAR 4", with([](EntryHeader& h) { h.size = 0xFFFFFFFF; }),
         is_rar5 ? "12 | 10" : "0 | 10", true},
        {"too large", with([](EntryHeader& h) { h.size = (32ULL << 30U) + 1; }), "12 | 10", false},
        {"an unknown method", with([](EntryHeader& h) { h.method = 6; }), "14 | 10", false},
        {"an old version", with([](EntryHeader& h) { h.version = 28, h.method = 3; }), "14 | 10",
         false},
        {"too large a dictionary",
         with([](EntryHeader& h) { h.version = 14U << 10U, h.method = 3; }), "14 | 10", false},
        {"an unknown version", with([](EntryHeader& h) { h.version = 63; }), "14 | 10", false},
        {"the second half of a file", with([](EntryHeader& h) { h.split_before = true; }),
         "12 | 10", false},
        {"no next volume", with([](EntryHeader& h) { h.split_after = true; }), "15 | 15", true},
        {"a folder with data", with([](EntryHeader& h) { h.is_folder = true; }), "12 | 10", false},
        {"encrypted", with([](EntryHeader& h) {
           h.is_encrypted = true;
           h.extra = MakeVint(2) + MakeVint(1) + MakeVint(0);
         }),
         "22 | 10", false},
        {"a BLAKE2 sum", with([&](EntryHeader& h) { h.extra = blake2; }), "0 | 10", true},
        {"a wrong BLAKE2 sum", with([&](EntryHeader& h) { ++blake2.back(), h.extra = blake2; }),
         is_rar5 ? "12 | 10" : "0 | 10", true},
    };
    for (const auto& each : cases) {
      Sandbox sandbox;
      const std::string path = sandbox.Write("a.rar", each.bytes);
      EXPECT_EQ(RunArchive(path, 1, "").Codes(), each.codes) << each.what;
      EXPECT_EQ(RunArchive(path, 2, sandbox.Path("out")).Codes(), each.codes) << each.what;
      EXPECT_EQ(sandbox.Has("out/a.txt"), each.leaves_file) << each.what;
      // Skipping asks for the data, but not for its content.
      const std::string codes = each.codes;
      const bool is_present = codes[0] != '|' && codes.ends_with(" | 10");
      EXPECT_EQ(RunArchive(path, 0, "").Codes(), is_present ? "0 | 10" : codes) << each.what;
      EXPECT_EQ(RunArchive(sandbox.Path(), 0, "").Codes(), "open 15");
      EXPECT_EQ(RunArchive(sandbox.Path("none.rar"), 0, "").Codes(), "open 15");
    }
  }
}

TEST(RarReading, ADestinationThatCannotBeMadeIsCode16) {
  Sandbox sandbox;
  sandbox.Write("file", "in the way");
  const std::string path = sandbox.Write("a.rar", Archive(RarFormat::kRar5, "a/b.txt", "x"));
  EXPECT_EQ(RunArchive(path, 2, sandbox.Path("file")).Codes(), "16 | 10");
  fs::create_directories(ToPath(sandbox.Path("out/a/b.txt")));
  EXPECT_EQ(RunArchive(path, 2, sandbox.Path("out")).Codes(), "16 | 10");
}

// Writes a file in three parts into three volumes, and another file into the fourth.
void WriteVolumes(const Sandbox& sandbox, RarFormat format, const std::vector<std::string>& names,
                  const std::string& content) {
  const std::size_t third = content.size() / 3;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string part = content.substr(i * third, i == 2 ? std::string::npos : third);
    EntryHeader header = FileHeader("Большой.bin", content);
    header.packed_size = part.size();
    header.split_before = i > 0;
    header.split_after = i < 2;
    if (i < 2) header.crc = UpdateCrc32(0, part);
    sandbox.Write(names[i], MakeVolumeBeginning(format, i == 0) + MakeEntryHeader(format, header) +
                                part + MakeVolumeEnd(format, false));
  }
  sandbox.Write(names[3], MakeVolumeBeginning(format, false) +
                              MakeEntryHeader(format, FileHeader("last", "x")) + "x" +
                              MakeEnd(format));
}

TEST(RarReading, AFileGoesOnThroughItsVolumes) {
  const std::string content = std::string(100000, 'a') + std::string(100001, 'b') + "end";
  const std::vector<std::vector<std::string>> names = {
      {"x.part1.rar", "x.part2.rar", "x.part3.rar", "x.part4.rar"},
      {"y.part09.rar", "y.part10.rar", "y.part11.rar", "y.part12.rar"},
      {"2020.v9.rar", "2020.v10.rar", "2020.v11.rar", "2020.v12.rar"}};
  for (const RarFormat format : kBoth) {
    for (const auto& volumes : names) {
      Sandbox sandbox;
      WriteVolumes(sandbox, format, volumes, content);
      EXPECT_EQ(RunArchive(sandbox.Path(volumes[0]), 2, sandbox.Path("out")).Codes(), "0 0 | 10");
      EXPECT_EQ(sandbox.Read("out/Большой.bin"), content);
      fs::remove(ToPath(sandbox.Path(volumes[3])));
      EXPECT_EQ(RunArchive(sandbox.Path(volumes[0]), 0, "").Codes(), "0 | 15");
      fs::remove(ToPath(sandbox.Path(volumes[2])));
      EXPECT_EQ(RunArchive(sandbox.Path(volumes[0]), 2, sandbox.Path("out")).Codes(), "15 | 15");
    }
  }
}

TEST(RarReading, OnlyTheNextPartOfAFileIsTakenForIt) {
  const std::string half = "half";
  for (const RarFormat format : kBoth) {
    const bool is_rar5 = format == RarFormat::kRar5;
    const RarFormat other = is_rar5 ? RarFormat::kRar4 : RarFormat::kRar5;
    const auto part = [&](RarFormat volume, const char* name, bool goes_on, bool has_next) {
      EntryHeader header = FileHeader(name, half + half);
      header.packed_size = half.size();
      header.split_before = goes_on;
      header.split_after = has_next;
      return MakeVolumeBeginning(volume, !goes_on) + MakeEntryHeader(volume, header) + half;
    };
    const std::string sound = part(format, "a", true, false);
    std::string damaged = sound;
    damaged[damaged.size() - half.size() - 1] ^= 1;
    const struct {
      const char* what;
      std::string bytes;
      int code;
    } cases[] = {{"sound", sound, 0},
                 {"the other format", part(other, "a", true, false), 12},
                 {"another file", part(format, "b", true, false), 12},
                 {"a file's beginning", part(format, "a", false, false), 12},
                 {"damage", damaged, 12},
                 {"no file", MakeVolumeBeginning(format, false) + MakeEnd(format), 12},
                 {"nothing behind the header", MakeVolumeBeginning(format, false), 12},
                 {"a page", "<html>", 12},
                 {"data cut off", sound.substr(0, sound.size() - 1), 18}};
    for (const auto& each : cases) {
      const Sandbox sandbox;
      sandbox.Write("a.part2.rar", each.bytes);
      const std::string path = sandbox.Write("a.part1.rar", part(format, "a", false, true));
      EXPECT_EQ(RunArchive(path, 2, sandbox.Path("out")).entries[0].code, each.code) << each.what;
    }
  }
}

}  // namespace
}  // namespace tests
