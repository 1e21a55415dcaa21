#include "unzip/unzip.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/crc32.h"
#include "packages/zip_listing.h"
#include "ports/page_file.h"
#include "ports/ports.h"
#include "unzip/unzip_texts.h"

namespace tmw {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{256} << 10;
constexpr std::uint64_t kLocalLength = 30;  // of a local header, without name and extra field
constexpr std::uint32_t kStored = 0;
constexpr std::uint32_t kDeflated = 8;

// The packed bytes of an entry, piece by piece.
class PackedBytes {
 public:
  PackedBytes(ports::PageFile& file, std::uint64_t begin, std::uint64_t length)
      : file_(file), next_(begin), left_(length), piece_(kPieceBytes) {}

  // Empty at the end; nothing if the file cannot be read or ends too early.
  std::optional<std::string_view> Next() {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, piece_.size()));
    if (wanted == 0) return std::string_view();
    const auto count = file_.ReadAt(next_, piece_.data(), wanted);
    if (!count || count.value != wanted) return std::nullopt;
    next_ += wanted;
    left_ -= wanted;
    return std::string_view(piece_.data(), wanted);
  }

 private:
  ports::PageFile& file_;
  std::uint64_t next_;
  std::uint64_t left_;
  std::vector<char> piece_;
};

// Counts and sums what is handed over; refuses more than the entry announces.
class CheckedOutput {
 public:
  CheckedOutput(const ZipListing& entry, const UnpackedBytes& take) : entry_(entry), take_(take) {}

  // Returns the reason to stop, or null.
  const char* Take(const char* bytes, std::size_t length) {
    length_ += length;
    if (length_ > entry_.Length) return unzip_texts::kDamaged;
    crc_ = UpdateCrc32(crc_, std::string_view(bytes, length));
    return take_(bytes, length) ? nullptr : unzip_texts::kStopped;
  }

  bool IsWhole() const { return length_ == entry_.Length && crc_ == entry_.Crc; }

 private:
  const ZipListing& entry_;
  const UnpackedBytes& take_;
  std::uint64_t length_ = 0;
  std::uint32_t crc_ = 0;
};

const char* CopyStored(PackedBytes& packed, CheckedOutput& output) {
  for (;;) {
    const auto piece = packed.Next();
    if (!piece) return unzip_texts::kNotRead;
    if (piece->empty()) return nullptr;
    if (const char* const why = output.Take(piece->data(), piece->size())) return why;
  }
}

struct InflateEnd {
  void operator()(z_stream* stream) const { inflateEnd(stream); }
};

const char* Inflate(PackedBytes& packed, CheckedOutput& output) {
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) return unzip_texts::kNotRead;
  const std::unique_ptr<z_stream, InflateEnd> guard(&stream);
  std::vector<char> content(kPieceBytes);
  for (;;) {
    const auto piece = packed.Next();
    if (!piece) return unzip_texts::kNotRead;
    if (piece->empty()) return unzip_texts::kDamaged;  // the stream has no end
    // Read only, whatever the library's old declaration says.
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece->data()));
    stream.avail_in = static_cast<uInt>(piece->size());
    do {
      stream.next_out = reinterpret_cast<Bytef*>(content.data());
      stream.avail_out = static_cast<uInt>(content.size());
      const int result = inflate(&stream, Z_NO_FLUSH);
      if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
        return unzip_texts::kDamaged;
      const std::size_t length = content.size() - stream.avail_out;
      if (length > 0) {
        if (const char* const why = output.Take(content.data(), length)) return why;
      }
      if (result == Z_STREAM_END) return nullptr;
    } while (stream.avail_in > 0 || stream.avail_out == 0);
  }
}

const char* Unpack(const std::string& archive, const UnpackedBytes& take) {
  const auto entries = TryListZip(archive);
  if (!entries || entries->size() != 1) return unzip_texts::kNoSuchArchive;
  const ZipListing& entry = entries->front();
  const auto opened = ports::CurrentPorts().page_files->Open(archive, ports::PageFileMode::kRead);
  if (!opened) return unzip_texts::kNotRead;
  // Name and extra field may be longer here than in the directory.
  std::uint8_t header[kLocalLength];
  const auto count = opened.value->ReadAt(entry.Offset, header, sizeof header);
  if (!count || count.value != sizeof header) return unzip_texts::kNotRead;
  if (std::string_view(reinterpret_cast<const char*>(header), 4) != "PK\x03\x04")
    return unzip_texts::kDamaged;
  const std::uint64_t begin = entry.Offset + kLocalLength + header[26] +
                              header[27] * std::uint64_t{256} + header[28] +
                              header[29] * std::uint64_t{256};
  PackedBytes packed(*opened.value, begin, entry.PackedLength);
  CheckedOutput output(entry, take);
  const char* why = unzip_texts::kUnknownMethod;
  if (entry.Method == kStored) why = CopyStored(packed, output);
  if (entry.Method == kDeflated) why = Inflate(packed, output);
  if (why == nullptr && !output.IsWhole()) why = unzip_texts::kDamaged;
  return why;
}

}  // namespace

bool TryUnpackOnlyEntry(const std::string& archive, const UnpackedBytes& take,
                        std::string& reason) {
  const char* const why = Unpack(archive, take);
  reason = why == nullptr ? "" : why;
  return why == nullptr;
}

}  // namespace tmw
