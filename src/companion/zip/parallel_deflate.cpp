#include "companion/zip/parallel_deflate.h"

#include <zlib.h>

#include <algorithm>
#include <deque>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

#include "companion/zip/failure.h"

namespace companion::zip {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kPieceLength = 1U << 20U;
constexpr std::size_t kWindow = 32U << 10U;
constexpr std::size_t kMaxWorkers = 8;

struct Piece {
  Bytes content;
  Bytes dictionary;  // the content before it
  bool last = false;
};

struct PackedPiece {
  Bytes bytes;
  std::uint32_t crc = 0;
  std::size_t size = 0;
};

class Deflater {
 public:
  explicit Deflater(int level) {
    if (deflateInit2(&stream_, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
      throw Failure{ports::kZipNoMemory};
    }
    // At the highest level zlib follows 4096 earlier places for each match. The last 3600 of them
    // shorten a database by a thousandth and take a quarter of the time.
    if (level == 9) deflateTune(&stream_, 32, 258, 258, 512);
  }
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  ~Deflater() { deflateEnd(&stream_); }

  Bytes Pack(Piece& piece) {
    if (!piece.dictionary.empty()) {
      deflateSetDictionary(&stream_, piece.dictionary.data(),
                           static_cast<uInt>(piece.dictionary.size()));
    }
    Bytes packed(deflateBound(&stream_, static_cast<uLong>(piece.content.size())) + 16);
    stream_.next_in = piece.content.data();
    stream_.avail_in = static_cast<uInt>(piece.content.size());
    stream_.next_out = packed.data();
    stream_.avail_out = static_cast<uInt>(packed.size());
    // A piece that is not the last ends on a whole byte, so that the next can follow it.
    const int result = deflate(&stream_, piece.last ? Z_FINISH : Z_SYNC_FLUSH);
    if (result != (piece.last ? Z_STREAM_END : Z_OK) || stream_.avail_in != 0 ||
        stream_.avail_out == 0) {
      throw Failure{ports::kZipInternal};
    }
    packed.resize(packed.size() - stream_.avail_out);
    return packed;
  }

 private:
  z_stream stream_{};
};

PackedPiece PackPiece(Piece piece, int level) {
  const auto crc =
      static_cast<std::uint32_t>(crc32_z(0, piece.content.data(), piece.content.size()));
  return {Deflater(level).Pack(piece), crc, piece.content.size()};
}

// A piece that is being packed on another thread, or on request if no thread could be started.
std::future<PackedPiece> Launch(Piece piece, int level) {
  try {
    return std::async(std::launch::async, PackPiece, piece, level);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, PackPiece, std::move(piece), level);
  }
}

Piece ReadPiece(const ContentReader& read, Bytes& window) {
  Piece piece;
  piece.dictionary = window;
  piece.content.resize(kPieceLength);
  piece.content.resize(read(piece.content.data(), piece.content.size()));
  piece.last = piece.content.size() < kPieceLength;
  if (!piece.last) window.assign(piece.content.end() - kWindow, piece.content.end());
  return piece;
}

}  // namespace

DeflateTotals DeflateInParallel(const ContentReader& read, const PackedWriter& write, int level) {
  const std::size_t cores =
      std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMaxWorkers);
  // One piece more than cores, so that none is idle while a finished piece is written.
  const std::size_t most_under_way = cores + 1;
  DeflateTotals totals;
  std::deque<std::future<PackedPiece>> under_way;
  Bytes window;
  bool ended = false;
  while (!ended || !under_way.empty()) {
    if (!ended && under_way.size() < most_under_way) {
      Piece piece = ReadPiece(read, window);
      ended = piece.last;
      under_way.push_back(Launch(std::move(piece), level));
      continue;
    }
    const PackedPiece packed = under_way.front().get();
    under_way.pop_front();
    write(packed.bytes.data(), packed.bytes.size());
    totals.crc = static_cast<std::uint32_t>(
        crc32_combine(totals.crc, packed.crc, static_cast<z_off_t>(packed.size)));
    totals.size += packed.size;
    totals.packed_size += packed.bytes.size();
  }
  return totals;
}

DeflateTotals Store(const ContentReader& read, const PackedWriter& write) {
  DeflateTotals totals;
  Bytes buffer(kPieceLength);
  while (const std::size_t got = read(buffer.data(), buffer.size())) {
    write(buffer.data(), got);
    totals.crc = static_cast<std::uint32_t>(crc32_z(totals.crc, buffer.data(), got));
    totals.size += got;
  }
  totals.packed_size = totals.size;
  return totals;
}

}  // namespace companion::zip
