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

template <typename T>
void Put(std::string& bytes, T value) {
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFFU));
  }
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
  Put<std::uint16_t>(bytes, 0);  // comment
  Put<std::uint32_t>(bytes, 0);  // disk, internal attributes
  Put(bytes, entry.external_attributes);
  Put(bytes, is_large ? kAll32 : Cut32(entry.offset));
  return bytes + entry.name + extra;
}

std::string ReadExactly(os::ReadableFile& file, std::uint64_t offset, std::uint64_t length) {
  if (offset > file.Size() || length > file.Size() - offset) throw Failure{ports::kZipBadStructure};
  std::string bytes(static_cast<std::size_t>(length), '\0');
  const auto got = file.ReadAt(offset, bytes.data(), bytes.size());
  if (!got) throw SystemFailure(ports::kZipReadFailed);
  if (*got != bytes.size()) throw Failure{ports::kZipReadFailed};
  return bytes;
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

void CheckBytes(os::ReadableFile& file, std::uint64_t offset, const std::string& bytes) {
  if (ReadExactly(file, offset, bytes.size()) != bytes) throw Failure{ports::kZipBadStructure};
}

void CheckEntry(os::ReadableFile& file, const ZipEntry& entry) {
  const std::string header = MakeLocalHeader(entry);
  CheckBytes(file, entry.offset, header);
  std::uint64_t offset = entry.offset + header.size();
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
