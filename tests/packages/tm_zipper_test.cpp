#include "packages/tm_zipper.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <random>

#include "foundation/encodings.h"
#include "packages/rar_archive.h"
#include "packing/rar_writer.h"
#include "platform/factories.h"
#include "ports/companion_library.h"
#include "ports/ports.h"
#include "services/advice.h"
#include "tests/fakes/scripted_front_end.h"
#include "tests/packages/judge.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

#ifndef _WIN32
#include "tests/support/linux/small_files_only.h"
#endif

namespace tests {
namespace {

namespace fs = std::filesystem;
using tmw::TmZipper;

class Zipping : public testing::Test {
 protected:
  // A zipper of the sandbox that is to pack that file.
  TmZipper Zipper(const std::string& name) {
    TmZipper zipper;
    zipper.ZipFileName = sandbox.Path("out.zip");
    zipper.RootDir = sandbox.Path();
    zipper.AddFileName(name);
    return zipper;
  }
  std::vector<std::string> Files() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(ToPath(sandbox.Path()))) {
      names.push_back(FromPath(entry.path().filename()));
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  void SetTime(const std::string& name, std::int64_t seconds) {
    fs::last_write_time(
        ToPath(sandbox.Path(name)),
        std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(seconds))));
  }

  Sandbox sandbox;
};

TEST_F(Zipping, AFailureIsACodeAndLeavesNoFile) {
  sandbox.Write("a.txt", "a");
  sandbox.Write("folder/x", "x");
  const struct {
    const char* what;
    std::function<void(TmZipper&)> change;
    int code;
  } kCases[] = {
      {"no files", [](TmZipper& z) { z.ClearFileNames(); }, 12},
      {"a missing file", [](TmZipper& z) { z.ClearFileNames(), z.AddFileName("none"); }, 12},
      {"a missing file among others", [](TmZipper& z) { z.AddFileName("none"); }, 18},
      {"a mask without files", [](TmZipper& z) { z.ClearFileNames(), z.AddFileName("*.none"); },
       12},
      {"encryption", [](TmZipper& z) { z.Encrypt = 1; }, 16},
      {"repair", [](TmZipper& z) { z.Repair = 1; }, 16},
      {"a level that is none", [](TmZipper& z) { z.Level = 10; }, 16},
      {"a date that is none", [](TmZipper& z) { z.IncludeDate = 1, z.ZipDate = "tomorrow"; }, 16},
      {"freshening", [](TmZipper& z) { z.Freshen = 1; }, 16},
      {"updating", [](TmZipper& z) { z.Update = 1; }, 16},
      {"deleting entries", [](TmZipper& z) { z.DeleteEntries = 1; }, 16},
      {"an existing file",
       [](TmZipper& z) { z.ZipFileName = z.RootDir + "/a.txt", z.DeleteExistingZipFile = false; },
       15},
      {"an impossible place", [](TmZipper& z) { z.ZipFileName += "/no/such/folder.zip"; }, 15},
      {"two files of one name",
       [](TmZipper& z) { z.JunkDir = 1, z.Recurse = 1, z.AddFileName("twice"); }, 16},
  };
  sandbox.Write("twice/a.txt", "another");
  for (const auto& test : kCases) {
    TmZipper zipper = Zipper("a.txt");
    zipper.Move = 1;  // nothing is removed then
    test.change(zipper);
    EXPECT_EQ(zipper.DoZipping(), test.code) << test.what;
    EXPECT_EQ(Files(), (std::vector<std::string>{"a.txt", "folder", "twice"})) << test.what;
    zipper.RaiseErrorOnFail = true;
    const tmw::ProgramError error = Caught([&] { zipper.DoZipping(); });
    EXPECT_EQ(error.Number, tmw::kProgramErrorNumber);
    EXPECT_EQ(error.Description, "");
    EXPECT_NE(error.Source.find("::TmZipper.DoZipping]"), std::string::npos);
  }
}

TEST_F(Zipping, ALibraryThatIsMissingIsTold) {
  const ScopedPorts ports;
  ScriptedFrontEnd front_end;
  const auto missing = platform::MakeCompanionLibrary(sandbox.Path("none"));
  ports->front_end = &front_end;
  ports->companion = missing.get();
  EXPECT_NE(Zipper("a").DoZipping(), 0);
  EXPECT_EQ(front_end.log, std::vector<std::string>{"warning|Ошибка|Отсутствует UnTmz.dll."});
}

TEST_F(Zipping, TheCommentIsAskedFor) {
  const ScopedPorts ports;
  ScriptedFrontEnd front_end;
  front_end.texts = {"Заметка"};
  ports->front_end = &front_end;
  sandbox.Write("a.txt", "a");
  TmZipper zipper = Zipper("a.txt");
  ASSERT_EQ(zipper.DoZipping(), 0);
  fs::remove(ToPath(zipper.ZipFileName));
  // The zipper has no field for it, so the option is set in the library.
  const ports::EntryPoints& library = *ports::CurrentPorts().companion->Load().value;
  library.ZpGetOptions()->Comment = 1;
  const std::string zip = ports::CurrentPorts().companion->NarrowPath(zipper.ZipFileName);
  const char* names[] = {"a.txt"};
  ASSERT_EQ(library.ZpArchive({1, zip.c_str(), names}), 0);
  EXPECT_EQ(front_end.log,
            std::vector<std::string>{"input|Программа обновления|Enter the comment"});
  EXPECT_TRUE(
      sandbox.Read("out.zip").ends_with(tmw::Utf8ToCodePage(tmw::CodePage::k1251, "Заметка")));
}

#ifndef _WIN32

// The contents of a zip file according to Python: a line "name size crc" for each entry.
std::string Listing(const std::string& zip) {
  const auto [status, output] = Judge(
      "python3 -c \"import zipfile,sys\n"
      "z=zipfile.ZipFile(sys.argv[1])\n"
      "print('bad', z.testzip()) if z.testzip() else None\n"
      "for i in sorted(z.infolist(), key=lambda i: i.filename):\n"
      "  print(i.filename, i.file_size)\" " +
      InQuotes(zip));
  EXPECT_EQ(status, 0) << output;
  return output;
}

TEST_F(Zipping, OtherProgramsReadWhatIsWritten) {
  std::mt19937 random(7);
  std::string large(3 << 20, ' ');
  for (char& c : large)
    c = static_cast<char>("0123456789абв"[random() % 16]);
  sandbox.Write("База Әлии Müller.mdb", large);
  sandbox.Write("exact.bin", large.substr(0, 1 << 20));  // ends exactly at the end of a piece
  sandbox.Write("empty", "");
  for (const int level : {0, 1, 9}) {
    TmZipper zipper = Zipper(sandbox.Path("База Әлии Müller.mdb"));
    zipper.AddFileName(sandbox.Path("exact.bin"));
    zipper.AddFileName("empty");
    zipper.Level = level;
    zipper.Extra = level == 1 ? 1 : 0;  // leaves the exact time out
    SetTime("exact.bin", level == 1 ? 1700000000 : 1700000001);
    ASSERT_EQ(zipper.DoZipping(), 0);
    const std::string zip = InQuotes(zipper.ZipFileName);
    for (const std::string judge : {"unzip -tq ", "7z t ", "python3 -m zipfile -t "}) {
      const auto [status, output] = Judge(judge + zip);
      EXPECT_EQ(status, 0) << output;
    }
    EXPECT_EQ(Listing(zipper.ZipFileName),
              "empty 0\nexact.bin 1048576\nБаза Әлии Müller.mdb 3145728\n");
    fs::remove_all(ToPath(sandbox.Path("back")));
    const auto [status, output] =
        Judge("7z x -o" + InQuotes(sandbox.Path("back")) + " " + zip + " && cmp " +
              InQuotes(sandbox.Path("back/База Әлии Müller.mdb")) + " " +
              InQuotes(sandbox.Path("База Әлии Müller.mdb")) + " && stat -c %Y " +
              InQuotes(sandbox.Path("back/exact.bin")) + " " + InQuotes(sandbox.Path("exact.bin")) +
              " | uniq | wc -l | grep -qx 1");
    EXPECT_EQ(status, 0) << output;
  }
}

TEST_F(Zipping, ADiskThatFillsUpLeavesTheOldStateAndNoZipFile) {
  std::string content(1 << 20, ' ');
  std::mt19937 random(7);
  for (char& c : content)
    c = static_cast<char>(random());
  sandbox.Write("base.mdb", content);
  const std::string package = sandbox.Path("p.rar");
  packing::StoredRarWriter writer(package, packing::RarFormat::kRar5);
  writer.AddFile({"base.mdb", 1700000000, 0644}, sandbox.Path("base.mdb"));
  writer.Finish();
  TmZipper zipper = Zipper("base.mdb");
  std::string error;
  {
    const SmallFilesOnly limit(300000);
    EXPECT_EQ(zipper.DoZipping(), 14);
    EXPECT_EQ(zipper.SystemError, EFBIG);
    EXPECT_FALSE(tmw::UnrarAllFiles(package, sandbox.Path("out"), "", error));
  }
  EXPECT_TRUE(error.ends_with("Ошибка записи распаковываемого файла.")) << error;
  EXPECT_EQ(tmw::TakeNotedFailure(), tmw::FailureKind::kDiskFull);
  EXPECT_EQ(Files(), (std::vector<std::string>{"base.mdb", "out", "p.rar"}));
}

// A kill at any moment must not leave a copy that more people may read than the file.
TEST_F(Zipping, WhileItIsWrittenOnlyItsOwnerMayReadAZipFile) {
  const ports::EntryPoints& library = *ports::CurrentPorts().companion->Load().value;
  static std::string folder;
  static fs::perms seen;
  static int answer = 1;
  folder = sandbox.Path();
  fs::permissions(ToPath(sandbox.Write("a.txt", "a")), fs::perms(0640));
  ports::ZpFunctions functions{};
  functions.Service = [](const char*, std::uint32_t) COMPANION_CALL {
    for (const auto& entry : fs::directory_iterator(ToPath(folder)))
      if (entry.path().extension() == ".tmp") seen = entry.status().permissions();
    return answer;
  };
  ports::ZpOptions options{};
  options.Level = '9';
  const std::string file = sandbox.Path("a.txt");
  const std::string zip = sandbox.Path("out.zip");
  const char* names[] = {file.c_str()};
  library.ZpInit(&functions);
  library.ZpSetOptions(&options);
  EXPECT_EQ(library.ZpArchive({1, zip.c_str(), names}), 9);
  EXPECT_EQ(Files(), std::vector<std::string>{"a.txt"});
  answer = 0;
  EXPECT_EQ(library.ZpArchive({1, zip.c_str(), names}), 0);
  EXPECT_EQ(seen, fs::perms(0600));
  EXPECT_EQ(fs::status(ToPath(zip)).permissions(), fs::perms(0640));
}

TEST_F(Zipping, OptionsChangeWhatIsPacked) {
  std::string lf;
  std::string crlf = "ab";  // so that the first piece that is read ends between CR and LF
  for (int i = 0; i < 10000; ++i) {
    lf += "one\ntwo\n";
    crlf += "one\r\ntwo\r\n";
  }
  sandbox.Write("in/a.txt", lf);
  sandbox.Write("in/sub/A.txt", crlf);
  sandbox.Write("in/sub/data.bin", std::string("\0\n", 2));
  std::tm date{};  // the beginning of a day, local
  date.tm_year = 126;
  date.tm_mday = 1;
  date.tm_isdst = -1;
  const std::int64_t that_day = std::mktime(&date);
  SetTime("in/sub/A.txt", that_day);
  SetTime("in/sub/data.bin", 1700000000);
  const struct {
    const char* what;
    std::function<void(TmZipper&)> change;
    const char* listing;
  } kCases[] = {
      {"a folder alone", [](TmZipper& z) { z.ClearFileNames(), z.AddFileName("in/"); }, "in/ 0\n"},
      {"recursion", [](TmZipper& z) { z.Recurse = 1; },
       "in/ 0\nin/a.txt 80000\nin/sub/ 0\nin/sub/A.txt 100002\nin/sub/data.bin 2\n"},
      {"no folder entries", [](TmZipper& z) { z.Recurse = 1, z.NoDirEntries = 1; },
       "in/a.txt 80000\nin/sub/A.txt 100002\nin/sub/data.bin 2\n"},
      {"names alone", [](TmZipper& z) { z.Recurse = 1, z.JunkDir = 1; },
       "A.txt 100002\na.txt 80000\ndata.bin 2\n"},
      {"CR LF to LF", [](TmZipper& z) { z.Recurse = 1, z.JunkDir = 1, z.CRLF_LF = 1; },
       "A.txt 80002\na.txt 80000\ndata.bin 2\n"},
      {"LF to CR LF", [](TmZipper& z) { z.Recurse = 1, z.JunkDir = 1, z.LF_CRLF = 1; },
       "A.txt 100002\na.txt 100000\ndata.bin 2\n"},
      {"not older than a date",
       [](TmZipper& z) { z.Recurse = 1, z.JunkDir = 1, z.IncludeDate = 1, z.ZipDate = "01/01/26"; },
       "A.txt 100002\na.txt 80000\n"},
      {"older than a date",
       [](TmZipper& z) {
         z.Recurse = 1, z.JunkDir = 1, z.ExcludeDate = 1, z.ZipDate = "01/01/26", z.LatestTime = 1;
       },
       "data.bin 2\n"},
      {"a mask in all folders",
       [](TmZipper& z) {
         z.Recurse = 2, z.NoDirEntries = 1, z.ClearFileNames(), z.AddFileName("*.txt");
       },
       "in/a.txt 80000\nin/sub/A.txt 100002\n"},
      {"a mask", [](TmZipper& z) { z.ClearFileNames(), z.AddFileName("./in/?.*xt*"); },
       "in/a.txt 80000\n"},
      {"moving", [](TmZipper& z) { z.Recurse = 1, z.JunkDir = 0, z.Move = 1; },
       "in/ 0\nin/a.txt 80000\nin/sub/ 0\nin/sub/A.txt 100002\nin/sub/data.bin 2\n"},
  };
  for (const auto& test : kCases) {
    TmZipper zipper = Zipper("in");
    test.change(zipper);
    EXPECT_EQ(zipper.DoZipping(), 0) << test.what;
    EXPECT_EQ(Listing(zipper.ZipFileName), test.listing) << test.what;
    if (zipper.LatestTime != 0) {
      EXPECT_EQ(fs::last_write_time(ToPath(zipper.ZipFileName)),
                fs::last_write_time(ToPath(sandbox.Path("in/sub/data.bin"))));
    }
  }
  EXPECT_FALSE(sandbox.Has("in"));
}
#endif

}  // namespace
}  // namespace tests
