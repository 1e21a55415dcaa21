#include <fstream>
#include <iostream>
#include <string>

#include "packages/rar_blocks.h"

// Writes the first inputs of the reader's fuzzing into the folder given: small archives of our own
// in both formats, whole and in volumes.
namespace {

using namespace tmw::rar_blocks;

EntryHeader FileHeader(const std::string& name, const std::string& content) {
  EntryHeader header;
  header.name = name;
  header.packed_size = content.size();
  header.size = content.size();
  header.crc = UpdateCrc32(0, content);
  header.modified = 1700000000;
  return header;
}

std::string Whole(RarFormat format, EntryHeader header, const std::string& content) {
  return MakeBeginning(format) + MakeEntryHeader(format, header) + content + MakeEnd(format);
}

std::string InVolumes(RarFormat format) {
  EntryHeader first = FileHeader("Файл", "0123456789");
  first.packed_size = 5;
  first.split_after = true;
  EntryHeader second = first;
  second.split_before = true;
  second.split_after = false;
  return MakeBeginning(format, true) + MakeEntryHeader(format, first) + "01234" +
         MakeEnd(format, true) + "<NEXT VOLUME>" + MakeBeginning(format, true, false) +
         MakeEntryHeader(format, second) + "56789" + MakeEnd(format);
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
    write("plain", Whole(format, FileHeader("a.txt", "content"), "content"));
    EntryHeader header = FileHeader("Папка/Файл €", "content");
    header.unix_mode = 0755;
    write("unix", Whole(format, header, "content"));
    header.method = 3;
    header.is_solid = true;
    write("packed", Whole(format, header, "content"));
    header = FileHeader("link", "");
    header.extra = MakeVint(6) + MakeVint(5) + MakeVint(1) + MakeVint(0) + MakeVint(2) + "/x";
    write("link", Whole(format, header, ""));
    header.is_folder = true;
    write("folder", Whole(format, header, ""));
    write("volumes", InVolumes(format));
  }
  return all_written ? 0 : 1;
}
