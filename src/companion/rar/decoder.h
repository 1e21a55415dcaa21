#pragma once

#include <cstdint>
#include <memory>

#include "companion/rar/block.h"

namespace companion::rar {

// The packed bytes of one entry, without a visible border between volumes.
class PackedSource {
 public:
  virtual ~PackedSource() = default;
  // Reads up to length bytes; returns 0 at the end of the entry's data. Throws Failure.
  virtual std::size_t Read(std::uint8_t* buffer, std::size_t length) = 0;
};

// Receives the content of one entry, counts and checks it, and never takes more than was declared.
class ContentSink {
 public:
  virtual ~ContentSink() = default;
  // Throws Failure: kRarBadData if the declared size would be exceeded, kRarWriteFailed.
  virtual void Write(const std::uint8_t* data, std::size_t length) = 0;
};

// Turns packed bytes into content. One object serves a whole archive: for a solid entry it
// continues with the window, tables and models of the one before; any other starts afresh.
class Decoder {
 public:
  virtual ~Decoder() = default;
  // Decodes one entry up to its declared size. Throws Failure; then no solid entry can be decoded.
  virtual void Decode(const Entry& entry, PackedSource& source, ContentSink& sink) = 0;
};

// Entries that are stored as they are.
std::unique_ptr<Decoder> MakeStoredDecoder();

// Versions with the same form of compression, which may therefore be mixed in a solid archive.
enum class DecoderFamily {
  kNone,  // not known to this reader
  kRar3,  // RAR 3 and 4
  kRar5,
};
DecoderFamily FamilyOf(const Entry& entry);

// nullptr for kNone.
std::unique_ptr<Decoder> MakeDecompressor(DecoderFamily family);

}  // namespace companion::rar
