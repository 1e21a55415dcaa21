#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "companion/exports.h"
#include "companion/rar/archive.h"
#include "companion/rar/failure.h"
#include "tests/companion/archive_run.h"
#include "tests/companion/packed_streams.h"
#include "tests/companion/rar_entries.h"
#include "tests/support/sandbox.h"

namespace tests {
namespace {

constexpr RarFormat kBoth[] = {RarFormat::kRar4, RarFormat::kRar5};

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
    std::string packed = "as it is";
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
      header.version = format == RarFormat::kRar5 ? 0 : 29;
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
  for (const bool fits : {true, false}) {
    companion::rar::Archive reader(path, true, open, fits ? total : total - 1);
    std::vector<int> codes;
    while (reader.ReadHeader() == ports::kRarOk)
      codes.push_back(reader.Test());
    EXPECT_EQ(codes, (std::vector<int>{0, 0, 0, 0, fits ? 0 : 12}));
  }
}

TEST(RarInterface, FlagsOfTheMainHeaderAreReported) {
  constexpr auto k4 = RarFormat::kRar4;
  constexpr auto k5 = RarFormat::kRar5;
  const std::string encryption =
      MakeBeginning(k5).substr(0, 8) + packing::MakeRar5Block(4, 0, std::string(3, 0));
  const struct {
    std::string bytes;
    std::uint32_t flags;
    int code;  // of ReadHeader
  } cases[] = {{Beginning(k4, 0), 0, 10},
               {Beginning(k4, 1), 1, 10},
               {Beginning(k4, 4), 4, 10},
               {Beginning(k4, 8), 8, 10},
               {Beginning(k4, 0x10), 0x10, 10},
               {Beginning(k4, 0x40), 0x40, 10},
               {Beginning(k4, 0x80), 0x80, 22},
               {Beginning(k4, 0x100), 0x100, 10},
               {Beginning(k5, 0), 0x10, 10},
               {Beginning(k5, 1), 0x111, 10},
               {Beginning(k5, 3, MakeVint(0)), 0x111, 10},
               {Beginning(k5, 3, MakeVint(1)), 0x11, 10},
               {Beginning(k5, 4), 0x18, 10},
               {Beginning(k5, 8), 0x50, 10},
               {Beginning(k5, 0x10), 0x14, 10},
               {encryption, 0x80, 22},
               {Beginning(k5, 0) + encryption.substr(8), 0x10, 22}};
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

// What the extended record says of the first entry, apart from names.
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
  const std::uint64_t ticks = header->MtimeLow | std::uint64_t{header->MtimeHigh} << 32U;
  std::string text;
  const auto add = [&](const char* name, std::uint64_t value) {
    if (value != 0) text += name + std::to_string(value) + " ";
  };
  add("flags ", header->Flags);
  add("packed ", header->PackSize | std::uint64_t{header->PackSizeHigh} << 32U);
  add("size ", header->UnpSize | std::uint64_t{header->UnpSizeHigh} << 32U);
  add("host ", header->HostOS);
  add("crc ", header->FileCRC);
  add("version ", header->UnpVer);
  add("method ", header->Method);
  add("attributes ", header->FileAttr);
  add("dictionary ", header->DictSize);
  add("hash ", header->HashType);
  add("to ", header->Hash[0] + header->Hash[31]);
  add("link ", header->RedirType);
  add("time ", ticks == 0 ? 0 : ticks / 10000000 - 11644473600);
  add("other dos time ", header->FileTime ^ companion::rar::ToDosTime(1700000000));
  return text + tmw::Utf16ToUtf8(target);
}

TEST(RarInterface, FieldsOfEntriesAreReported) {
  const auto changed = [](RarFormat format, const std::function<void(EntryHeader&)>& change) {
    EntryHeader header = FileHeader("a", "123");
    change(header);
    return Archive(format, header, "123");
  };
  const auto record = [](const std::string& body) { return MakeVint(body.size()) + body; };
  const auto plain = [](EntryHeader&) {};
  const auto mode = [](EntryHeader& h) {
    h.unix_mode = 0100640;
    h.is_encrypted = true;
    h.extra = MakeVint(2) + MakeVint(1) + MakeVint(0);
    h.method = 5;
    h.split_after = true;
    h.is_solid = true;
  };
  const auto large = [](EntryHeader& h) { h.size = 5ULL << 30U, h.version = 3U << 10U; };
  const auto hashed = [&](EntryHeader& h) {
    h.extra = record(MakeVint(2) + MakeVint(0) + "\x05" + std::string(30, 1) + "\x07");
  };
  const auto unknown_hash = [&](EntryHeader& h) {
    h.extra = record(MakeVint(2) + MakeVint(1) + std::string(32, 1));
  };
  const auto link = [&](EntryHeader& h) {
    h.extra = record(MakeVint(5) + MakeVint(2) + MakeVint(0) + MakeVint(9) + "long/name");
  };
  // Times in units of 100 ns and in seconds, where the record has them, before a version.
  const auto windows_time = [&](EntryHeader& h) {
    h.modified = 1;
    h.extra = record(MakeVint(3) + MakeVint(2) + Number(133444736000000000, 8)) +
              record(MakeVint(4) + MakeVint(0) + MakeVint(3));
  };
  const auto unix_time = [&](EntryHeader& h) {
    h.modified = 1;
    h.extra = record(MakeVint(3) + MakeVint(3) + Number(1700000000, 4));
  };
  constexpr auto k4 = RarFormat::kRar4;
  constexpr auto k5 = RarFormat::kRar5;
  const struct {
    std::string archive;
    const char* description;
  } cases[] = {
      {changed(k4, plain),
       "packed 3 size 3 host 2 crc 2286445522 version 20 method 48 attributes 32 dictionary 64 "
       "hash 1 time 1700000000 unset"},
      {changed(k4, mode),
       "flags 22 packed 3 size 3 host 3 crc 2286445522 version 20 method 53 attributes 33184 "
       "dictionary 64 hash 1 time 1700000000 unset"},
      {changed(k5, plain),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 1 time 1700000000 unset"},
      {changed(k5, mode),
       "flags 22 packed 3 size 3 host 3 crc 2286445522 version 50 method 53 attributes 33184 "
       "dictionary 128 hash 1 time 1700000000 unset"},
      {changed(k5, large),
       "packed 3 size 5368709120 host 2 crc 2286445522 version 50 method 48 attributes 32 "
       "dictionary 1024 hash 1 time 1700000000 unset"},
      {changed(k5, hashed),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 2 to 12 time 1700000000 unset"},
      {changed(k5, unknown_hash),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 1 time 1700000000 unset"},
      {changed(k5, link),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 1 link 2 time 1700000000 long/na"},
      {changed(k5, windows_time),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 1 time 1700000000 unset"},
      {changed(k5, unix_time),
       "packed 3 size 3 host 2 crc 2286445522 version 50 method 48 attributes 32 dictionary 128 "
       "hash 1 time 1700000000 unset"},
  };
  for (const auto& each : cases)
    EXPECT_EQ(Described(each.archive), each.description);
}

TEST(RarInterface, OldEntryPointsDoTheSame) {
  const Sandbox sandbox;
  const std::string long_name(300, 'n');
  const std::string bytes =
      MakeBeginning(RarFormat::kRar5) +
      MakeEntryHeader(RarFormat::kRar5, FileHeader("a.txt", "content")) + "content" +
      MakeEntryHeader(RarFormat::kRar5, FileHeader(long_name, "")) + MakeEnd(RarFormat::kRar5);
  const std::string path = sandbox.Write("a.rar", bytes);
  const std::string target = sandbox.Path("out/b.txt");
  ports::RAROpenArchiveData record{};
  record.ArcName = path.c_str();
  record.OpenMode = ports::kRarExtract;
  const ports::RarHandle handle = RAROpenArchive(&record);
  ASSERT_EQ(record.OpenResult, 0U);
  ports::RARHeaderData header{};
  ASSERT_EQ(RARReadHeader(handle, &header), 0);
  EXPECT_STREQ(header.FileName, "a.txt");
  EXPECT_EQ(header.UnpSize, 7U);
  EXPECT_EQ(RARProcessFile(handle, 2, nullptr, target.c_str()), 0);
  EXPECT_EQ(sandbox.Read("out/b.txt"), "content");
  ASSERT_EQ(RARReadHeader(handle, &header), 0);
  EXPECT_EQ(header.FileName, long_name.substr(0, 259));
  EXPECT_EQ(RARProcessFile(handle, 0, nullptr, nullptr), 0);
  EXPECT_EQ(RARReadHeader(handle, &header), 10);
  EXPECT_EQ(RARProcessFile(handle, 2, nullptr, nullptr), 10);
  EXPECT_EQ(RARCloseArchive(handle), 0);

  const std::string missing = sandbox.Path("none");
  record.ArcName = missing.c_str();
  EXPECT_EQ(RAROpenArchive(&record), nullptr);
  EXPECT_EQ(record.OpenResult, 15U);
  EXPECT_EQ(RAROpenArchive(nullptr), nullptr);
  EXPECT_EQ(RARReadHeader(nullptr, &header), 21);
  EXPECT_EQ(RARProcessFile(nullptr, 0, nullptr, nullptr), 21);
  EXPECT_EQ(RARCloseArchive(nullptr), 17);
  EXPECT_GE(RARGetDllVersion(), 4);
}

// Keeps what it is handed; refuses from the third piece on if asked to.
struct Received {
  std::string bytes;
  int pieces = 0;
  bool refuses = false;

  static int COMPANION_CALL Take(std::uint32_t message, std::intptr_t user_data,
                                 std::intptr_t address, std::intptr_t length) {
    auto& self = *reinterpret_cast<Received*>(user_data);
    if (message != ports::kRarProcessData) return 1;
    self.bytes.append(reinterpret_cast<const char*>(address), static_cast<std::size_t>(length));
    return ++self.pieces > 2 && self.refuses ? -1 : 1;
  }
};

TEST(RarInterface, TheCallbackReceivesAllContentAndMayStop) {
  const ports::EntryPoints& functions = tmw::CompanionFunctions();
  std::string content;
  for (int i = 0; content.size() < 2'000'000; ++i)
    content += std::to_string(i);
  const Sandbox sandbox;
  const std::u16string path = tmw::Utf8ToUtf16(
      sandbox.Write("a.rar", Archive(RarFormat::kRar5, FileHeader("a", content), content)));
  for (const bool at_opening : {true, false}) {
    for (const bool refuses : {true, false}) {
      Received received;
      received.refuses = refuses;
      const auto user_data = reinterpret_cast<std::intptr_t>(&received);
      ports::RAROpenArchiveDataEx record{};
      record.ArcNameW = path.c_str();
      record.OpenMode = ports::kRarExtract;
      if (at_opening) {
        record.Callback = Received::Take;
        record.UserData = user_data;
      }
      const ports::RarHandle handle = functions.RAROpenArchiveEx(&record);
      if (!at_opening) RARSetCallback(handle, Received::Take, user_data);
      const auto header = std::make_unique<ports::RARHeaderDataEx>();
      ASSERT_EQ(functions.RARReadHeaderEx(handle, header.get()), 0);
      EXPECT_EQ(functions.RARProcessFileW(handle, 1, nullptr, nullptr), refuses ? 21 : 0);
      EXPECT_EQ(received.bytes == content, !refuses);
      functions.RARCloseArchive(handle);
    }
  }
}

}  // namespace
}  // namespace tests
