#pragma once

#include <cstdint>
#include <memory>

#include "companion/rar/block.h"

namespace companion::rar {

// The packed bytes of one entry; where a volume ends and the next begins is not to be seen.
class PackedSource {
 public:
  virtual ~PackedSource() = default;
  // Up to length bytes; 0 at the end of the entry's data. Throws Failure.
  virtual std::size_t Read(std::uint8_t* buffer, std::size_t length) = 0;
};

// Where the content of one entry goes. Counts it, checks it and never takes more than was declared.
class ContentSink {
 public:
  virtual ~ContentSink() = default;
  // Throws Failure: kRarBadData when the declared size would be passed, kRarWriteFailed.
  virtual void Write(const std::uint8_t* data, std::size_t length) = 0;
  // How much may still come.
  virtual std::uint64_t Left() const = 0;
};

// Turns packed bytes into content. One object lives through a whole archive: for a solid entry it
// goes on with the window, tables and models of the entry before; any other entry starts anew.
class Decoder {
 public:
  virtual ~Decoder() = default;
  // Decodes one entry up to its declared size. Throws Failure, after which a solid entry cannot be
  // decoded any more.
  virtual void Decode(const Entry& entry, PackedSource& source, ContentSink& sink) = 0;
};

// Entries that are stored as they are.
std::unique_ptr<Decoder> MakeStoredDecoder();

// Versions that share one form of compression, and so may stand in one solid chain.
enum class DecoderFamily {
  kNone,  // not known to this reader
  kRar3,  // RAR 3 and 4
  kRar5,
};
DecoderFamily FamilyOf(const Entry& entry);

// nullptr for kNone.
std::unique_ptr<Decoder> MakeDecompressor(DecoderFamily family);

}  // namespace companion::rar
