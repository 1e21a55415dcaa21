#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "companion/exports.h"
#include "companion/os.h"
#include "companion/rar/archive.h"
#include "companion/rar/failure.h"
#include "tests/companion/archive_run.h"
#include "tests/companion/packed_streams.h"
#include "tests/companion/rar_entries.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

constexpr RarFormat kBoth[] = {RarFormat::kRar4, RarFormat::kRar5};
constexpr std::uint64_t kModified = 1700000000;  // of FileHeader

// Signature and main header with those flags.
std::string Beginning(RarFormat format, unsigned flags, const std::string& more = {}) {
  if (format == RarFormat::kRar5)
    return MakeBeginning(format).substr(0, 8) +
           packing::MakeRar5Block(1, 0, MakeVint(flags) + more);
  return MakeBeginning(format).substr(0, 7) +
         packing::MakeRar4Block(0x73, static_cast<std::uint16_t>(flags), std::string(6, 0));
}

struct SolidArchive {
  std::string bytes;
  std::map<std::string, std::string> contents;
};

// Packed entries of one window, with a folder and a stored entry between them.
SolidArchive MakeSolid(RarFormat format) {
  std::unique_ptr<StreamWriter> writer;
  if (format == RarFormat::kRar5) {
    writer = std::make_unique<Rar5Writer>();
  } else {
    writer = std::make_unique<Rar3Writer>();
  }
  SolidArchive archive{Beginning(format, format == RarFormat::kRar5 ? 4 : 8), {}};
  for (const std::string name : {"first", "folder", "second", "stored", "third"}) {
    EntryHeader header;
    std::string packed(300000, 's');  // more than one piece
    if (name == "stored") {
      header = FileHeader(name, packed);
      archive.contents[name] = packed;
    } else if (name == "folder") {
      packed.clear();
      header.is_folder = true;
    } else {
      const std::size_t begin = writer->content.bytes.size();
      for (const char c : name)
        writer->Literal(static_cast<std::uint8_t>(c));
      if (begin > 0) writer->Match(static_cast<std::uint32_t>(begin) + 3, 30);
      writer->RepeatLast();
      writer->EndBlock(true);
      const Bytes bytes = writer->Finish();
      packed.assign(bytes.begin(), bytes.end());
      const std::string content(writer->content.bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                writer->content.bytes.end());
      header = FileHeader(name, content);
      header.packed_size = packed.size();
      header.method = 3;
      header.version = format == RarFormat::kRar5 ? 0 : begin > 0 ? 36 : 29;
      header.is_solid = begin > 0;
      archive.contents[name] = content;
    }
    header.name = name;
    archive.bytes += MakeEntryHeader(format, header) + packed;
  }
  archive.bytes += MakeEnd(format);
  return archive;
}

TEST(RarInterface, EntriesOfSolidArchivesComeOutAloneAndTogether) {
  for (const RarFormat format : kBoth) {
    const SolidArchive archive = MakeSolid(format);
    const Sandbox sandbox;
    const std::string path = sandbox.Write("a.rar", archive.bytes);
    for (const auto& [name, content] : archive.contents) {
      EXPECT_EQ(RunArchive(path, 2, sandbox.Path("one"), name).Codes(), "0 0 0 0 0 | 10");
      EXPECT_EQ(sandbox.Read("one/" + name), content);
      EXPECT_EQ(RunArchive(path, 1, "", name).Codes(), "0 0 0 0 0 | 10");
    }
    EXPECT_EQ(RunArchive(path, 2, sandbox.Path("all")).Codes(), "0 0 0 0 0 | 10");
    for (const auto& [name, content] : archive.contents)
      EXPECT_EQ(sandbox.Read("all/" + name), content);
  }
}

TEST(RarInterface, AllEntriesTogetherKeepToTheMostContent) {
  const SolidArchive archive = MakeSolid(RarFormat::kRar5);
  std::size_t total = 0;
  for (const auto& [name, content] : archive.contents)
    total += content.size();
  const Sandbox sandbox;
  const std::string path = sandbox.Write("a.rar", archive.bytes);
  const auto open = [](const std::string& volume) {
    companion::os::ErrorCode error = 0;
    return companion::os::OpenForReading(volume, error);
  };
  const struct {
    std::uint64_t most;
    std::vector<int> codes;
  } cases[] = {{total, {0, 0, 0, 0, 0}}, {total - 1, {0, 0, 0, 0, 12}}, {270000, {0, 0, 0, 12, 0}}};
  for (const auto& each : cases) {
    companion::rar::Archive reader(path, true, open, each.most);
    std::vector<int> codes;
    while (reader.ReadHeader() == ports::kRarOk)
      codes.push_back(reader.Test());
    EXPECT_EQ(codes, each.codes) << each.most;
  }
}

TEST(RarInterface, FlagsOfTheMainHeaderAreReported) {
  constexpr auto k5 = RarFormat::kRar5;
  const std::string encryption =
      MakeBeginning(k5).substr(0, 8) + packing::MakeRar5Block(4, 0, std::string(3, 0));
  struct Case {
    std::string bytes;
    std::uint32_t flags;
    int code;  // of ReadHeader
  };
  std::vector<Case> cases = {{Beginning(k5, 0), 0x10, 10},
                             {Beginning(k5, 1), 0x111, 10},
                             {Beginning(k5, 3, MakeVint(0)), 0x111, 10},
                             {Beginning(k5, 3, MakeVint(1)), 0x11, 10},
                             {Beginning(k5, 4), 0x18, 10},
                             {Beginning(k5, 8), 0x50, 10},
                             {Beginning(k5, 0x10), 0x14, 10},
                             {encryption, 0x80, 22},
                             {Beginning(k5, 0) + encryption.substr(8), 0x10, 22}};
  // RAR 4 stores them as they are reported.
  for (const unsigned flag : {0U, 1U, 4U, 8U, 0x10U, 0x40U, 0x80U, 0x100U})
    cases.push_back({Beginning(RarFormat::kRar4, flag), flag, flag == 0x80 ? 22 : 10});
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  for (const auto& each : cases) {
    const Sandbox sandbox;
    const std::u16string path = tmw::Utf8ToUtf16(sandbox.Write("a.rar", each.bytes));
    ports::RAROpenArchiveDataEx record{};
    record.ArcNameW = path.c_str();
    const ports::RarHandle handle = functions.RAROpenArchiveEx(&record);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(record.Flags, each.flags);
    functions.RARSetPassword(handle, "password");
    const auto header = std::make_unique<ports::RARHeaderDataEx>();
    EXPECT_EQ(functions.RARReadHeaderEx(handle, header.get()), each.code) << each.flags;
    functions.RARCloseArchive(handle);
  }
}

// What the extended record says of the first entry: flags, packed and unpacked size, host, version,
// method, attributes, dictionary, kind and ends of the hash, kind and target of the link.
std::string Described(const std::string& bytes) {
  const Sandbox sandbox;
  const std::u16string path = tmw::Utf8ToUtf16(sandbox.Write("a.rar", bytes));
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  ports::RAROpenArchiveDataEx record{};
  record.ArcNameW = path.c_str();
  const ports::RarHandle handle = functions.RAROpenArchiveEx(&record);
  const auto header = std::make_unique<ports::RARHeaderDataEx>();
  char16_t target[8] = u"unset";
  header->RedirName = target;
  header->RedirNameSize = 8;
  EXPECT_EQ(functions.RARReadHeaderEx(handle, header.get()), 0);
  functions.RARCloseArchive(handle);
  EXPECT_EQ(std::u16string(header->ArcNameW), path);
  EXPECT_EQ(header->FileCRC, 2286445522);
  EXPECT_EQ(header->FileTime, companion::rar::ToDosTime(kModified));
  const std::uint64_t ticks = header->MtimeLow | std::uint64_t{header->MtimeHigh} << 32U;
  EXPECT_EQ(ticks / 10000000, kModified + 11644473600);
  const auto whole = [](std::uint32_t low, std::uint32_t high) {
    return low | std::uint64_t{high} << 32U;
  };
  std::string text;
  for (const std::uint64_t value : std::initializer_list<std::uint64_t>{
           header->Flags, whole(header->PackSize, header->PackSizeHigh),
           whole(header->UnpSize, header->UnpSizeHigh), header->HostOS, header->UnpVer,
           header->Method, header->FileAttr, header->DictSize, header->HashType, header->Hash[0],
           header->Hash[31], header->RedirType})
    text += std::to_string(value) + " ";
  return text + tmw::Utf16ToUtf8(target);
}

TEST(RarInterface, FieldsOfEntriesAreReported) {
  const auto record = [](const std::string& body) { return MakeVint(body.size()) + body; };
  const auto plain = [](EntryHeader&) {};
  const auto many = [](EntryHeader& h) {
    h.unix_mode = 0100640;
    h.is_encrypted = h.split_after = h.is_solid = true;
    h.extra = MakeVint(2) + MakeVint(1) + MakeVint(0);
    h.method = 5;
  };
  const auto large = [](EntryHeader& h) { h.size = 5ULL << 30U, h.version = 3U << 10U; };
  const auto huge = [](EntryHeader& h) { h.size = 5ULL << 30U, h.packed_size = 6ULL << 30U; };
  const auto with = [&](const std::string& extra) {
    return [=](EntryHeader& h) { h.modified = 1, h.extra = extra; };
  };
  const std::string unix_time = record(MakeVint(3) + MakeVint(3) + Number(kModified, 4));
  const std::string windows_time =  // in units of 100 ns
      record(MakeVint(3) + MakeVint(2) + Number(133444736000000000, 8));
  const std::string hash = record(MakeVint(2) + MakeVint(0) + "\x05" + std::string(30, 1) + "\x07");
  // A version, and bytes that no known field needs.
  const std::string version = record(MakeVint(4) + MakeVint(0) + MakeVint(3) + MakeVint(2));
  const std::string unknown_hash = record(MakeVint(2) + MakeVint(1) + std::string(32, 1));
  const std::string link =
      record(MakeVint(5) + MakeVint(2) + MakeVint(0) + MakeVint(9) + "long/name");
  const struct {
    RarFormat format;
    std::function<void(EntryHeader&)> change;
    const char* description;
  } cases[] = {
      {RarFormat::kRar4, plain, "0 3 3 2 20 48 32 64 1 0 0 0 unset"},
      {RarFormat::kRar4, many, "22 3 3 3 20 53 33184 64 1 0 0 0 unset"},
      {RarFormat::kRar4, huge, "0 6442450944 5368709120 2 20 48 32 64 1 0 0 0 unset"},
      {RarFormat::kRar5, plain, "0 3 3 2 50 48 32 128 1 0 0 0 unset"},
      {RarFormat::kRar5, many, "22 3 3 3 50 53 33184 128 1 0 0 0 unset"},
      {RarFormat::kRar5, large, "0 3 5368709120 2 50 48 32 1024 1 0 0 0 unset"},
      {RarFormat::kRar5, with(unix_time), "0 3 3 2 50 48 32 128 1 0 0 0 unset"},
      {RarFormat::kRar5, with(windows_time + version + hash), "0 3 3 2 50 48 32 128 2 5 7 0 unset"},
      {RarFormat::kRar5, with(unknown_hash + unix_time), "0 3 3 2 50 48 32 128 1 0 0 0 unset"},
      {RarFormat::kRar5, with(link + unix_time), "0 3 3 2 50 48 32 128 1 0 0 2 long/na"},
  };
  for (const auto& each : cases) {
    EntryHeader header = FileHeader("a", "123");
    each.change(header);
    EXPECT_EQ(Described(Archive(each.format, header, "123")), each.description);
  }
}

TEST(RarInterface, OldEntryPointsDoTheSame) {
  const Sandbox sandbox;
  const std::string long_name(300, 'n');
  const std::string bytes =
      MakeBeginning(RarFormat::kRar5) +
      MakeEntryHeader(RarFormat::kRar5, FileHeader("a.txt", "content")) + "content" +
      MakeEntryHeader(RarFormat::kRar5, FileHeader(long_name, "")) + MakeEnd(RarFormat::kRar5);
  const auto narrow = [](const std::string& path) {
    return companion::os::ToNarrow(tmw::CodePage::k866, path);
  };
  const std::string path = narrow(sandbox.Write("a.rar", bytes));
  const std::string target = narrow(sandbox.Path("out/b.txt"));
  ports::RAROpenArchiveData record{};
  record.ArcName = path.c_str();
  record.OpenMode = ports::kRarExtract;
  const ports::RarHandle handle = RAROpenArchive(&record);
  ASSERT_EQ(record.OpenResult, 0U);
  ports::RARHeaderData header{};
  ASSERT_EQ(RARReadHeader(handle, &header), 0);
  EXPECT_STREQ(header.FileName, "a.txt");
  EXPECT_EQ(header.UnpSize, 7U);
  std::string received;
  const auto take = [](std::uint32_t message, std::intptr_t user_data, std::intptr_t address,
                       std::intptr_t length) COMPANION_CALL {
    reinterpret_cast<std::string*>(user_data)->append(reinterpret_cast<const char*>(address),
                                                      static_cast<std::size_t>(length));
    return message == ports::kRarProcessData ? 1 : -1;
  };
  RARSetCallback(handle, take, reinterpret_cast<std::intptr_t>(&received));
  EXPECT_EQ(RARProcessFile(handle, 2, nullptr, target.c_str()), 0);
  EXPECT_EQ(sandbox.Read("out/b.txt"), "content");
  EXPECT_EQ(received, "content");
  ASSERT_EQ(RARReadHeader(handle, &header), 0);
  EXPECT_EQ(header.FileName, long_name.substr(0, 259));
  EXPECT_EQ(RARProcessFile(handle, 0, nullptr, nullptr), 0);
  EXPECT_EQ(RARReadHeader(handle, &header), 10);
  EXPECT_EQ(RARProcessFile(handle, 2, nullptr, nullptr), 10);
  EXPECT_EQ(RARCloseArchive(handle), 0);

  const std::string missing = narrow(sandbox.Path("none"));
  record.ArcName = missing.c_str();
  EXPECT_EQ(RAROpenArchive(&record), nullptr);
  EXPECT_EQ(record.OpenResult, 15U);
  EXPECT_EQ(RAROpenArchive(nullptr), nullptr);
  EXPECT_EQ(RARReadHeader(nullptr, &header), 21);
  EXPECT_EQ(RARProcessFile(nullptr, 0, nullptr, nullptr), 21);
  EXPECT_EQ(RARCloseArchive(nullptr), 17);
  EXPECT_GE(RARGetDllVersion(), 4);
}

}  // namespace
}  // namespace tests
