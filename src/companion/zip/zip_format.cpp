#include "companion/zip/zip_format.h"

#include <zlib.h>

#include <algorithm>
#include <memory>

#include "companion/zip/failure.h"

namespace companion::zip {
namespace {

constexpr std::uint32_t kLocalMark = 0x04034b50;
constexpr std::uint32_t kCentralMark = 0x02014b50;
constexpr std::uint32_t kEndMark = 0x06054b50;
constexpr std::uint32_t kEnd64Mark = 0x06064b50;
constexpr std::uint32_t kLocator64Mark = 0x07064b50;
constexpr std::uint32_t kAll32 = 0xFFFFFFFF;
constexpr std::uint16_t kAll16 = 0xFFFF;
constexpr std::uint16_t kZip64Field = 1;
constexpr std::size_t kLocalLength = 30;
constexpr std::size_t kCentralLength = 46;
constexpr std::size_t kEndLength = 22;

template <typename T>
void Put(std::string& bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
  }
}

template <typename T>
T Get(const std::string& bytes, std::size_t offset) {
  if (offset > bytes.size() || bytes.size() - offset < sizeof(T))
    throw Failure{ports::kZipBadStructure};
  T value = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    value = static_cast<T>(value | static_cast<T>(static_cast<unsigned char>(bytes[offset + i]))
                                       << (8 * i));
  }
  return value;
}

std::uint32_t Cut32(std::uint64_t value) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(value, kAll32));
}
std::uint16_t Cut16(std::size_t value) {
  return static_cast<std::uint16_t>(std::min<std::size_t>(value, kAll16));
}

std::string Zip64Extra(std::initializer_list<std::uint64_t> values) {
  std::string bytes;
  Put(bytes, kZip64Field);
  Put(bytes, static_cast<std::uint16_t>(values.size() * 8));
  for (const std::uint64_t value : values)
    Put(bytes, value);
  return bytes;
}

std::string MakeCentralHeader(const ZipEntry& entry) {
  std::string extra = entry.extra;
  const bool is_large =
      entry.size >= kAll32 || entry.packed_size >= kAll32 || entry.offset >= kAll32;
  // The field always has all three numbers, which is simpler than the allowed minimum.
  if (is_large) extra = Zip64Extra({entry.size, entry.packed_size, entry.offset}) + extra;
  std::string bytes;
  Put(bytes, kCentralMark);
  Put(bytes, entry.made_by);
  Put<std::uint16_t>(bytes, is_large ? 45 : 20);
  Put(bytes, entry.flags);
  Put(bytes, entry.method);
  Put(bytes, entry.dos_time);
  Put(bytes, entry.crc);
  Put(bytes, is_large ? kAll32 : Cut32(entry.packed_size));
  Put(bytes, is_large ? kAll32 : Cut32(entry.size));
  Put(bytes, Cut16(entry.name.size()));
  Put(bytes, Cut16(extra.size()));
  Put(bytes, Cut16(entry.comment.size()));
  Put<std::uint32_t>(bytes, 0);  // disk, internal attributes
  Put(bytes, entry.external_attributes);
  Put(bytes, is_large ? kAll32 : Cut32(entry.offset));
  return bytes + entry.name + extra + entry.comment;
}

std::string ReadExactly(os::ReadableFile& file, std::uint64_t offset, std::uint64_t length) {
  if (offset > file.Size() || length > file.Size() - offset) throw Failure{ports::kZipBadStructure};
  std::string bytes(static_cast<std::size_t>(length), '\0');
  const auto got = file.ReadAt(offset, bytes.data(), bytes.size());
  if (!got) throw SystemFailure(ports::kZipReadFailed);
  if (*got != bytes.size()) throw Failure{ports::kZipReadFailed};
  return bytes;
}

// Takes the 64-bit numbers from the extra area, each only if the 32-bit one says so.
void TakeZip64(ZipEntry& entry) {
  std::string rest;
  for (std::size_t at = 0; at + 4 <= entry.extra.size();) {
    const auto type = Get<std::uint16_t>(entry.extra, at);
    const std::size_t length = Get<std::uint16_t>(entry.extra, at + 2);
    std::size_t field = at + 4;
    const std::size_t end = field + length;
    if (end > entry.extra.size()) break;
    if (type == kZip64Field) {
      for (std::uint64_t* const number : {&entry.size, &entry.packed_size, &entry.offset}) {
        if (*number != kAll32 || field + 8 > end) continue;
        *number = Get<std::uint64_t>(entry.extra, field);
        field += 8;
      }
    } else {
      rest += entry.extra.substr(at, 4 + length);
    }
    at = end;
  }
  entry.extra = rest;
}

struct End {
  std::uint64_t directory_offset = 0;
  std::uint64_t directory_length = 0;
  std::uint64_t count = 0;
  std::string comment;
};

End FindEnd(os::ReadableFile& file) {
  const std::uint64_t length = std::min<std::uint64_t>(file.Size(), kEndLength + 0xFFFF);
  const std::uint64_t start = file.Size() - length;
  const std::string tail = ReadExactly(file, start, length);
  if (tail.size() < kEndLength) throw Failure{ports::kZipBadStructure};
  for (std::size_t at = tail.size() - kEndLength + 1; at-- > 0;) {
    if (Get<std::uint32_t>(tail, at) != kEndMark) continue;
    const std::size_t comment = Get<std::uint16_t>(tail, at + 20);
    if (at + kEndLength + comment > tail.size()) continue;
    End end{Get<std::uint32_t>(tail, at + 16), Get<std::uint32_t>(tail, at + 12),
            Get<std::uint16_t>(tail, at + 10), tail.substr(at + kEndLength, comment)};
    const bool has_locator = at >= 20 && Get<std::uint32_t>(tail, at - 20) == kLocator64Mark;
    if (has_locator) {
      const std::string end64 = ReadExactly(file, Get<std::uint64_t>(tail, at - 12), 56);
      if (Get<std::uint32_t>(end64, 0) != kEnd64Mark) throw Failure{ports::kZipBadStructure};
      end.count = Get<std::uint64_t>(end64, 32);
      end.directory_length = Get<std::uint64_t>(end64, 40);
      end.directory_offset = Get<std::uint64_t>(end64, 48);
    }
    return end;
  }
  throw Failure{ports::kZipBadStructure};
}

// The offset of an entry's data according to its local header.
std::uint64_t DataOffset(os::ReadableFile& file, const ZipEntry& entry) {
  const std::string local = ReadExactly(file, entry.offset, kLocalLength);
  if (Get<std::uint32_t>(local, 0) != kLocalMark) throw Failure{ports::kZipBadStructure};
  const std::uint64_t offset =
      entry.offset + kLocalLength + Get<std::uint16_t>(local, 26) + Get<std::uint16_t>(local, 28);
  if (offset > file.Size() || entry.packed_size > file.Size() - offset) {
    throw Failure{ports::kZipBadStructure};
  }
  return offset;
}

// Inflates the packed bytes of an entry piece by piece.
class Unpacker {
 public:
  Unpacker() {
    if (inflateInit2(&stream_, -MAX_WBITS) != Z_OK) throw Failure{ports::kZipNoMemory};
  }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;
  ~Unpacker() { inflateEnd(&stream_); }

  // Returns false after the end of the stream.
  bool Take(std::string& packed) {
    stream_.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream_.avail_in = static_cast<uInt>(packed.size());
    do {
      stream_.next_out = output_.data();
      stream_.avail_out = static_cast<uInt>(output_.size());
      const int result = inflate(&stream_, Z_NO_FLUSH);
      const std::size_t got = output_.size() - stream_.avail_out;
      crc_ = static_cast<std::uint32_t>(crc32_z(crc_, output_.data(), got));
      size_ += got;
      if (result == Z_STREAM_END) return false;
      if (result != Z_OK && result != Z_BUF_ERROR) throw Failure{ports::kZipBadStructure};
    } while (stream_.avail_out == 0);
    return true;
  }

  std::uint32_t Crc() const { return crc_; }
  std::uint64_t Size() const { return size_; }

 private:
  z_stream stream_{};
  std::vector<Bytef> output_ = std::vector<Bytef>(256U << 10U);
  std::uint32_t crc_ = 0;
  std::uint64_t size_ = 0;
};

}  // namespace

std::string MakeTimeExtra(std::int64_t modified) {
  std::string bytes;
  if (modified < INT32_MIN || modified > INT32_MAX) return bytes;
  Put<std::uint16_t>(bytes, 0x5455);
  Put<std::uint16_t>(bytes, 5);
  bytes.push_back(1);
  Put(bytes, static_cast<std::uint32_t>(modified));
  return bytes;
}

std::string MakeLocalHeader(const ZipEntry& entry) {
  std::string extra = entry.extra;
  if (entry.has_local_zip64) extra = Zip64Extra({entry.size, entry.packed_size}) + extra;
  std::string bytes;
  Put(bytes, kLocalMark);
  Put<std::uint16_t>(bytes, entry.has_local_zip64 ? 45 : 20);
  Put(bytes, entry.flags);
  Put(bytes, entry.method);
  Put(bytes, entry.dos_time);
  Put(bytes, entry.crc);
  Put(bytes, entry.has_local_zip64 ? kAll32 : Cut32(entry.packed_size));
  Put(bytes, entry.has_local_zip64 ? kAll32 : Cut32(entry.size));
  Put(bytes, Cut16(entry.name.size()));
  Put(bytes, Cut16(extra.size()));
  return bytes + entry.name + extra;
}

std::string MakeDirectory(const ZipDirectory& directory, std::uint64_t offset) {
  std::string bytes;
  for (const ZipEntry& entry : directory.entries)
    bytes += MakeCentralHeader(entry);
  const std::uint64_t length = bytes.size();
  const std::size_t count = directory.entries.size();
  if (count >= kAll16 || offset >= kAll32 || length >= kAll32) {
    const std::uint64_t end64 = offset + length;
    Put(bytes, kEnd64Mark);
    Put<std::uint64_t>(bytes, 44);
    Put<std::uint16_t>(bytes, 45);
    Put<std::uint16_t>(bytes, 45);
    Put<std::uint64_t>(bytes, 0);  // disks
    Put<std::uint64_t>(bytes, count);
    Put<std::uint64_t>(bytes, count);
    Put(bytes, length);
    Put(bytes, offset);
    Put(bytes, kLocator64Mark);
    Put<std::uint32_t>(bytes, 0);
    Put(bytes, end64);
    Put<std::uint32_t>(bytes, 1);
  }
  Put(bytes, kEndMark);
  Put<std::uint32_t>(bytes, 0);  // disks
  Put(bytes, Cut16(count));
  Put(bytes, Cut16(count));
  Put(bytes, Cut32(length));
  Put(bytes, Cut32(offset));
  Put(bytes, Cut16(directory.comment.size()));
  return bytes + directory.comment;
}

ZipDirectory ReadDirectory(os::ReadableFile& file) {
  const End end = FindEnd(file);
  const std::string bytes = ReadExactly(file, end.directory_offset, end.directory_length);
  ZipDirectory directory;
  directory.comment = end.comment;
  for (std::size_t at = 0; at < bytes.size();) {
    if (Get<std::uint32_t>(bytes, at) != kCentralMark) throw Failure{ports::kZipBadStructure};
    ZipEntry entry;
    entry.made_by = Get<std::uint16_t>(bytes, at + 4);
    entry.flags = Get<std::uint16_t>(bytes, at + 8);
    entry.method = Get<std::uint16_t>(bytes, at + 10);
    entry.dos_time = Get<std::uint32_t>(bytes, at + 12);
    entry.crc = Get<std::uint32_t>(bytes, at + 16);
    entry.packed_size = Get<std::uint32_t>(bytes, at + 20);
    entry.size = Get<std::uint32_t>(bytes, at + 24);
    const std::size_t name = Get<std::uint16_t>(bytes, at + 28);
    const std::size_t extra = Get<std::uint16_t>(bytes, at + 30);
    const std::size_t comment = Get<std::uint16_t>(bytes, at + 32);
    entry.external_attributes = Get<std::uint32_t>(bytes, at + 38);
    entry.offset = Get<std::uint32_t>(bytes, at + 42);
    const std::size_t texts = at + kCentralLength;
    at = texts + name + extra + comment;
    if (at > bytes.size()) throw Failure{ports::kZipBadStructure};
    entry.name = bytes.substr(texts, name);
    entry.extra = bytes.substr(texts + name, extra);
    entry.comment = bytes.substr(texts + name + extra, comment);
    TakeZip64(entry);
    directory.entries.push_back(std::move(entry));
  }
  if (directory.entries.size() != end.count) throw Failure{ports::kZipBadStructure};
  return directory;
}

void CheckEntry(os::ReadableFile& file, const ZipEntry& entry) {
  std::uint64_t offset = DataOffset(file, entry);
  const bool is_deflated = entry.method == kMethodDeflated;
  Unpacker unpacker;
  std::uint32_t crc = 0;
  bool goes_on = true;
  for (std::uint64_t left = entry.packed_size; left > 0 && goes_on;) {
    std::string piece = ReadExactly(file, offset, std::min<std::uint64_t>(left, 256U << 10U));
    offset += piece.size();
    left -= piece.size();
    if (is_deflated) {
      goes_on = unpacker.Take(piece);
    } else {
      crc = static_cast<std::uint32_t>(
          crc32_z(crc, reinterpret_cast<const Bytef*>(piece.data()), piece.size()));
    }
  }
  if (is_deflated) crc = unpacker.Crc();
  const std::uint64_t size = is_deflated ? unpacker.Size() : entry.packed_size;
  if ((is_deflated && goes_on) || crc != entry.crc || size != entry.size) {
    throw Failure{ports::kZipBadStructure};
  }
}

}  // namespace companion::zip
