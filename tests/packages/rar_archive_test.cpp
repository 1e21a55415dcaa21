#include "packages/rar_archive.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "foundation/encodings.h"
#include "packing/rar_blocks.h"
#include "packing/rar_writer.h"
#include "ports/ports.h"
#include "services/advice.h"
#include "tests/support/caught.h"
#include "tests/support/sandbox.h"
#include "tests/support/scoped_ports.h"

namespace tests {
namespace {

using namespace tmw;
using packing::RarEntryFacts;
using packing::RarFormat;
using packing::StoredRarWriter;

constexpr std::uint32_t kExtract = 1;

// A package of the given files, in order; the content of each is its name.
std::string MakePackage(const Sandbox& sandbox, const std::vector<std::string>& names,
                        RarFormat format = RarFormat::kRar5) {
  const std::string path = sandbox.Path("Пакет.tmz");
  StoredRarWriter writer(path, format);
  for (const std::string& name : names) {
    RarEntryFacts facts;
    facts.name = name;
    facts.modified = 1700000000;
    writer.AddFile(facts, sandbox.Write("source", name));
  }
  writer.Finish();
  return path;
}

std::string Failure(const std::string& archive, const std::string& message) {
  return "Ошибка при обработке архивного файла \"" + archive + "\":\r\n" + message;
}

TEST(RarArchive, HeadersAreListedAndEntriesSkipped) {
  Sandbox sandbox;
  RarArchive archive;
  archive.OpenArchive(MakePackage(sandbox, {"один.txt", "dir/two"}), 0);
  std::string name;
  std::uint32_t flags = 1;
  std::uint32_t packed = 0;
  std::uint32_t unpacked = 0;
  std::string listed;
  while (archive.ReadHeader(name, flags, packed, unpacked)) {
    listed += name;
    for (const std::uint32_t number : {flags, packed, unpacked})
      listed += " " + std::to_string(number);
    listed += "\n";
  }
  EXPECT_EQ(listed, "один.txt 0 12 12\ndir/two 0 7 7\n");
  archive.CloseHandle();
  EXPECT_EQ(archive.Handle(), nullptr);
}

TEST(RarArchive, ATargetNameIsSplitAsTheSystemSplitsIt) {
  Sandbox sandbox;
  const std::string package = MakePackage(sandbox, {"a.txt"});
  for (const std::string name : {"plain", "out/in", "out/back\\slash"}) {
    RarArchive archive;
    archive.OpenArchive(package, kExtract);
    std::string entry;
    std::uint32_t number = 0;
    ASSERT_TRUE(archive.ReadHeader(entry, number, number, number));
    archive.ProcessFile(2, "", sandbox.Path(name));
    EXPECT_TRUE(sandbox.Has(name));
  }
}

TEST(RarArchive, AnEntryIsFoundWithoutRegardToLetterCase) {
  for (const RarFormat format : {RarFormat::kRar4, RarFormat::kRar5}) {
    Sandbox sandbox;
    const std::string package = MakePackage(sandbox, {"a.txt", "Отчёт.DLL", "b.txt"}, format);
    RarArchive archive;
    archive.OpenArchive(package, kExtract);
    archive.ExtractFile("оТЧЁТ.dll", sandbox.Path("out"));
    EXPECT_EQ(sandbox.Read("out/Отчёт.DLL"), "Отчёт.DLL");
    EXPECT_FALSE(sandbox.Has("out/a.txt"));

    std::string error;
    EXPECT_TRUE(UnrarOneFile(package, "оТЧЁТ.dll", sandbox.Path("one"), "", error)) << error;
    const std::filesystem::directory_iterator files(ToPath(sandbox.Path("one")));
    // Where letter case matters in file names, the file has exactly the name that was asked for.
    const bool is_case_told = !std::filesystem::exists(ToPath(sandbox.Path("ONE")));
    EXPECT_EQ(FromPath(files->path().filename()), is_case_told ? "оТЧЁТ.dll" : "Отчёт.DLL");
  }
}

TEST(RarArchive, FailuresSayWhatWentWrongWithWhichArchive) {
  Sandbox sandbox;
  const std::string package = MakePackage(sandbox, {"a.txt"});
  const std::string page = sandbox.Write("page.tmz", "<html>");
  const std::string none = sandbox.Path("none.tmz");
  std::string error;
  EXPECT_FALSE(UnrarOneFile(package, "b.txt", sandbox.Path("out"), "", error));
  EXPECT_EQ(error, "Файл \"b.txt\" не найден в архиве \"" + package + "\".");
  EXPECT_FALSE(UnrarAllFiles(none, sandbox.Path("out"), "", error));
  EXPECT_EQ(error, Failure(none, "Ошибка открытия файла архива."));
  EXPECT_FALSE(UnrarAllFiles(page, sandbox.Path("out"), "secret", error));
  EXPECT_EQ(error, Failure(page, "Файл не является файлом архива нужного формата."));
  EXPECT_NE(TakeNotedFailure(), FailureKind::kDiskFull);

  RarArchive archive;
  for (const auto& action : std::vector<std::function<void()>>{
           [&] { archive.ProcessFile(0, "", ""); }, [&] { archive.ExtractFile("a", ""); },
           [&] { archive.ExtractAllFiles(""); }}) {
    const ProgramError closed = Caught(action);
    EXPECT_EQ(closed.Description, "Архив не открыт.");
    EXPECT_EQ(closed.Number, kProgramErrorNumber);
  }
  EXPECT_EQ(Caught([&] { archive.RaiseRarError(37); }).Description,
            "Ошибка при обработке архивного файла:\r\nНеизвестная ошибка (37).");
  archive.ArchiveName = "x";
  const ProgramError damaged = Caught([&] { archive.RaiseRarError(12); });
  EXPECT_EQ(damaged.Description, Failure("x", "Архив поврежден."));
  EXPECT_NE(damaged.Source.find("::RarArchive.RaiseRarError]"), std::string::npos);
}

TEST(RarArchive, NothingUnpacksToMoreThanAllowed) {
  Sandbox sandbox;
  const std::string two = MakePackage(sandbox, {"twelve bytes", "two"});
  // An entry that does not announce its size.
  const std::string fields = packing::MakeVint(8) + packing::MakeVint(0) + packing::MakeVint(0x20) +
                             packing::MakeVint(0) + packing::MakeVint(1) + packing::MakeVint(7) +
                             "unknown";
  const std::string unknown =
      sandbox.Write("unknown.rar", packing::MakeBeginning(RarFormat::kRar5) +
                                       packing::MakeRar5Block(2, 0, fields, "", 100) +
                                       std::string(100, 'x') + packing::MakeEnd(RarFormat::kRar5));
  const struct {
    std::string package;
    const char* entry;  // nullptr: all of them
    std::int64_t limit;
    bool is_done;
    std::int64_t left;  // bytes of the last entry; -1: no file
  } cases[] = {{two, "twelve bytes", 12, true, 12},  {two, "twelve bytes", 11, false, -1},
               {two, "twelve bytes", -1, false, -1}, {two, nullptr, 15, true, 3},
               {two, nullptr, 14, false, -1},        {unknown, "unknown", 100, true, 100},
               {unknown, "unknown", 99, false, 0},   {unknown, nullptr, 99, false, 0}};
  for (const auto& c : cases) {
    std::filesystem::remove_all(ToPath(sandbox.Path("out")));
    const std::string out = sandbox.Path("out");
    std::string error;
    EXPECT_EQ(c.entry != nullptr ? UnrarOneFile(c.package, c.entry, out, "", error, c.limit)
                                 : UnrarAllFiles(c.package, out, "", error, c.limit),
              c.is_done);
    const std::string limit = std::to_string(c.limit < 0 ? 0 : c.limit);
    EXPECT_EQ(error, c.is_done ? ""
                               : Failure(c.package, "Распакованные данные больше допустимого (" +
                                                        limit + " байт)."));
    const std::string last = c.entry != nullptr ? c.entry : c.package == two ? "two" : "unknown";
    const bool has_file = sandbox.Has("out/" + last);
    EXPECT_EQ(has_file ? static_cast<std::int64_t>(sandbox.Read("out/" + last).size()) : -1,
              c.left);
  }
}

// A library that lists one entry of a given name and would extract whatever it is told to.
struct CarelessLibrary final : ports::CompanionLibrary {
  static inline std::u16string name;
  static inline int shown = 0;
  static inline int extracted = 0;
  ports::EntryPoints entries{};

  explicit CarelessLibrary(const std::string& entry_name) {
    name = Utf8ToUtf16(entry_name);
    shown = 0;
    extracted = 0;
    entries.RAROpenArchiveEx = [](ports::RAROpenArchiveDataEx*)
                                   COMPANION_CALL { return ports::RarHandle{&shown}; };
    entries.RARReadHeaderEx = [](ports::RarHandle, ports::RARHeaderDataEx* header) COMPANION_CALL {
      name.copy(header->FileNameW, 1023);
      return shown++ == 0 ? 0 : 10;
    };
    entries.RARProcessFileW = [](ports::RarHandle, int operation, const char16_t*, const char16_t*)
                                  COMPANION_CALL {
                                    extracted += operation == 2 ? 1 : 0;
                                    return 0;
                                  };
    entries.RARCloseArchive = [](ports::RarHandle) COMPANION_CALL { return 0; };
  }
  ports::Outcome<const ports::EntryPoints*> Load() override {
    return ports::Outcome<const ports::EntryPoints*>::Success(&entries);
  }
  std::string Path() const override { return {}; }
  std::string NarrowPath(const std::string& path) const override { return path; }
  ports::SystemCode LastError() const override { return 0; }
};

TEST(RarArchive, NamesPassTheGuardWhateverLibraryIsLoaded) {
  const struct {
    const char* name;
    bool extracted;
  } kCases[] = {{"a.txt", true},        {"dir\\a.txt", true},   {"..\\a.txt", false},
                {"/etc/passwd", false}, {"C:\\a.txt", false},   {"a.txt:stream", false},
                {"NUL", false},         {"dir/../../a", false}, {"", false}};
  for (const auto& test : kCases) {
    const ScopedPorts ports;
    CarelessLibrary library(test.name);
    ports->companion = &library;
    std::string error;
    EXPECT_EQ(UnrarAllFiles("p", "out", "", error), test.extracted) << test.name;
    EXPECT_EQ(CarelessLibrary::extracted, test.extracted ? 1 : 0) << test.name;
    if (!test.extracted) {
      EXPECT_EQ(error, Failure("p", "Ошибка создания распаковываемого файла."));
    }
  }
}

}  // namespace
}  // namespace tests
