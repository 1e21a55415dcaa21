#include <fstream>
#include <iostream>
#include <string>

#include "tests/companion/packed_streams.h"
#include "tests/companion/rar_entries.h"

// Writes the first inputs of fuzzing into the folder given: small archives of our own in both
// formats, whole and in volumes, and packed entries for the decoders.
namespace {

using namespace tests;

std::string InVolumes(RarFormat format) {
  EntryHeader first = FileHeader("Файл", "0123456789");
  first.packed_size = 5;
  first.split_after = true;
  EntryHeader second = first;
  second.split_before = true;
  second.split_after = false;
  return MakeVolumeBeginning(format, true) + MakeEntryHeader(format, first) + "01234" +
         MakeVolumeEnd(format, false) + "<NEXT VOLUME>" + MakeVolumeBeginning(format, false) +
         MakeEntryHeader(format, second) + "56789" + MakeEnd(format);
}

struct Pair {
  std::string packed;
  std::string content;
};

Pair Pack(StreamWriter& writer) {
  for (const char c : std::string("abcdefghijklmnop")) {
    writer.Literal(static_cast<std::uint8_t>(c));
  }
  writer.Match(16, 12);
  writer.EndBlock(false);
  writer.RepeatDistance(0, 7);
  writer.RepeatLast();
  writer.EndBlock(true);
  const Bytes bytes = writer.Finish();
  const Bytes& content = writer.content.bytes;
  return {{bytes.begin(), bytes.end()}, {content.begin(), content.end()}};
}

Pair Pack(RarFormat format) {
  Rar3Writer rar3;
  Rar5Writer rar5;
  return format == RarFormat::kRar4 ? Pack(rar3) : Pack(rar5);
}

// The input of the decoders' fuzzing: choices, then length and packed bytes of an entry.
std::string ForDecoder(RarFormat format, const std::string& packed) {
  const char choices = format == RarFormat::kRar5 ? 9 : 8;
  return std::string(1, choices) + static_cast<char>(packed.size() >> 8U) +
         static_cast<char>(packed.size() & 0xFFU) + packed;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: fuzz_seed_writer FOLDER\n";
    return 2;
  }
  const std::string folder = argv[1];
  bool all_written = true;
  for (const RarFormat format : {RarFormat::kRar4, RarFormat::kRar5}) {
    const std::string form = format == RarFormat::kRar4 ? "rar4-" : "rar5-";
    const auto write = [&](const std::string& name, const std::string& bytes) {
      std::ofstream file(folder + "/" + form + name, std::ios::binary);
      file << bytes;
      all_written = all_written && file.good();
    };
    write("plain", Archive(format, FileHeader("a.txt", "content"), "content"));
    EntryHeader header = FileHeader("Папка/Файл €", "content");
    header.unix_mode = 0100755;
    write("unix", Archive(format, header, "content"));
    const Pair entry = Pack(format);
    header = FileHeader("packed", entry.content);
    header.packed_size = entry.packed.size();
    header.method = 3;
    write("packed", Archive(format, header, entry.packed));
    write("decoder", ForDecoder(format, entry.packed));
    // A new model of order 6 and 1 MiB, and arbitrary bytes for it.
    if (format == RarFormat::kRar4) {
      write("decoder-model", ForDecoder(format, "\xE5" + std::string(1, '\0') + "\x02 model text"));
    }
    header.is_solid = true;
    write("solid", Archive(format, header, entry.packed));
    header = FileHeader("link", "");
    header.extra = MakeVint(6) + MakeVint(5) + MakeVint(1) + MakeVint(0) + MakeVint(2) + "/x";
    write("link", Archive(format, header, ""));
    header.is_folder = true;
    write("folder", Archive(format, header, ""));
    write("volumes", InVolumes(format));
  }
  return all_written ? 0 : 1;
}
